// SPDX-License-Identifier: GPL-2.0-or-later
// Pending changes, transactions and sessions of a database.
//
// Failure policy: a change that the database refuses is dropped, with those that were to be made together
// with it, and its code returned; it would be refused again with every later transaction.
#include "database.hpp"

#include "tq_errno.h"
#include "value.hpp"

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
} // namespace

// A change callback runs while somebody's transaction is under way: one more would wait for the first.
template <class Work>
int Database::as_writer(Work work)
{
    if (Repository::is_in_callback())
        return TQ_ERR_LOCKED;
    const std::lock_guard lock(writer_);
    return is_connected() ? work() : TQ_ERR_NO_DB;
}

int Database::connect()
{
    const std::lock_guard lock(writer_);
    if (is_connected())
        return TQ_OK;
    const int code = Repository::open(mirror_, repository_);
    is_connected_.store(code == TQ_OK, std::memory_order_release);
    return code;
}

void Database::disconnect()
{
    const std::lock_guard lock(writer_);
    is_connected_.store(false, std::memory_order_release);
    pending_.clear();
    sessions_.clear();
    repository_.reset();
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
        if (text && !repository_->is_valid(slot, text->c_str()))
            return static_cast<int>(TQ_ERR_INVALID);
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
    return is_connected() ? mirror_.read(slot, buffer, len) : TQ_ERR_NO_DB;
}

int Database::remove(Slot slot)
{
    return as_writer([&] {
        pending_.erase(slot);
        repository_->take_notices();
        return mirror_.is_set(slot) ? commit({{slot, std::nullopt}}) : TQ_ERR_NOT_FOUND;
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
    repository_->take_notices();
    mirror_.drop_unchanged(changes);
    return changes.empty() ? TQ_OK : repository_->apply(changes);
}

int Database::lock()
{
    return as_writer([&] { return repository_->lock(); });
}

int Database::unlock()
{
    return as_writer([&] { return repository_->unlock(); });
}

int Database::alarms_as_xml(char **xml) const
{
    return is_connected() ? hand_over(mirror_.alarms_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::thresholds_as_xml(char **xml) const
{
    return is_connected() ? hand_over(mirror_.thresholds_as_xml(), xml) : TQ_ERR_NO_DB;
}

int Database::subscribe(const tq_db_module &module)
{
    return as_writer([&] {
        if (!module.name || !module.entries)
            return static_cast<int>(TQ_ERR_INVALID);
        for (const tq_db_entry *entry = module.entries; entry->xpath; ++entry)
            if (const int code = repository_->subscribe(module.name, *entry); code != TQ_OK)
                return code;
        return static_cast<int>(TQ_OK);
    });
}

int Database::open_session(const struct vty *vty)
{
    return as_writer([&] {
        Session session;
        const int code = repository_->start_session(session);
        if (code == TQ_OK)
            sessions_[vty] = std::move(session);
        return code;
    });
}

int Database::close_session(const struct vty *vty)
{
    return as_writer([&] { return sessions_.erase(vty) ? TQ_OK : TQ_ERR_NOT_FOUND; });
}

} // namespace tq::db
