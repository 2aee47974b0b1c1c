// SPDX-License-Identifier: GPL-2.0-or-later
// Preloaded into the daemon by tests: its calls of libfrr and libc appear in the call trace (TQ_TRACE) among
// those of the platform, and obey the fault table (TQ_FAULTS), by the function's name.
// A call that the trace itself makes, or that a recorded one makes in turn inside libc, is not recorded.
// With CALL_SHIM_DISTURB=SEED some of these calls, and those that take and give semaphores, sleep a little
// before and after, so that threads and processes meet in orders that a quiet machine never shows.
#include "diagd/core/frr.hpp"
#include "platform/trace/tq_trace.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <linux/netlink.h>
#include <mntent.h>
#include <spawn.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

thread_local bool inside = false;

template <class Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Sleeps now and then.  Each thread has choices of its own, which the seed and its name decide.
class Disturbance {
public:
    void sleep_now_and_then()
    {
        if (chance_ == 0) [[unlikely]]
            chance_ = seed_of_thread();
        const std::uint32_t choice = next_choice();
        constexpr std::uint32_t one_in = 16;
        constexpr std::uint32_t long_one_in = 512;
        if (choice % one_in != 0)
            return;
        constexpr long short_us = 1'000;
        constexpr long long_us = 20'000;
        const long most_us = choice % long_one_in == 0 ? long_us : short_us;
        const timespec pause{0,
                             static_cast<long>(next_choice() % static_cast<std::uint32_t>(most_us)) * 1'000};
        const int saved = errno;
        clock_nanosleep(CLOCK_MONOTONIC, 0, &pause, nullptr);
        errno = saved;
    }

    static bool is_wanted()
    {
        static const bool wanted = std::getenv("CALL_SHIM_DISTURB") != nullptr;
        return wanted;
    }

private:
    static std::uint32_t seed_of_thread()
    {
        std::uint32_t hash = 2'166'136'261U; // FNV-1a
        const auto mix = [&hash](const char *text) {
            for (; *text != '\0'; ++text)
                hash = (hash ^ static_cast<unsigned char>(*text)) * 16'777'619U;
        };
        mix(std::getenv("CALL_SHIM_DISTURB"));
        mix(tq::current_thread_name().text);
        return hash != 0 ? hash : 1;
    }

    std::uint32_t next_choice()
    {
        chance_ ^= chance_ << 13; // xorshift
        chance_ ^= chance_ >> 17;
        chance_ ^= chance_ << 5;
        return chance_;
    }

    std::uint32_t chance_ = 0;
};
thread_local Disturbance disturbance;

// Runs `call` with a little sleep before and after it, if that is wanted.
template <class F>
auto disturbed(F &&call)
{
    if (!Disturbance::is_wanted())
        return call();
    disturbance.sleep_now_and_then();
    struct After {
        ~After() { disturbance.sleep_now_and_then(); }
    } after;
    return call();
}

// Runs `call`, recorded unless this thread is recording already.  libfrr's own functions call one another,
// and those calls are part of the order: `nested` lets them through.
template <bool nested, class F, class... Args>
auto recorded(const char *op, F &&call, const Args &...args)
{
    if (inside)
        return call();
    inside = true;
    auto once = [&] {
        inside = !nested;
        struct Restore {
            ~Restore() { inside = true; }
        } restore;
        return call();
    };
    struct Leave {
        ~Leave() { inside = false; }
    } leave;
    return disturbed([&] { return tq::traced(op, once, args...); });
}

// Whether a call comes from the daemon's own code.  What libraries do for themselves with threads and sockets
// is no part of any order.
bool is_of_the_daemon(const void *return_address)
{
    static const void *const daemon = [] {
        Dl_info program{};
        dladdr(reinterpret_cast<const void *>(getauxval(AT_ENTRY)), &program);
        return static_cast<const void *>(program.dli_fbase);
    }();
    Dl_info caller{};
    return dladdr(return_address, &caller) != 0 && caller.dli_fbase == daemon;
}

constexpr bool leaf = false;
constexpr bool nested = true;

// CALL_SHIM_IGNORE is the number of a signal that the daemon is started with ignored, as whoever starts it
// may leave it.
[[gnu::constructor]] void ignore_signal()
{
    const char *const number = std::getenv("CALL_SHIM_IGNORE");
    if (number && std::strcmp(program_invocation_short_name, "diagd") == 0)
        std::signal(static_cast<int>(std::strtol(number, nullptr, 10)), SIG_IGN);
}

} // namespace

