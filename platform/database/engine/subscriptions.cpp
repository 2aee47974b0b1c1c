// SPDX-License-Identifier: GPL-2.0-or-later
// Subscriptions and the thread that takes their notices (see subscriptions.hpp).
#include "platform/database/engine/subscriptions.hpp"

#include "platform/database/engine/call_deadline.hpp"
#include "platform/database/engine/thread.hpp"
#include "tq_errno.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace tq::db {

namespace {
thread_local bool in_callback = false;
thread_local const char *current_xpath = "";

constexpr std::chrono::milliseconds read_timeout{2000};
} // namespace

Subscriptions::Subscriptions(Cache &cache, const SchemaNodes &schema, std::atomic<bool> &is_stuck)
    : cache_(cache), schema_(schema), is_stuck_(is_stuck)
{
}

Subscriptions::~Subscriptions() = default;

bool Subscriptions::is_in_callback()
{
    return in_callback;
}

void Subscriptions::unsubscribe(const Baseline &baseline)
{
    if (stop_thread())
        take_notices();
    if (!subscription_)
        return;
    const DataFiles files(baseline);
    subscription_.reset();
}

bool Subscriptions::stop_thread()
{
    if (!thread_.joinable())
        return false;
    eventfd_write(stop_.get(), 1);
    thread_.join();
    return true;
}

void Subscriptions::abandon()
{
    stop_thread();
    leak(subscription_.release());
    leak(session_.release());
}

// All subscriptions share one context, so one pipe and one taker serve them.
template <class Subscribe>
int Subscriptions::add(Subscribe subscribe)
{
    sr_subscription_ctx_t *raw = subscription_.release();
    const sr_subscr_options_t flags = SR_SUBSCR_NO_THREAD | (raw ? SR_SUBSCR_CTX_REUSE : 0);
    errno = 0;
    const int result = subscribe(flags, &raw);
    const int code = code_of(result, session_.get());
    subscription_.reset(raw);
    return code;
}

// A subscription to what is done already costs a writer one event, for which it does not wait.
int Subscriptions::watch(const char *module)
{
    Watched &watched = watched_.emplace_back(Watched{this, module});
    const auto callback = [](sr_session_ctx_t *session, const char *, const char *, sr_event_t event,
                             std::uint32_t request, void *priv) -> int {
        if (event == SR_EV_DONE)
            static_cast<Watched *>(priv)->subscriptions->on_done(session, *static_cast<Watched *>(priv),
                                                                 request);
        return SR_ERR_OK;
    };
    return add([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
        return sr_module_change_subscribe(session_.get(), module, nullptr, callback, &watched, 0,
                                          flags | SR_SUBSCR_DONE_ONLY | SR_SUBSCR_PASSIVE, raw);
    });
}

