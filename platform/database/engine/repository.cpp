// SPDX-License-Identifier: GPL-2.0-or-later
// Connection, transactions and locks.
#include "platform/database/engine/repository.hpp"

#include "base/box_identity.hpp"
#include "platform/database/engine/call_deadline.hpp"
#include "platform/database/engine/file_access.hpp"
#include "platform/database/engine/file_lock.hpp"
#include "tq_errno.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tq::db {

namespace {
constexpr const char *alarm_module = our_modules.front();
} // namespace

Repository::Repository(Cache &cache) : cache_(cache), subscriptions_(cache, schema_, is_stuck_) {}

// A program that unsubscribes and one that writes would wait for each other.
Repository::~Repository()
{
    const FileLockGuard turn(turn_, apply_timeout);
    if (baseline_)
        subscriptions_.unsubscribe(*baseline_);
}

void Repository::abandon()
{
    subscriptions_.abandon();
    leak(session_.release());
    leak(connection_.release());
}

int Repository::open(Cache &cache, Trust trust, std::unique_ptr<Repository> &opened)
{
    Recovery recovery;
    int code = recovery.prepare(trust);
    if (code != TQ_OK)
        return code;
    code = attempt(cache, recovery, opened);
    if (code == TQ_ERR_TIMEOUT && recovery.remove_if_unused())
        code = attempt(cache, recovery, opened);
    // With the process's own identity: the C library ends a process whose threads do not change theirs alike.
    if (code == TQ_OK && (code = opened->subscriptions_.start_thread(*opened->baseline_)) == TQ_OK)
        code = opened->agree(recovery.is_running_lost());
    if (code != TQ_OK)
        opened.reset();
    return code;
}

int Repository::attempt(Cache &cache, Recovery &recovery, std::unique_ptr<Repository> &opened)
{
    const OwnerIdentity owner;
    std::unique_ptr<Repository> repository(new Repository(cache));
    recovery.begin();
    int code = repository->connect();
    if (code != TQ_OK)
        return code;
    repository->baseline_ = recovery.complete();
    shut_files();
    for (const char *module : our_modules)
        if (code == TQ_OK)
            code = repository->subscriptions_.watch(module);
    Changes values;
    if (code == TQ_OK)
        code = repository->subscriptions_.read_all(values);
    if (recovery.is_restored() && (code != TQ_OK || !repository->is_consistent())) {
        recovery.restore_startup();
        code = repository->subscriptions_.read_all(values = {});
    }
    if (code == TQ_OK)
        code = repository->open_lock_files();
    if (code == TQ_OK)
        opened = std::move(repository);
    return code;
}

// Until the database has what it lost, getters go on answering with it.
int Repository::agree(bool is_running_lost)
{
    Changes values;
    if (const int code = subscriptions_.read_all(values); code != TQ_OK)
        return code;
    Changes missing = cache_.values();
    for (const auto &[slot, value] : values)
        if (!is_running_lost)
            missing.erase(slot);
        else
            missing.try_emplace(slot, std::nullopt);
    const int code = missing.empty() ? TQ_OK : apply(missing);
    return code == TQ_OK || code == TQ_ERR_INVALID ? reload() : code;
}

int Repository::connect()
{
    guard_files();
    const int result = make(connection_, [](auto raw) { return sr_connect(SR_CONN_DEFAULT, raw); });
    if (result != SR_ERR_OK)
        return code_of(result, nullptr);
    const ly_ctx *context = sr_get_context(connection_.get());
    for (std::size_t i = 0; i < settings.size(); ++i) {
        schema_[i] = const_cast<lys_node *>(ly_ctx_get_node(context, nullptr, settings[i].schema_path, 0));
        if (!schema_[i])
            return TQ_ERR_NO_DB; // no such module, or another revision of it
    }
    const int code = start_session(session_);
    return code == TQ_OK ? start_session(subscriptions_.session()) : code;
}

int Repository::start_session(Session &session)
{
    const int result =
        make(session, [this](auto raw) { return sr_session_start(connection_.get(), SR_DS_RUNNING, raw); });
    return code_of(result, nullptr);
}

// Reading takes data that were cut off for what is left of them; a transaction, which checks, refuses them.
bool Repository::is_consistent()
{
    return std::ranges::all_of(our_modules, [this](const char *module) {
        return sr_validate(subscriptions_.session().get(), module, validate_timeout.count()) == SR_ERR_OK;
    });
}

bool Repository::is_valid(Slot slot, const char *text) const
{
    const auto row = static_cast<std::size_t>(setting_of(slot).field);
    return lyd_validate_value(schema_[row], text) == 0;
}

int Repository::apply(const Changes &changes)
{
    if (is_stuck())
        return TQ_ERR_TIMEOUT;
    if (is_shared_memory_full())
        return TQ_ERR_NO_SPACE;
    const CallDeadline deadline(is_stuck_);
    int result = SR_ERR_OK;
    for (const auto &[slot, value] : changes) {
        const Path path = path_of(slot);
        result = value
                     ? sr_set_item_str(session_.get(), path.data(), value->c_str(), nullptr, SR_EDIT_DEFAULT)
                     : sr_delete_item(session_.get(), path.data(), SR_EDIT_DEFAULT);
        if (result != SR_ERR_OK)
            break;
    }
    const FileLockGuard turn(turn_, apply_timeout);
    forget_dead_subscribers();
    if (result == SR_ERR_OK && deadline.is_over())
        result = SR_ERR_TIME_OUT;
    errno = 0;
    if (result == SR_ERR_OK)
        result = apply_changes(session_.get(), apply_timeout);
    const int code = code_of(result, session_.get());
    // Changes that were refused stay in the session and would be refused again with the next ones.
    if (result != SR_ERR_OK)
        sr_discard_changes(session_.get());
    if (deadline.is_over())
        return code;
    take_notices();
    if (result == SR_ERR_TIME_OUT) // it may have come through all the same
        reload();
    return code;
}

int Repository::subscribe(const tq_db_module &module)
{
    for (const tq_db_entry *entry = module.entries; entry->xpath; ++entry)
        if (const int code = subscriptions_.subscribe(module.name, *entry); code != TQ_OK)
            return code;
    return TQ_OK;
}

int Repository::open_lock_files()
{
    const auto open_file = [](base::Fd &file, const char *name) {
        const std::string path = std::string(sr_get_repo_path()) + name;
        file.reset(::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, base::shared_mode));
        return static_cast<bool>(file);
    };
    return open_file(lock_, "/apply_lock") && open_file(turn_, "/turn_lock") ? TQ_OK : TQ_ERR_ACCESS;
}

int Repository::lock()
{
    if (!lock_file(lock_, lock_wait))
        return TQ_ERR_LOCKED;
    is_locked_ = !is_locked(connection_.get(), alarm_module);
    if (!is_locked_)
        unlock_file(lock_);
    return is_locked_ ? TQ_OK : TQ_ERR_LOCKED;
}

int Repository::unlock()
{
    if (!std::exchange(is_locked_, false))
        return TQ_ERR_NOT_FOUND;
    unlock_file(lock_);
    return TQ_OK;
}

} // namespace tq::db