#define OF_THE_DAEMON() is_of_the_daemon(__builtin_return_address(0))
#define NEXT(function) static auto *const real = next<decltype(function)>(#function)

extern "C" {

// --- libfrr: life of the daemon.  frr_run and frr_config_fork are shown when they are entered: frr_run never
// returns.

void frr_preinit(struct frr_daemon_info *daemon, int argc, char **argv)
{
    NEXT(frr_preinit);
    recorded<nested>(
        "frr_preinit", [&] { real(daemon, argc, argv); }, tq::arg("name", daemon->name),
        tq::arg("vty_port", daemon->vty_port));
}

struct thread_master *frr_init(void)
{
    NEXT(frr_init);
    return recorded<nested>("frr_init", [] { return real(); });
}

void frr_config_fork(void)
{
    NEXT(frr_config_fork);
    recorded<leaf>("frr_config_fork", [] {});
    real();
}

void frr_run(struct thread_master *master)
{
    NEXT(frr_run);
    recorded<leaf>("frr_run", [] {});
    real(master);
}

bool vty_read_config(struct nb_config *config, const char *config_file, char *config_default_dir)
{
    NEXT(vty_read_config);
    return recorded<nested>(
        "vty_read_config", [&] { return real(config, config_file, config_default_dir); },
        tq::arg("config", config != nullptr ? 1 : 0), tq::arg("config_file", config_file),
        tq::arg("default", config_default_dir));
}

// --- libfrr: nodes and commands

void install_node(struct cmd_node *node)
{
    NEXT(install_node);
    recorded<leaf>(
        "install_node", [&] { real(node); }, tq::arg("node", static_cast<int>(node->node)),
        tq::arg("name", node->name), tq::arg("parent", static_cast<int>(node->parent_node)),
        tq::arg("prompt", node->prompt));
}

void _install_element(enum node_type node, const struct cmd_element *element)
{
    NEXT(_install_element);
    recorded<leaf>(
        "install_element", [&] { real(node, element); }, tq::arg("node", static_cast<int>(node)),
        tq::token("cmd", element->name), tq::arg("hidden", element->attr == CMD_ATTR_HIDDEN ? 1 : 0),
        tq::arg("str", element->string), tq::arg("doc", element->doc));
}

// --- libfrr: privileges and peers

struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    NEXT(_zprivs_raise);
    return recorded<leaf>(
        "raise", [&] { return real(privs, reason); }, tq::arg("reason", reason));
}

void _zprivs_lower(struct zebra_privs_t **privs)
{
    NEXT(_zprivs_lower);
    recorded<leaf>("lower", [&] { real(privs); });
}

struct zclient *zclient_new(struct thread_master *master, struct zclient_options *options,
                            zclient_handler *const *handlers, size_t handler_count)
{
    NEXT(zclient_new);
    return recorded<leaf>("zclient_new", [&] { return real(master, options, handlers, handler_count); });
}

void zclient_init(struct zclient *client, int route_type, unsigned short instance,
                  struct zebra_privs_t *privs)
{
    NEXT(zclient_init);
    recorded<leaf>(
        "zclient_init", [&] { real(client, route_type, instance, privs); }, tq::arg("route_type", route_type),
        tq::arg("instance", static_cast<int>(instance)));
}

// libfrr stops a client itself when its connection fails.
void zclient_stop(struct zclient *client)
{
    NEXT(zclient_stop);
    if (!OF_THE_DAEMON())
        return real(client);
    recorded<leaf>("zclient_stop", [&] { real(client); });
}

void zclient_free(struct zclient *client)
{
    NEXT(zclient_free);
    recorded<leaf>("zclient_free", [&] { real(client); });
}

// A message's command is the last word of its header of ten bytes.
enum zclient_send_status zclient_send_message(struct zclient *client)
{
    NEXT(zclient_send_message);
    constexpr std::size_t command_at = 8;
    const struct stream *const message = client->obuf;
    const int command = stream_get_endp(message) < command_at + 2
                            ? -1
                            : message->data[command_at] << 8 | message->data[command_at + 1];
    return recorded<leaf>(
        "zclient_send_message", [&] { return real(client); }, tq::arg("command", command));
}

