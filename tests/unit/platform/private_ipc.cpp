// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/unit/platform/private_ipc.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/sem.h>
#include <unistd.h>

namespace {

bool write_file(const char *path, const std::string &text)
{
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

bool enter()
{
    const uid_t uid = geteuid();
    const gid_t gid = getegid();
    const int user_namespace = uid == 0 ? 0 : CLONE_NEWUSER;
    if (unshare(CLONE_NEWNS | CLONE_NEWIPC | user_namespace) != 0)
        return false;
    if (user_namespace != 0 && !(write_file("/proc/self/setgroups", "deny") &&
                                 write_file("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") &&
                                 write_file("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1")))
        return false;
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", "/dev/shm", "tmpfs", 0, "mode=1777") == 0;
}

// Before main: a program has one thread then, as unshare wants it.
__attribute__((constructor)) void enter_or_die()
{
    if (!enter()) {
        std::perror("private IPC namespace");
        std::exit(1);
    }
}

} // namespace

void clear_private_ipc()
{
    for (const auto &entry : std::filesystem::directory_iterator("/dev/shm"))
        std::filesystem::remove_all(entry.path());
    seminfo info{};
    const int last = semctl(0, 0, SEM_INFO, &info);
    for (int index = 0; index <= last; ++index) {
        semid_ds status{};
        if (const int id = semctl(index, 0, SEM_STAT, &status); id >= 0)
            semctl(id, 0, IPC_RMID);
    }
}
