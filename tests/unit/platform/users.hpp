// SPDX-License-Identifier: GPL-2.0-or-later
// Users who use what programs of the box share, or try to; for processes that are root.
#pragma once

#include <grp.h>
#include <unistd.h>

// As every Debian has them.
inline constexpr uid_t daemon_uid = 1;
inline constexpr gid_t daemon_gid = 1; // the box's group
inline constexpr uid_t nobody_uid = 65534;
inline constexpr gid_t nobody_gid = 65534;

// For good; the process has no other groups then.
inline bool become(uid_t user, gid_t group)
{
    return setgroups(0, nullptr) == 0 && setresgid(group, group, group) == 0 &&
           setresuid(user, user, user) == 0;
}

inline bool become_member()
{
    return become(nobody_uid, daemon_gid);
}

inline bool become_outsider()
{
    return become(nobody_uid, nobody_gid);
}