// --- libfrr: timers.  CALL_SHIM_TIMER names a timer's function and the milliseconds that it is to wait
// instead of its own seconds ("function=20"), so that what needs many of its rounds is tested in little time.

void _thread_add_timer(const struct xref_threadsched *where, struct thread_master *master,
                       void (*function)(struct thread *), void *argument, long seconds, struct thread **timer)
{
    NEXT(_thread_add_timer);
    static const char *const hurried = std::getenv("CALL_SHIM_TIMER");
    const std::size_t length = std::strlen(where->funcname);
    recorded<leaf>(
        "thread_add_timer",
        [&] {
            if (hurried && std::strncmp(hurried, where->funcname, length) == 0 && hurried[length] == '=')
                _thread_add_timer_msec(where, master, function, argument,
                                       std::strtol(hurried + length + 1, nullptr, 10), timer);
            else
                real(where, master, function, argument, seconds, timer);
        },
        tq::arg("function", where->funcname), tq::arg("seconds", static_cast<long long>(seconds)),
        tq::arg("argument", argument != nullptr ? 1 : 0));
}

// --- libc

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

// --- semaphores, of whoever takes them: not recorded, for the platform's calls are

int semop(int id, struct sembuf *operations, size_t count) noexcept
{
    NEXT(semop);
    return disturbed([&] { return real(id, operations, count); });
}

int semtimedop(int id, struct sembuf *operations, size_t count, const struct timespec *timeout) noexcept
{
    NEXT(semtimedop);
    return disturbed([&] { return real(id, operations, count, timeout); });
}

// --- threads and sockets of the daemon's own

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                   void *argument) noexcept
{
    NEXT(pthread_create);
    if (!OF_THE_DAEMON())
        return real(thread, attributes, body, argument);
    return recorded<leaf>(
        "pthread_create", [&] { return real(thread, attributes, body, argument); },
        tq::arg("attributes", attributes != nullptr ? 1 : 0));
}

int pthread_detach(pthread_t thread) noexcept
{
    NEXT(pthread_detach);
    if (!OF_THE_DAEMON())
        return real(thread);
    return recorded<leaf>("pthread_detach", [&] { return real(thread); });
}

int socket(int domain, int type, int protocol) noexcept
{
    NEXT(socket);
    if (!OF_THE_DAEMON())
        return real(domain, type, protocol);
    return recorded<leaf>(
        "socket", [&] { return real(domain, type, protocol); }, tq::arg("domain", domain),
        tq::arg("type", type & ~(SOCK_CLOEXEC | SOCK_NONBLOCK)), tq::arg("protocol", protocol));
}

int setsockopt(int fd, int level, int option, const void *value, socklen_t length) noexcept
{
    NEXT(setsockopt);
    if (!OF_THE_DAEMON())
        return real(fd, level, option, value, length);
    return recorded<leaf>(
        "setsockopt", [&] { return real(fd, level, option, value, length); }, tq::arg("level", level),
        tq::arg("option", option),
        tq::arg("value", length == sizeof(int) ? *static_cast<const int *>(value) : 0));
}

int bind(int fd, const struct sockaddr *address, socklen_t length) noexcept
{
    NEXT(bind);
    if (!OF_THE_DAEMON() || address->sa_family != AF_NETLINK)
        return real(fd, address, length);
    const auto *const netlink = reinterpret_cast<const struct sockaddr_nl *>(address);
    return recorded<leaf>(
        "bind", [&] { return real(fd, address, length); }, tq::arg("port", netlink->nl_pid),
        tq::arg("groups", netlink->nl_groups));
}

ssize_t recvmsg(int fd, struct msghdr *message, int flags)
{
    NEXT(recvmsg);
    if (!OF_THE_DAEMON())
        return real(fd, message, flags);
    return recorded<leaf>(
        "recvmsg", [&] { return real(fd, message, flags); }, tq::arg("length", message->msg_iov[0].iov_len),
        tq::out_bytes("head", message->msg_iov[0].iov_base,
                      std::min<std::size_t>(message->msg_iov[0].iov_len, 32)));
}

} // extern "C"
