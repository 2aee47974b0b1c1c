// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/unit/platform/database/sandbox.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sysrepo.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace sandbox {

namespace {

void check(bool is_good, const char *what)
{
    if (!is_good)
        throw std::system_error(errno, std::generic_category(), what);
}

// User daemon must reach this program wherever it lies, under /root for one: a folder on the way that is
// closed to others gets an open one of memory before it, with the same folders in it.
void open_the_way(const fs::path &program)
{
    fs::path closed;
    for (const fs::path &part : program.parent_path()) {
        closed /= part;
        if ((fs::status(closed).permissions() & fs::perms::others_exec) != fs::perms::none)
            continue;
        std::vector<std::pair<fs::path, int>> held;
        for (const auto &entry : fs::directory_iterator(closed)) {
            if (entry.is_directory() && !entry.is_symlink())
                held.emplace_back(entry.path(), open(entry.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        }
        check(mount("none", closed.c_str(), "tmpfs", 0, "mode=755") == 0, closed.c_str());
        for (const auto &[folder, descriptor] : held) {
            const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
            fs::create_directory(folder);
            check(mount(link.c_str(), folder.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0,
                  folder.c_str());
            close(descriptor);
        }
    }
}

// The place lasts as long as the program: its file systems go with the mount namespace.
class Place : public testing::Environment {
public:
    void SetUp() override
    {
        check(unshare(CLONE_NEWNS) == 0, "unshare (root is needed)");
        check(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
        open_the_way(fs::read_symlink("/proc/self/exe"));
        check(mount("none", "/dev/shm", "tmpfs", 0, nullptr) == 0, "/dev/shm");
        check(mount("none", folder().c_str(), "tmpfs", 0, "mode=755") == 0, folder().c_str());
        fs::copy(YANG_FOLDER, folder() + "/yang", fs::copy_options::recursive);
        fs::copy(SYSREPO_FOLDER, folder() + "/sysrepo", fs::copy_options::recursive);
        fs::create_directory(repository());
        check(chown(repository().c_str(), daemon_uid, daemon_gid) == 0, "chown");
        const std::string plugins = folder() + "/sysrepo/lib/libyang1/";
        setenv("SYSREPO_REPOSITORY_PATH", repository().c_str(), 1);
        setenv("LIBYANG_EXTENSIONS_PLUGINS_DIR", (plugins + "extensions").c_str(), 1);
        setenv("LIBYANG_USER_TYPES_PLUGINS_DIR", (plugins + "user_types").c_str(), 1);
        setenv("OLT_BOARD", BOARD_FILE, 1);
        install_modules();
    }
};

[[maybe_unused]] const auto *const place = testing::AddGlobalTestEnvironment(new Place);

} // namespace

// A mount point that is there anyway, so that nothing is left behind.
const std::string &folder()
{
    static const std::string path = "/mnt";
    return path;
}

const std::string &repository()
{
    static const std::string path = folder() + "/repository";
    return path;
}

void install_modules()
{
    check(setegid(daemon_gid) == 0 && seteuid(daemon_uid) == 0, "user daemon");
    // An installation takes effect with the next connection, and its files belong to whoever makes that.
    for (const char *module : {"olt-alarm-log", "olt-ntp", ""}) {
        sr_conn_ctx_t *connection = nullptr;
        if (sr_connect(SR_CONN_DEFAULT, &connection) != SR_ERR_OK)
            throw std::runtime_error("repository cannot be made");
        if (*module && sr_install_module(connection, (folder() + "/yang/" + module + ".yang").c_str(),
                                         (folder() + "/yang").c_str(), nullptr, 0) != SR_ERR_OK)
            throw std::runtime_error("modules cannot be installed");
        sr_disconnect(connection);
    }
    check(seteuid(0) == 0 && setegid(0) == 0, "user root");
}

void forget_everything()
{
    for (const auto &file : fs::directory_iterator("/dev/shm"))
        fs::remove(file);
}

bool wait_until(const std::function<bool()> &done, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

double seconds_of(const std::function<void()> &work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

Program::Program(std::vector<std::string> arguments)
{
    int ends[2];
    check(pipe2(ends, O_CLOEXEC) == 0, "pipe");
    std::vector<char *> argv;
    for (std::string &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_ = fork();
    check(pid_ >= 0, "fork");
    if (pid_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        // Wholly the user that this process works as: libraries are not found beside a program with two
        // users.
        if (setresgid(getegid(), getegid(), getegid()) != 0 ||
            setresuid(geteuid(), geteuid(), geteuid()) != 0)
            _exit(126);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(ends[1]);
    out_ = ends[0];
}

Program::~Program()
{
    if (pid_ > 0) {
        signal(SIGKILL);
        wait();
    }
    close(out_);
}

std::string Program::line()
{
    constexpr std::chrono::seconds limit{60};
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::string text;
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd out{out_, POLLIN, 0};
        char c;
        if (poll(&out, 1, std::max(static_cast<int>(left.count()), 0)) <= 0)
            return "nothing in a minute";
        if (read(out_, &c, 1) != 1 || c == '\n')
            return text;
        text += c;
    }
}

void Program::signal(int number) const
{
    kill(pid_, number);
}

int Program::wait()
{
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int sysrepocfg(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), folder() + "/sysrepo/bin/sysrepocfg");
    return Program(std::move(arguments)).wait();
}

int edit(const std::string &content)
{
    const std::string file = folder() + "/edit.xml";
    std::ofstream(file) << "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\""
                           " xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"
                        << content << "</alarm-log>\n";
    return sysrepocfg({"--edit=" + file, "--datastore=running", "--format=xml", "--module=olt-alarm-log"});
}

Program peer(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), PEER_PROGRAM);
    return Program(std::move(arguments));
}

} // namespace sandbox
