// SPDX-License-Identifier: GPL-2.0-or-later
// Connection, transactions and locks.
#include "platform/database/engine/repository.hpp"

#include "platform/database/engine/owner_identity.hpp"
#include "tq_errno.h"

#include <fcntl.h>
#include <libyang/libyang.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tq::db {

namespace {
constexpr const char *alarm_module = our_modules.front();

// sysrepo's shared memory is mapped and grows: with the file system full, touching it would kill the process
// with SIGBUS.  Far more than one transaction needs is asked for first.
constexpr unsigned long long shared_memory_reserve = 512 * 1024;

bool is_shared_memory_full()
{
    struct statvfs status {};
    return statvfs("/dev/shm", &status) == 0 &&
           static_cast<unsigned long long>(status.f_bavail) * status.f_frsize < shared_memory_reserve;
}

template <class Owner, class Start>
int owned(Owner &owner, Start start)
{
    typename Owner::pointer raw = nullptr;
    errno = 0;
    const int result = start(&raw);
    if (result != SR_ERR_OK)
        return result;
    owner.reset(raw);
    return SR_ERR_OK;
}
} // namespace

Repository::Repository(Mirror &mirror) : mirror_(mirror) {}

bool Repository::is_alone()
{
    return SharedState(sr_get_repo_path()).is_unused();
}

int Repository::open(Mirror &mirror, Trust trust, std::unique_ptr<Repository> &opened)
{
    // Connecting makes an empty repository where there is none: what is not there is to be set up, not
    // guessed.
    for (const char *folder : {"/yang", "/data"})
        if (::access((sr_get_repo_path() + std::string(folder)).c_str(), F_OK) != 0)
            return errno == EACCES ? TQ_ERR_ACCESS : TQ_ERR_NO_DB;
    if (is_shared_memory_full())
        return TQ_ERR_NO_SPACE;

    SharedState state(sr_get_repo_path());
    state.repair_permissions();
    if (state.is_absent() || trust == Trust::none ||
        ((trust == Trust::stuck || state.has_dead_subscriber()) && state.is_unused()))
        state.remove(); // of an absent one there may be parts
    bool is_lost = false;
    int code = open_with(mirror, state, is_lost, opened);
    if (code == TQ_ERR_TIMEOUT && state.is_unused()) {
        state.remove();
        code = open_with(mirror, state, is_lost, opened);
    }
    // With the process's own identity: the C library ends a process whose threads do not change theirs alike.
    if (code == TQ_OK && (code = opened->start_thread()) == TQ_OK)
        code = opened->agree(is_lost);
    if (code != TQ_OK)
        opened.reset();
    return code;
}

int Repository::open_with(Mirror &mirror, const SharedState &state, bool &is_lost,
                          std::unique_ptr<Repository> &opened)
{
    const OwnerIdentity owner(sr_get_repo_path());
    std::unique_ptr<Repository> repository(new Repository(mirror));
    is_lost = state.is_absent() && !state.is_restored();
    int code = repository->connect();
    if (code != TQ_OK)
        return code;
    state.restore();
    state.repair_permissions();
    is_lost = is_lost || state.has_lost_running();
    state.replace_lost_running();
    repository->basis_.emplace(state);
    repository->data_ = state.data();
    for (const char *module : our_modules)
        if (code == TQ_OK)
            code = repository->watch(module);
    Changes values;
    if (code == TQ_OK)
        code = repository->read_all(values);
    if (state.is_restored() && (code != TQ_OK || !repository->is_consistent())) {
        state.restore_startup();
        is_lost = true;
        code = repository->read_all(values = {});
    }
    if (code == TQ_OK)
        code = repository->open_locks();
    if (code == TQ_OK)
        opened = std::move(repository);
    return code;
}

// Until the database has what it lost, getters go on answering with it.
int Repository::agree(bool is_lost)
{
    Changes values;
    {
        const std::lock_guard lock(notices_);
        if (const int code = read_all(values); code != TQ_OK)
            return code;
    }
    Changes missing = mirror_.values();
    for (const auto &[slot, value] : values)
        if (!is_lost)
            missing.erase(slot);
        else
            missing.try_emplace(slot, std::nullopt);
    const int code = missing.empty() ? TQ_OK : apply(missing);
    return code == TQ_OK || code == TQ_ERR_INVALID ? reload() : code;
}

