// SPDX-License-Identifier: GPL-2.0-or-later
// Pending changes, transactions and sessions of a database.
//
// Failure policy: a change that the database refuses is dropped, with those that were to be made together
// with it, and its code returned; it would be refused again with every later transaction.  A change while
// the database is away is refused, too.  Nobody waits longer than the times below, however long sysrepo does;
// a change that was given up in the middle may come through all the same, and then shows.
#include "platform/database/engine/database.hpp"

#include "platform/database/model/value.hpp"
#include "tq_errno.h"

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

constexpr std::chrono::milliseconds first_wait{20000};  // at start-up, when a state may have to be made anew
constexpr std::chrono::milliseconds answer_wait{2500};  // for a transaction
constexpr std::chrono::milliseconds connect_wait{1000}; // for one while there is no connection
constexpr std::chrono::milliseconds look_period{2000};
} // namespace

// A change callback runs while somebody's transaction is under way: one more would wait for the first.
template <class Work>
int Database::as_writer(Work work)
{
    if (Repository::is_in_callback())
        return TQ_ERR_LOCKED;
    const std::lock_guard lock(writer_);
    return is_open() ? work() : TQ_ERR_NO_DB;
}

// work(repository), once there is a connection; it owns what it needs, for it may outlast the call.
template <class Work>
int Database::through_keeper(Work work)
{
    return keeper_.run(
        [this, work = std::move(work)]() mutable {
            if (const int code = ready(); code != TQ_OK)
                return code;
            if (!keeper_.is_awaited()) // what was refused must not happen later
                return static_cast<int>(TQ_ERR_TIMEOUT);
            const int code = work(*repository_);
            if (code == TQ_ERR_TIMEOUT || !keeper_.is_awaited())
                is_suspect_ = true;
            else if (code == TQ_OK)
                is_suspect_ = false;
            return code;
        },
        is_reachable_ ? answer_wait : connect_wait);
}

Database::Database() : keeper_([this] { ready(); }, look_period) {}

int Database::connect()
{
    const std::lock_guard lock(writer_);
    if (is_open())
        return TQ_OK;
    int code = keeper_.start();
    if (code == TQ_OK)
        code = keeper_.run(
            [this] {
                mirror_.load({}); // of an earlier life
                const int result = make_connection();
                is_kept_ = result == TQ_OK;
                return result;
            },
            first_wait);
    is_open_.store(code == TQ_OK, std::memory_order_release);
    return code;
}

void Database::disconnect()
{
    const std::lock_guard lock(writer_);
    is_open_.store(false, std::memory_order_release);
    pending_.clear();
    keeper_.run(
        [this] {
            int code = TQ_OK;
            const bool is_broken = repository_ && repository_->standing(code) == Standing::broken;
            const bool is_stuck = is_suspect_ || (repository_ && repository_->is_stuck());
            drop(is_broken ? Trust::none : is_stuck ? Trust::stuck : Trust::usual);
            is_kept_ = false;
            sessions_.clear();
            modules_.clear();
            return static_cast<int>(TQ_OK);
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
        if (text) {
            const std::lock_guard lock(schema_);
            if (!repository_)
                return static_cast<int>(TQ_ERR_NO_DB);
            if (!repository_->is_valid(slot, text->c_str()))
                return static_cast<int>(TQ_ERR_INVALID);
        }
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
    return is_open() ? mirror_.read(slot, buffer, len) : TQ_ERR_NO_DB;
}

int Database::remove(Slot slot)
{
    return as_writer([&] {
        pending_.erase(slot);
        return through_keeper([this, slot](Repository &repository) {
            repository.take_notices();
            return mirror_.is_set(slot) ? repository.apply({{slot, std::nullopt}}) : TQ_ERR_NOT_FOUND;
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
    return through_keeper([this, changes = std::move(changes)](Repository &repository) mutable {
        repository.take_notices();
        mirror_.drop_unchanged(changes);
        return changes.empty() ? TQ_OK : repository.apply(changes);
    });
}

int Database::lock()
{
    return as_writer(
        [&] { return through_keeper([](Repository &repository) { return repository.lock(); }); });
}

int Database::unlock()
{
    return as_writer(
        [&] { return through_keeper([](Repository &repository) { return repository.unlock(); }); });
}

int Database::alarms_as_xml(char **xml) const
{
    return is_open() ? hand_over(mirror_.alarms_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::thresholds_as_xml(char **xml) const
{
    return is_open() ? hand_over(mirror_.thresholds_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::subscribe(const tq_db_module &module)
{
    return as_writer([&] {
        if (!module.name || !module.entries)
            return static_cast<int>(TQ_ERR_INVALID);
        return through_keeper([this, module](Repository &) { return add_module(module); });
    });
}

int Database::open_session(const struct vty *vty)
{
    return as_writer([&] {
        return keeper_.run(
            [this, vty] {
                Session &session = sessions_[vty];
                const int code = ready();
                return code == TQ_OK && !session ? repository_->start_session(session) : code;
            },
            connect_wait);
    });
}

int Database::close_session(const struct vty *vty)
{
    return as_writer([&] {
        return keeper_.run([this, vty] { return sessions_.erase(vty) ? TQ_OK : TQ_ERR_NOT_FOUND; },
                           connect_wait);
    });
}

} // namespace tq::db