int Subscriptions::subscribe(const char *module, const tq_db_entry &asked)
{
    const std::lock_guard lock(mutex_);
    const tq_db_entry &entry = entries_.emplace_back(asked);
    int code = TQ_OK;
    if (entry.change) {
        const auto change = [](sr_session_ctx_t *session, const char *name, const char *xpath,
                               sr_event_t event, std::uint32_t request, void *priv) {
            const auto *of = static_cast<const tq_db_entry *>(priv);
            current_xpath = of->xpath;
            return of->change(session, name, xpath, event, request, nullptr);
        };
        code = add([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
            return sr_module_change_subscribe(session_.get(), module, entry.xpath, change,
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
        code = add([&](sr_subscr_options_t flags, sr_subscription_ctx_t **raw) {
            return sr_oper_get_items_subscribe(session_.get(), module, entry.xpath, get,
                                               const_cast<tq_db_entry *>(&entry),
                                               flags | SR_SUBSCR_OPER_MERGE, raw);
        });
    }
    return code;
}

void Subscriptions::add_leaf(const lyd_node *node, bool is_deleted, Changes &changes) const
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

void Subscriptions::on_done(sr_session_ctx_t *session, Watched &watched, std::uint32_t request)
{
    // Nobody knows what came before the first one: it may follow one that was lost.
    const bool is_gap = watched.last_request == 0 || request != watched.last_request + 1;
    watched.last_request = request;
    const std::string everything = std::string("/") + watched.module + ":*//.";
    ChangeIterator iterator;
    if (is_gap || make(iterator, [&](auto raw) {
                      return sr_get_changes_iter(session, everything.c_str(), raw);
                  }) != SR_ERR_OK) {
        load_watched();
        return;
    }
    Changes changes;
    for (ChangedNode changed{}; next_changed_node(session, iterator.get(), changed);)
        add_leaf(changed.node, changed.is_deleted, changes);
    cache_.update(std::move(changes));
}

int Subscriptions::read_watched(Changes &values)
{
    for (const Watched &watched : watched_) {
        DataTree data;
        const int result =
            read_data(session_.get(), std::string("/") + watched.module + ":*", read_timeout, data);
        if (result != SR_ERR_OK)
            return code_of(result, session_.get());
        const lyd_node *next = nullptr, *node = nullptr;
        for (const lyd_node *root = data.get(); root; root = root->next) {
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

int Subscriptions::read_all(Changes &values)
{
    const std::lock_guard lock(mutex_);
    return read_watched(values);
}

int Subscriptions::load_watched()
{
    Changes values;
    const int code = read_watched(values);
    is_stale_ = code != TQ_OK;
    if (code == TQ_OK)
        cache_.load(std::move(values));
    return code;
}

int Subscriptions::reload()
{
    const std::lock_guard lock(mutex_);
    return load_watched();
}

void Subscriptions::take_notices()
{
    const std::lock_guard lock(mutex_);
    if (is_stuck_)
        return;
    const CallDeadline deadline(is_stuck_);
    in_callback = true;
    process_events(subscription_.get());
    in_callback = false;
    deadline.is_over();
}

int Subscriptions::start_thread(const Baseline &baseline)
{
    if (sr_get_event_pipe(subscription_.get(), &event_fd_) != SR_ERR_OK)
        return TQ_ERR;
    stop_.reset(eventfd(0, EFD_CLOEXEC));
    if (!stop_)
        return TQ_ERR_NO_MEMORY;
    return db::start_thread(thread_, "tq_database", [this, &baseline] { run(baseline); });
}

void Subscriptions::run(const Baseline &baseline) noexcept
{
    std::array<pollfd, 2> fds{pollfd{event_fd_, POLLIN, 0}, pollfd{stop_.get(), POLLIN, 0}};
    for (;;) {
        // While it is stuck, the supervisor decides how to go on.
        fds[0].fd = is_stuck_ ? -1 : event_fd_;
        // A writer that waits for its notice to be taken lets nobody read until it is done.
        const bool is_stale = is_stale_ && !is_stuck_;
        const int ready = ::poll(fds.data(), fds.size(), is_stuck_ ? 1000 : is_stale ? 200 : -1);
        if (ready < 0 && errno != EINTR)
            return;
        if (fds[1].revents != 0 || (fds[0].revents & (POLLERR | POLLNVAL)) != 0)
            return;
        if (baseline.is_broken()) // the supervisor sees to it
            return;
        if (is_stale && ready == 0)
            reload();
        take_notices();
    }
}

int next_change(void *session, void **iterator, int *operation, void **old_value, void **new_value)
{
    auto *const from = static_cast<sr_session_ctx_t *>(session);
    sr_free_val(static_cast<sr_val_t *>(std::exchange(*old_value, nullptr)));
    sr_free_val(static_cast<sr_val_t *>(std::exchange(*new_value, nullptr)));
    if (!*iterator) {
        sr_change_iter_t *made = nullptr;
        const int result = sr_get_changes_iter(from, current_xpath, &made);
        *iterator = made;
        if (result != SR_ERR_OK)
            return code_of(result, from);
    }
    sr_change_oper_t kind{};
    sr_val_t *before = nullptr, *after = nullptr;
    const int result =
        sr_get_change_next(from, static_cast<sr_change_iter_t *>(*iterator), &kind, &before, &after);
    if (result != SR_ERR_OK)
        return code_of(result, from);
    *operation = kind;
    *old_value = before;
    *new_value = after;
    return TQ_OK;
}

} // namespace tq::db
