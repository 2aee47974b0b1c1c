// SPDX-License-Identifier: GPL-2.0-or-later
// When the shared state is removed and what is put back into the next one (see recovery.hpp).
#include "platform/database/engine/recovery.hpp"

#include "base/thread_identity.hpp"
#include "platform/database/engine/recovery/shared_state.hpp"
#include "platform/database/engine/sysrepo.hpp"
#include "tq_errno.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace tq::db {

Recovery::Recovery() : state_(std::make_unique<SharedState>(sr_get_repo_path())) {}

Recovery::~Recovery() = default;

int Recovery::prepare(Trust trust)
{
    // Connecting makes an empty repository where there is none: what is not there is to be set up, not
    // guessed.
    for (const char *folder : {"/yang", "/data"})
        if (::access((state_->repository() + folder).c_str(), F_OK) != 0)
            return errno == EACCES ? TQ_ERR_ACCESS : TQ_ERR_NO_DB;
    if (is_shared_memory_full())
        return TQ_ERR_NO_SPACE;
    state_->repair_permissions();
    if (state_->is_absent() || trust == Trust::none ||
        ((trust == Trust::stuck || state_->has_dead_subscriber()) && state_->is_unused()))
        state_->remove(); // of an absent one there may be parts
    return TQ_OK;
}

void Recovery::begin()
{
    is_running_lost_ = state_->is_absent() && !state_->is_restored();
}

bool Recovery::remove_if_unused()
{
    if (!state_->is_unused())
        return false;
    state_->remove();
    return true;
}

Baseline Recovery::complete()
{
    state_->restore();
    state_->repair_permissions();
    is_running_lost_ = is_running_lost_ || state_->has_lost_running();
    state_->replace_lost_running();
    return Baseline(*state_);
}

bool Recovery::is_restored() const
{
    return state_->is_restored();
}

void Recovery::restore_startup()
{
    state_->restore_startup();
    is_running_lost_ = true;
}

OwnerIdentity::OwnerIdentity() : uid_(::geteuid()), gid_(::getegid())
{
    struct stat status {};
    if (uid_ != 0 || ::stat(sr_get_repo_path(), &status) != 0 || status.st_uid == 0)
        return;
    // the group first: the user has no right to change it
    is_group_changed_ = base::set_thread_gid(status.st_gid);
    is_user_changed_ = base::set_thread_uid(status.st_uid);
}

OwnerIdentity::~OwnerIdentity()
{
    // Both only go back to ids that the process still has, real or saved.
    if (is_user_changed_)
        base::set_thread_uid(uid_);
    if (is_group_changed_)
        base::set_thread_gid(gid_);
}

bool is_state_unused()
{
    return SharedState(sr_get_repo_path()).is_unused();
}

bool is_shared_memory_full()
{
    constexpr unsigned long long reserve = 512 * 1024;
    struct statvfs status {};
    return statvfs("/dev/shm", &status) == 0 &&
           static_cast<unsigned long long>(status.f_bavail) * status.f_frsize < reserve;
}

// sysrepo looks for connections whose process is gone when a new one is made, and only then.
void forget_dead_subscribers()
{
    if (!SharedState(sr_get_repo_path()).has_dead_subscriber())
        return;
    Connection connection;
    make(connection, [](auto raw) { return sr_connect(SR_CONN_NO_SCHED_CHANGES, raw); });
}

void leak(void *handle)
{
    static auto &all = *new std::vector<void *>;
    all.push_back(handle);
}

} // namespace tq::db
