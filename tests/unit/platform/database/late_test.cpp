// SPDX-License-Identifier: GPL-2.0-or-later
// Changes that the engine gives up and makes all the same, and notices that are lost.  Some of its functions
// give way to those below.
#include "tests/unit/platform/database/sandbox.hpp"

#include <dlfcn.h>
#include <sysrepo.h>

#include <atomic>
#include <deque>

using namespace sandbox;

namespace {

// While it is set, the engine says of every change that its time is over, makes it all the same, and its
// notices tell of nothing: as when somebody else keeps it waiting.
std::atomic<bool> is_late = false;

// While it is set, notices do not arrive: as in a process that stands still for longer than writers wait.
std::atomic<bool> is_deaf = false;
std::atomic<int> lost = 0;

struct Callback {
    sr_module_change_cb function;
    void *priv;
};

int pass_on(sr_session_ctx_t *session, const char *module, const char *xpath, sr_event_t event,
            uint32_t request, void *priv)
{
    if (is_deaf) {
        ++lost;
        return SR_ERR_OK;
    }
    const auto *callback = static_cast<const Callback *>(priv);
    return callback->function(session, module, xpath, event, request, callback->priv);
}

template <class Function>
Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

using Late = DatabaseTest;

} // namespace

int sr_apply_changes(sr_session_ctx_t *session, uint32_t timeout_ms, int wait)
{
    static auto *const function = real(&sr_apply_changes, "sr_apply_changes");
    const int result = function(session, timeout_ms, wait);
    return is_late ? static_cast<int>(SR_ERR_TIME_OUT) : result;
}

int sr_get_change_tree_next(sr_session_ctx_t *session, sr_change_iter_t *iterator,
                            sr_change_oper_t *operation, const struct lyd_node **node, const char **before,
                            const char **list, bool *is_default)
{
    static auto *const function = real(&sr_get_change_tree_next, "sr_get_change_tree_next");
    return is_late ? static_cast<int>(SR_ERR_NOT_FOUND)
                   : function(session, iterator, operation, node, before, list, is_default);
}

int sr_module_change_subscribe(sr_session_ctx_t *session, const char *module, const char *xpath,
                               sr_module_change_cb callback, void *priv, uint32_t priority,
                               sr_subscr_options_t options, sr_subscription_ctx_t **subscription)
{
    static auto *const function = real(&sr_module_change_subscribe, "sr_module_change_subscribe");
    static auto &callbacks = *new std::deque<Callback>;
    Callback &kept = callbacks.emplace_back(Callback{callback, priv});
    return function(session, module, xpath, pass_on, &kept, priority, options, subscription);
}

TEST_F(Late, a_change_that_comes_through_after_its_time_is_shown)
{
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(9, &db, "info", 16, 1), 0);
    // With somebody else there, the state is not made again, which would read everything.
    Program other = peer({"idle"});
    ASSERT_EQ(other.line(), "ready");
    is_late = true;
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(10, &db, "major", 16, 1), TQ_ERR_TIMEOUT);
    EXPECT_TRUE(wait_until([&] { return level(10) == "major"; })) << "no notice tells of it";
    is_late = false;
}

TEST_F(Late, a_change_whose_notice_was_lost_shows_with_the_next)
{
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(9, &db, "info", 16, 1), 0);
    is_deaf = true;
    ASSERT_EQ(edit("<alarm><id>10</id><level>alert</level></alarm>"), 0);
    ASSERT_TRUE(wait_until([] { return lost > 0; }));
    is_deaf = false;
    EXPECT_EQ(level(10), "code -2");
    ASSERT_EQ(edit("<alarm><id>11</id><level>emerg</level></alarm>"), 0);
    EXPECT_TRUE(wait_until([&] { return level(11) == "emerg"; }));
    EXPECT_EQ(level(10), "alert");
}
