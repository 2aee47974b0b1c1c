// SPDX-License-Identifier: GPL-2.0-or-later
// Who makes the objects that programs of the box share - semaphores, the alarm store, the database's files -
// and who may use them.
//
// They are made by root or by the daemon's user and by nobody else; whatever another user put in their place
// is foreign.  Members of the box's group use them: the group of the vty socket, too.  Nobody else has any
// access.
#pragma once

#include <grp.h>
#include <pwd.h>
#include <sys/types.h>

#include <cstddef>
#include <optional>

namespace base {

// The user that the daemon lives as.
inline constexpr char daemon_user[] = "daemon";
// The box's group.  A program that files alarms is its member.
inline constexpr char box_group[] = "daemon";
inline constexpr mode_t shared_mode = 0660;

namespace detail {
inline constexpr std::size_t entry_size = 4096; // far more than a user or a group of the system takes
}

// Nothing on a machine that does not have them.
inline std::optional<uid_t> daemon_uid() noexcept
{
    passwd entry{};
    passwd *found = nullptr;
    char buffer[detail::entry_size];
    if (getpwnam_r(daemon_user, &entry, buffer, sizeof buffer, &found) != 0 || !found)
        return std::nullopt;
    return found->pw_uid;
}

inline std::optional<gid_t> box_gid() noexcept
{
    group entry{};
    group *found = nullptr;
    char buffer[detail::entry_size];
    if (getgrnam_r(box_group, &entry, buffer, sizeof buffer, &found) != 0 || !found)
        return std::nullopt;
    return found->gr_gid;
}

// Root or the daemon's user.
inline bool is_box_owner(uid_t user) noexcept
{
    return user == 0 || user == daemon_uid();
}

} // namespace base
