// SPDX-License-Identifier: GPL-2.0-or-later
// Subscriptions of a Repository and the thread that takes their notices.
#include "platform/database/engine/repository.hpp"
#include "platform/database/engine/thread.hpp"
#include "tq_errno.h"

#include <libyang/libyang.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <vector>

namespace tq::db {

namespace {
thread_local bool in_callback = false;
thread_local const char *current_xpath = "";

struct DataDeleter {
    void operator()(lyd_node *data) const { lyd_free_withsiblings(data); }
};
struct IteratorDeleter {
    void operator()(sr_change_iter_t *iterator) const { sr_free_change_iter(iterator); }
};
} // namespace

bool Repository::is_in_callback()
{
    return in_callback;
}

const char *Repository::callback_xpath()
{
    return current_xpath;
}

Repository::~Repository()
{
    const Turn turn(turn_, apply_timeout);
    if (stop_thread())
        // A notice that is left untaken makes the next writer wait in vain.
        take_notices();
    if (!subscription_)
        return;
    // Without its data files sysrepo cannot end a subscription, and keeps what belongs to it.
    const auto put_back = SharedState::put_back(data_);
    subscription_.reset();
    for (const std::string &file : put_back)
        ::unlink(file.c_str());
}

bool Repository::stop_thread()
{
    if (!thread_.joinable())
        return false;
    eventfd_write(stop_.get(), 1);
    thread_.join();
    return true;
}

void Repository::abandon()
{
    stop_thread();
    leave_behind(subscription_.release());
    leave_behind(listener_.release());
    leave_behind(session_.release());
    leave_behind(connection_.release());
}

void leave_behind(void *handle)
{
    static auto &all = *new std::vector<void *>;
    all.push_back(handle);
}

// All subscriptions share one context, so one pipe and one taker serve them.
template <class Subscribe>
int Repository::add_subscription(Subscribe subscribe)
{
    sr_subscription_ctx_t *raw = subscription_.release();
    const sr_subscr_options_t flags = SR_SUBSCR_NO_THREAD | (raw ? SR_SUBSCR_CTX_REUSE : 0);
    errno = 0;
    const int result = subscribe(flags, &raw);
    const int code = code_of(result, listener_.get());
    subscription_.reset(raw);
    return code;
}

// A subscription to what is done already costs a writer one event, for which it does not wait.
int Repository::watch(const char *module)
{
    Watched &watched = watched_.emplace_back(Watched{this, module});
    const auto callback = [](sr_session_ctx_t *session, const char *, const char *, sr_event_t event,
                             std::uint32_t request, void *priv) -> int {
        if (event == SR_EV_DONE)
            static_cast<Watched *>(priv)->repository->on_done(session, *static_cast<Watched *>(priv),
                                                              request);
        return SR_ERR_OK;
    };
    return add_subscription([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
        return sr_module_change_subscribe(listener_.get(), module, nullptr, callback, &watched, 0,
                                          flags | SR_SUBSCR_DONE_ONLY | SR_SUBSCR_PASSIVE, raw);
    });
}

int Repository::subscribe(const char *module, const tq_db_entry &asked)
{
    const std::lock_guard lock(notices_);
    const tq_db_entry &entry = entries_.emplace_back(asked);
    int code = TQ_OK;
    if (entry.change) {
        const auto change = [](sr_session_ctx_t *session, const char *name, const char *xpath,
                               sr_event_t event, std::uint32_t request, void *priv) {
            const auto *of = static_cast<const tq_db_entry *>(priv);
            current_xpath = of->xpath;
            return of->change(session, name, xpath, event, request, nullptr);
        };
        code = add_subscription([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
            return sr_module_change_subscribe(listener_.get(), module, entry.xpath, change,
                                              const_cast<tq_db_entry *>(&entry), 0, flags, raw);
        });
    }
    if (code == TQ_OK && entry.get) {
        const auto get = [](sr_session_ctx_t *session, const char *name, const char *xpath, const char *,
                            std::uint32_t request, lyd_node **parent, void *priv) {
            return static_cast<const tq_db_entry *>(priv)->get(session, name, xpath, request,
                                                               reinterpret_cast<void **>(parent), nullptr);
        };
        // Merged: a callback that has nothing to add does not hide what is configured.
        code = add_subscription([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
            return sr_oper_get_items_subscribe(listener_.get(), module, entry.xpath, get,
                                               const_cast<tq_db_entry *>(&entry),
                                               flags | SR_SUBSCR_OPER_MERGE, raw);
        });
    }
    return code;
}

void Repository::add_leaf(const lyd_node *node, bool is_deleted, Changes &changes) const
{
    const auto row = std::find(schema_.begin(), schema_.end(), node->schema);
    if (row == schema_.end())
        return;
    const Setting &setting = settings[static_cast<std::size_t>(row - schema_.begin())];
    Slot slot = slot_of(setting.field);
    if (is_of_alarm(slot)) {
        const lyd_node *alarm = node->parent;
        while (alarm && alarm->schema->nodetype != LYS_LIST)
            alarm = alarm->parent;
        const auto *key = alarm ? reinterpret_cast<const lyd_node_leaf_list *>(alarm->child) : nullptr;
        if (!key || key->value.uint16 >= TQ_ALARM_COUNT) // the key is the first child
            return;
        slot = slot_of(setting.field, key->value.uint16);
    }
    changes[slot] =
        is_deleted ? Value{} : Value{reinterpret_cast<const lyd_node_leaf_list *>(node)->value_str};
}

void Repository::on_done(sr_session_ctx_t *session, Watched &watched, std::uint32_t request)
{
    const bool is_gap = watched.last_request != 0 && request != watched.last_request + 1;
    watched.last_request = request;
    sr_change_iter_t *raw = nullptr;
    const std::string everything = std::string("/") + watched.module + ":*//.";
    if (is_gap || sr_get_changes_iter(session, everything.c_str(), &raw) != SR_ERR_OK) {
        load_all();
        return;
    }
    const std::unique_ptr<sr_change_iter_t, IteratorDeleter> iterator(raw);
    Changes changes;
    sr_change_oper_t operation{};
    const lyd_node *node = nullptr;
    const char *previous_value = nullptr, *previous_list = nullptr;
    bool previous_default = false;
    while (sr_get_change_tree_next(session, raw, &operation, &node, &previous_value, &previous_list,
                                   &previous_default) == SR_ERR_OK)
        add_leaf(node, operation == SR_OP_DELETED, changes);
    mirror_.update(std::move(changes));
}

int Repository::read_all(Changes &values)
{
    for (const Watched &watched : watched_) {
        const std::string everything = std::string("/") + watched.module + ":*";
        lyd_node *raw = nullptr;
        errno = 0;
        const int result =
            sr_get_data(listener_.get(), everything.c_str(), 0, read_timeout.count(), SR_OPER_DEFAULT, &raw);
        const std::unique_ptr<lyd_node, DataDeleter> data(raw);
        if (result != SR_ERR_OK && result != SR_ERR_NOT_FOUND)
            return code_of(result, listener_.get());
        const lyd_node *next = nullptr, *node = nullptr;
        for (const lyd_node *root = raw; root; root = root->next) {
            LY_TREE_DFS_BEGIN(root, next, node)
            {
                if (node->schema->nodetype == LYS_LEAF)
                    add_leaf(node, false, values);
                LY_TREE_DFS_END(root, next, node);
            }
        }
    }
    return TQ_OK;
}

int Repository::load_all()
{
    Changes values;
    const int code = read_all(values);
    if (code == TQ_OK)
        mirror_.load(std::move(values));
    return code;
}

int Repository::reload()
{
    const std::lock_guard lock(notices_);
    return load_all();
}

void Repository::take_notices()
{
    const std::lock_guard lock(notices_);
    if (is_stuck())
        return;
    const Patience patience(is_stuck_);
    in_callback = true;
    sr_process_events(subscription_.get(), nullptr, nullptr);
    in_callback = false;
    patience.is_over();
}

int Repository::start_thread()
{
    if (sr_get_event_pipe(subscription_.get(), &event_fd_) != SR_ERR_OK)
        return TQ_ERR;
    stop_.reset(eventfd(0, EFD_CLOEXEC));
    if (!stop_)
        return TQ_ERR_NO_MEMORY;
    return db::start_thread(thread_, "tq_database", [this] { run(); });
}

void Repository::run() noexcept
{
    std::array<pollfd, 2> fds{pollfd{event_fd_, POLLIN, 0}, pollfd{stop_.get(), POLLIN, 0}};
    for (;;) {
        // While it is stuck, the keeper of the database decides how to go on.
        fds[0].fd = is_stuck() ? -1 : event_fd_;
        if (::poll(fds.data(), fds.size(), is_stuck() ? 1000 : -1) < 0 && errno != EINTR)
            return;
        if (fds[1].revents != 0 || (fds[0].revents & (POLLERR | POLLNVAL)) != 0)
            return;
        if (basis_->is_broken()) // the keeper of the database sees to it
            return;
        take_notices();
    }
}

} // namespace tq::db
