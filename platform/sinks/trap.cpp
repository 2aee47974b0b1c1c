// SPDX-License-Identifier: GPL-2.0-or-later
// The trap action: an alarm goes as an SNMPv2c notification to every sink of the sinks' file, which is read
// again when it has changed.
// Failure policy: what cannot be sent is lost and said in the log once; the other sinks get it nevertheless.
// No file means no sinks.  A file that cannot be read leaves no sinks and is an error; a line that is wrong
// is left out, and said once for each state of the file.
#include "platform/alarms/alarm.hpp"
#include "platform/sinks/sink_state.hpp"
#include "platform/sinks/trap_message.hpp"
#include "platform/sinks/trap_sinks.hpp"
#include "platform/sinks/udp_receiver.hpp"
#include "tq_errno.h"

#include "base/fd.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <mutex>
#include <new>
#include <unistd.h>

#include <zebra.h>

#include <log.h>

namespace tq {

namespace {

constexpr std::size_t max_file_size = 64 * 1024;

// By which a file that has changed is known.
using Stamp = std::array<std::int64_t, 6>;

Stamp stamp_of(const struct stat &status)
{
    return {static_cast<std::int64_t>(status.st_ino),
            status.st_size,
            status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec,
            status.st_ctim.tv_sec,
            status.st_ctim.tv_nsec};
}

// 0 or an errno value.
int read_file(std::string &text, Stamp &stamp)
{
    // Neither a pipe nor a device keeps anybody waiting here.
    const base::Fd fd(::open(trap_sinks_path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!fd || ::fstat(fd.get(), &status) != 0)
        return errno;
    stamp = stamp_of(status);
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    text.resize(max_file_size + 1);
    const ssize_t size = ::pread(fd.get(), text.data(), text.size(), 0);
    if (size < 0)
        return errno;
    text.resize(static_cast<std::size_t>(size));
    return text.size() > max_file_size ? EFBIG : 0;
}

class TrapSinkSet {
public:
    int send(const Alarm &alarm)
    {
        const std::lock_guard lock(mutex_);
        const int file_error = refresh();
        timespec since_start{};
        clock_gettime(CLOCK_BOOTTIME, &since_start);
        const auto uptime =
            static_cast<unsigned long>(since_start.tv_sec * 100 + since_start.tv_nsec / 10'000'000);
        int result = file_error == 0 ? TQ_OK : TQ_ERR;
        for (Sink &sink : sinks_) {
            const std::string message = trap_message(alarm, sink.community, uptime);
            const int error = message.empty() ? errno : sink.receiver.send(message);
            sink.state.note(sink.name, error);
            if (error != 0)
                result = TQ_ERR_PEER;
        }
        return result;
    }

private:
    struct Sink {
        std::string name;
        UdpReceiver receiver;
        std::string community;
        SinkState state;
    };

    // Reads the file if it has changed.  0 or an errno value.
    int refresh()
    {
        struct stat status {};
        if (::stat(trap_sinks_path, &status) == 0 && stamp_of(status) == stamp_)
            return file_error_;
        std::string text;
        stamp_ = {};
        const int error = read_file(text, stamp_);
        file_error_ = error == ENOENT ? 0 : error;
        file_state_.note(std::string("the trap sinks of ") + trap_sinks_path, file_error_);
        take(parse_trap_sinks(error == 0 ? text : ""));
        return file_error_;
    }

    void take(TrapSinks file)
    {
        std::vector<Sink> sinks;
        for (TrapSink &one : file.sinks) {
            const auto receiver = UdpReceiver::at(one.address, one.port);
            if (!receiver)
                continue;
            std::string name = "trap sink " + one.address + " port " + std::to_string(one.port);
            // One that stays keeps what was said of it.
            SinkState state;
            for (const Sink &before : sinks_)
                if (before.name == name)
                    state = before.state;
            sinks.push_back({std::move(name), *receiver, std::move(one.community), std::move(state)});
        }
        sinks_ = std::move(sinks);
        for (const std::string &mistake : file.mistakes)
            zlog_warn("%s %s", trap_sinks_path, mistake.c_str());
    }

    std::mutex mutex_;
    std::vector<Sink> sinks_;
    Stamp stamp_{};
    int file_error_ = 0;
    SinkState file_state_;
};

} // namespace

int trap_alarm(const Alarm &alarm) noexcept
{
    static TrapSinkSet sinks;
    try {
        return sinks.send(alarm);
    } catch (const std::bad_alloc &) {
        return TQ_ERR_NO_MEMORY;
    }
}

} // namespace tq
