// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's log as it is written.  The daemon never waits for a monitor: it drops what a slow one has no
// room for and says how many lines that were.
#include "shell/modes.hpp"

#include "shell/failure.hpp"
#include "shell/live_record.hpp"
#include "shell/vty_session.hpp"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace diagsh {

namespace {

// Waits for a packet.  A quiet daemon may leave diagsh nothing to write for hours, so that it looks itself
// whether somebody still reads.
void wait_readable(int log)
{
    std::array<pollfd, 2> sources{pollfd{log, POLLIN, 0}, pollfd{STDOUT_FILENO, 0, 0}};
    while (::poll(sources.data(), sources.size(), -1) < 0) {
        if (errno != EINTR)
            throw Failure(EX_OSERR, std::string("poll: ") + std::strerror(errno));
    }
    if (sources[1].revents != 0) {
        std::raise(SIGPIPE); // the end that the next line would bring
        throw Failure(EX_IOERR, "nobody reads standard output");
    }
}

void follow(int log)
{
    std::vector<char> buffer(longest_live_packet);
    std::uint32_t lost = 0;
    for (;;) {
        wait_readable(log);
        const ssize_t got = ::recv(log, buffer.data(), buffer.size(), 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw Failure(EX_UNAVAILABLE, "the daemon has ended");

        const auto record = parse_live_record({buffer.data(), static_cast<std::size_t>(got)});
        if (!record)
            throw Failure(EX_PROTOCOL, "the daemon's log records are of another format");
        // The count starts at 0, only grows, and is not given by a crashing daemon.
        if (const auto more = static_cast<std::int32_t>(record->lost - lost); more > 0) {
            std::fprintf(stderr, "diagsh: %d lines lost, they came faster than they were read\n", more);
            lost = record->lost;
        }
        write_out(log_line(*record));
    }
}

} // namespace

int monitor_log(const OltPaths &olt)
{
    VtySession session(olt.vty_socket); // the daemon ends the log with the session
    for (const char *step : {"enable", "terminal monitor"}) {
        const VtyAnswer answer = session.run(step);
        if (answer.status != 0)
            return report_failed(step, answer);
        if (answer.passed)
            follow(answer.passed.get());
    }
    throw Failure(EX_PROTOCOL, "the daemon passed no log");
}

} // namespace diagsh