int Repository::connect()
{
    const int result = owned(connection_, [](auto raw) { return sr_connect(SR_CONN_DEFAULT, raw); });
    if (result != SR_ERR_OK)
        return code_of(result, nullptr);
    const ly_ctx *context = sr_get_context(connection_.get());
    for (std::size_t i = 0; i < settings.size(); ++i) {
        schema_[i] = const_cast<lys_node *>(ly_ctx_get_node(context, nullptr, settings[i].schema_path, 0));
        if (!schema_[i])
            return TQ_ERR_NO_DB; // no such module, or another revision of it
    }
    const int code = start_session(session_);
    return code == TQ_OK ? start_session(listener_) : code;
}

int Repository::start_session(Session &session)
{
    const int result =
        owned(session, [this](auto raw) { return sr_session_start(connection_.get(), SR_DS_RUNNING, raw); });
    return code_of(result, nullptr);
}

// Reading takes data that were cut off for what is left of them; a transaction, which checks, refuses them.
bool Repository::is_consistent()
{
    return std::all_of(watched_.begin(), watched_.end(), [this](const Watched &watched) {
        return sr_validate(listener_.get(), watched.module, read_timeout.count()) == SR_ERR_OK;
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
    const Patience patience(is_stuck_);
    int result = SR_ERR_OK;
    for (const auto &[slot, value] : changes) {
        const Path path = path_of(slot);
        result = value
                     ? sr_set_item_str(session_.get(), path.data(), value->c_str(), nullptr, SR_EDIT_DEFAULT)
                     : sr_delete_item(session_.get(), path.data(), SR_EDIT_DEFAULT);
        if (result != SR_ERR_OK)
            break;
    }
    const Turn turn(turn_, apply_timeout);
    if (SharedState(sr_get_repo_path()).has_dead_subscriber())
        forget_the_dead();
    if (result == SR_ERR_OK && patience.is_over())
        result = SR_ERR_TIME_OUT;
    errno = 0;
    // Waits for the subscribers: an event that one has not taken blocks the next writer.
    if (result == SR_ERR_OK)
        result = sr_apply_changes(session_.get(), apply_timeout.count(), 1);
    const int code = code_of(result, session_.get());
    // Changes that were refused stay in the session and would be refused again with the next ones.
    if (result != SR_ERR_OK)
        sr_discard_changes(session_.get());
    if (patience.is_over())
        return code;
    take_notices();
    if (result == SR_ERR_TIME_OUT) // it may have come through all the same
        reload();
    return code;
}

// sysrepo looks for connections whose process is gone when a new one is made, and only then.
void Repository::forget_the_dead()
{
    Connection connection;
    owned(connection, [](auto raw) { return sr_connect(SR_CONN_NO_SCHED_CHANGES, raw); });
}

int Repository::open_locks()
{
    const auto open_file = [](base::Fd &file, const char *name) {
        const std::string path = std::string(sr_get_repo_path()) + name;
        file.reset(::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644));
        return static_cast<bool>(file);
    };
    return open_file(lock_, "/apply_lock") && open_file(turn_, "/turn_lock") ? TQ_OK : TQ_ERR_ACCESS;
}

int Repository::lock()
{
    if (!lock_file(lock_, lock_wait))
        return TQ_ERR_LOCKED;
    int is_locked = 0;
    sr_get_lock(connection_.get(), SR_DS_RUNNING, alarm_module, &is_locked, nullptr, nullptr, nullptr);
    if (is_locked)
        unlock_file(lock_);
    is_locked_ = !is_locked;
    return is_locked ? TQ_ERR_LOCKED : TQ_OK;
}

int Repository::unlock()
{
    if (!std::exchange(is_locked_, false))
        return TQ_ERR_NOT_FOUND;
    unlock_file(lock_);
    return TQ_OK;
}

} // namespace tq::db
