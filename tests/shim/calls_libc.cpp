// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's calls of libc, as they are recorded, but for those of threads and sockets.
#include "tests/shim/recording.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <mntent.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

// CALL_SHIM_IGNORE is the number of a signal that the daemon is started with ignored, as whoever starts it
// may leave it.
[[gnu::constructor]] void ignore_signal()
{
    const char *const number = std::getenv("CALL_SHIM_IGNORE");
    if (number && std::strcmp(program_invocation_short_name, "diagd") == 0)
        std::signal(static_cast<int>(std::strtol(number, nullptr, 10)), SIG_IGN);
}

} // namespace

using shim::leaf;
using shim::recorded;

extern "C" {

int setenv(const char *name, const char *value, int overwrite) noexcept
{
    NEXT(setenv);
    return recorded<leaf>(
        "setenv", [&] { return real(name, value, overwrite); }, tq::arg("name", name),
        tq::arg("value", value), tq::arg("overwrite", overwrite));
}

int open(const char *path, int flags, ...)
{
    NEXT(open);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    // Every traced library looks at the fault table, at every call: that is not the daemon's doing.
    static const char *const fault_table = std::getenv("TQ_FAULTS");
    if (fault_table && std::strcmp(path, fault_table) == 0)
        return real(path, flags, mode);
    return recorded<leaf>(
        "open", [&] { return real(path, flags, mode); }, tq::arg("path", path), tq::hex("flags", flags));
}

int ioctl(int fd, unsigned long request, ...) noexcept
{
    NEXT(ioctl);
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    // Requests of the GPIO device point to a 32-bit word; what others point to is not known here.
    constexpr unsigned long gpio_set = 1;
    constexpr unsigned long gpio_get = 3;
    const auto *const word =
        request == gpio_set || request == gpio_get ? static_cast<std::uint32_t *>(argument) : nullptr;
    return recorded<leaf>(
        "ioctl", [&] { return real(fd, request, argument); }, tq::arg("fd", fd), tq::hex("request", request),
        tq::hex("word", word ? *word : 0));
}

FILE *fopen(const char *path, const char *mode)
{
    NEXT(fopen);
    return recorded<leaf>(
        "fopen", [&] { return real(path, mode); }, tq::arg("path", path), tq::arg("mode", mode));
}

DIR *opendir(const char *path)
{
    NEXT(opendir);
    if (!OF_THE_DAEMON())
        return real(path);
    return recorded<leaf>(
        "opendir", [&] { return real(path); }, tq::arg("path", path));
}

// CALL_SHIM_CLOCK names a file with the seconds that the daemon's clock is ahead of the machine's, so that a
// test can set a clock without touching that of the machine.
time_t time(time_t *result) noexcept
{
    NEXT(time);
    if (!OF_THE_DAEMON())
        return real(result);
    static const char *const clock = std::getenv("CALL_SHIM_CLOCK");
    return recorded<leaf>("time", [&] {
        long ahead = 0;
        if (FILE *file = clock ? std::fopen(clock, "re") : nullptr) {
            char number[32];
            if (std::fgets(number, sizeof number, file))
                ahead = std::strtol(number, nullptr, 10);
            std::fclose(file);
        }
        const time_t now = real(nullptr) + ahead;
        if (result)
            *result = now;
        return now;
    });
}

int fflush(FILE *stream)
{
    NEXT(fflush);
    return recorded<leaf>("fflush", [&] { return real(stream); });
}

int fchmod(int fd, mode_t mode) noexcept
{
    NEXT(fchmod);
    return recorded<leaf>(
        "fchmod", [&] { return real(fd, mode); }, tq::hex("mode", mode));
}

int fsync(int fd)
{
    NEXT(fsync);
    return recorded<leaf>("fsync", [&] { return real(fd); });
}

void sync() noexcept
{
    NEXT(sync);
    recorded<leaf>("sync", [] { real(); });
}

int fclose(FILE *stream)
{
    NEXT(fclose);
    return recorded<leaf>("fclose", [&] { return real(stream); });
}

uid_t geteuid() noexcept
{
    NEXT(geteuid);
    return recorded<leaf>("geteuid", [] { return real(); });
}

int seteuid(uid_t user) noexcept
{
    NEXT(seteuid);
    return recorded<leaf>(
        "seteuid", [&] { return real(user); }, tq::arg("user", user));
}

unsigned int sleep(unsigned int seconds)
{
    NEXT(sleep);
    return recorded<leaf>(
        "sleep", [&] { return real(seconds); }, tq::arg("seconds", seconds));
}

int usleep(useconds_t microseconds)
{
    NEXT(usleep);
    return recorded<leaf>(
        "usleep", [&] { return real(microseconds); }, tq::arg("us", microseconds));
}

int nanosleep(const struct timespec *time, struct timespec *left)
{
    NEXT(nanosleep);
    return recorded<leaf>(
        "nanosleep", [&] { return real(time, left); },
        tq::arg("ms", static_cast<long long>(time->tv_sec) * 1000 + time->tv_nsec / 1'000'000));
}

int system(const char *line)
{
    NEXT(system);
    return recorded<leaf>(
        "system", [&] { return real(line); }, tq::arg("line", line));
}

// The daemon's popen and pclose, which give the shell a process group of its own: shown under these names,
// and failing like them, with 0 and -1.
int posix_spawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                const posix_spawnattr_t *attributes, char *const arguments[], char *const environment[])
{
    NEXT(posix_spawn);
    if (!OF_THE_DAEMON())
        return real(pid, path, actions, attributes, arguments, environment);
    const bool started = recorded<leaf>(
        "popen",
        [&] {
            errno = real(pid, path, actions, attributes, arguments, environment);
            return errno == 0 ? 1 : 0;
        },
        tq::arg("line", arguments[2]));
    return started ? 0 : errno;
}

pid_t waitpid(pid_t pid, int *status, int options)
{
    NEXT(waitpid);
    if (!OF_THE_DAEMON())
        return real(pid, status, options);
    return recorded<leaf>("pclose", [&] { return real(pid, status, options); });
}

// CALL_SHIM_MOUNTS names a file that is read in the mount table's place: the machine's own disks show in a
// box, too.
FILE *setmntent(const char *path, const char *mode) noexcept
{
    NEXT(setmntent);
    static const char *const table = std::getenv("CALL_SHIM_MOUNTS");
    return recorded<leaf>(
        "setmntent", [&] { return real(table ? table : path, mode); }, tq::arg("path", path),
        tq::arg("mode", mode));
}

} // extern "C"
