// SPDX-License-Identifier: GPL-2.0-or-later
// Pending changes, transactions and sessions of a database (see database.hpp).
//
// Failure policy: a change that the database refuses is dropped, with those that were to be made together
// with it, and its code returned; it would be refused again with every later transaction.  A change while
// the database is away is refused, too.  Nobody waits longer than the times below, however long sysrepo does;
// a change that was given up in the middle may come through all the same, and then shows.
#include "platform/database/api/database.hpp"

#include "platform/database/engine/subscriptions.hpp"
#include "platform/database/model/value.hpp"
#include "tq_errno.h"

#include <chrono>
#include <cstring>
#include <utility>

namespace tq::db {

namespace {
int hand_over(const std::string &text, char **result)
{
    if (!result)
        return TQ_ERR_INVALID;
    *result = strdup(text.c_str());
    return *result ? TQ_OK : TQ_ERR_NO_MEMORY;
}

constexpr std::chrono::milliseconds first_wait{20000};  // at start-up, when a state may have to be made again
constexpr std::chrono::milliseconds answer_wait{2500};  // for a transaction
constexpr std::chrono::milliseconds connect_wait{1000}; // for one while there is no connection
constexpr std::chrono::milliseconds look_period{2000};
} // namespace

// A change callback runs while somebody's transaction is under way: one more would wait for the first.
template <class Work>
int Database::as_writer(Work work)
{
    if (Subscriptions::is_in_callback())
        return TQ_ERR_LOCKED;
    const std::lock_guard lock(writer_);
    return is_open() ? work() : TQ_ERR_NO_DB;
}

// work(repository), once there is a connection; it owns what it needs, for it may outlast the call.
template <class Work>
int Database::execute(Work work)
{
    return executor_.run(
        [this, work = std::move(work)]() mutable {
            if (const int code = supervisor_.ready(); code != TQ_OK)
                return code;
            if (!executor_.is_awaited()) // what was refused must not happen later
                return static_cast<int>(TQ_ERR_TIMEOUT);
            const int code = work(supervisor_.repository());
            supervisor_.note(code, executor_.is_awaited());
            return code;
        },
        supervisor_.is_reachable() ? answer_wait : connect_wait);
}

Database::Database() : supervisor_(cache_), executor_([this] { supervisor_.ready(); }, look_period) {}

int Database::connect()
{
    const std::lock_guard lock(writer_);
    if (is_open())
        return TQ_OK;
    int code = executor_.start();
    if (code == TQ_OK)
        code = executor_.run([this] { return supervisor_.connect(); }, first_wait);
    is_open_.store(code == TQ_OK, std::memory_order_release);
    return code;
}

void Database::disconnect()
{
    const std::lock_guard lock(writer_);
    is_open_.store(false, std::memory_order_release);
    pending_.clear();
    executor_.run(
        [this] {
            supervisor_.disconnect();
            return TQ_OK;
        },
        answer_wait);
}

int Database::set(Slot slot, const void *value, int width, bool is_applied)
{
    const Setting &setting = setting_of(slot);
    std::optional<std::string> text = to_text(setting.kind, value, width);
    if (!text)
        return TQ_ERR_INVALID;
    if (text->empty() && setting.unset == Unset::reads_empty)
        text.reset();
    return as_writer([&] {
        if (text)
            if (const int code = supervisor_.validate(slot, text->c_str()); code != TQ_OK)
                return code;
        if (!is_applied) {
            pending_[slot] = std::move(text);
            return static_cast<int>(TQ_OK);
        }
        Changes changes;
        const auto [first, last] = object_of(slot);
        for (auto it = pending_.lower_bound(first); it != pending_.end() && it->first < last;)
            changes.insert(pending_.extract(it++));
        changes[slot] = std::move(text);
        return commit(std::move(changes));
    });
}

int Database::get(Slot slot, void *buffer, int *len) const
{
    return is_open() ? cache_.read(slot, buffer, len) : TQ_ERR_NO_DB;
}

int Database::remove(Slot slot)
{
    return as_writer([&] {
        pending_.erase(slot);
        return execute([this, slot](Repository &repository) {
            repository.take_notices();
            return cache_.is_set(slot) ? repository.apply({{slot, std::nullopt}}) : TQ_ERR_NOT_FOUND;
        });
    });
}

int Database::remove_pending(Slot slot)
{
    return as_writer([&] {
        pending_[slot] = std::nullopt;
        return TQ_OK;
    });
}

int Database::apply_pending()
{
    return as_writer([&] { return commit(std::exchange(pending_, {})); });
}

int Database::discard_pending()
{
    return as_writer([&] {
        pending_.clear();
        return TQ_OK;
    });
}

// A transaction costs a hundred times more than comparing, and what has not changed is the common case:
// start-up sets every alarm to its defaults.
int Database::commit(Changes changes)
{
    return execute([this, changes = std::move(changes)](Repository &repository) mutable {
        repository.take_notices();
        cache_.drop_unchanged(changes);
        return changes.empty() ? TQ_OK : repository.apply(changes);
    });
}

int Database::lock()
{
    return as_writer([&] { return execute([](Repository &repository) { return repository.lock(); }); });
}

int Database::unlock()
{
    return as_writer([&] { return execute([](Repository &repository) { return repository.unlock(); }); });
}

int Database::alarms_as_xml(char **xml) const
{
    return is_open() ? hand_over(cache_.alarms_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::thresholds_as_xml(char **xml) const
{
    return is_open() ? hand_over(cache_.thresholds_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::subscribe(const tq_db_module &module)
{
    return as_writer([&] {
        if (!module.name || !module.entries)
            return static_cast<int>(TQ_ERR_INVALID);
        return execute([this, module](Repository &) { return supervisor_.subscribe(module); });
    });
}

int Database::open_session(const struct vty *vty)
{
    return as_writer(
        [&] { return executor_.run([this, vty] { return supervisor_.open_session(vty); }, connect_wait); });
}

int Database::close_session(const struct vty *vty)
{
    return as_writer(
        [&] { return executor_.run([this, vty] { return supervisor_.close_session(vty); }, connect_wait); });
}

} // namespace tq::db
