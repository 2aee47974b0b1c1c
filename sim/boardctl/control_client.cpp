// SPDX-License-Identifier: GPL-2.0-or-later
// Failure policy: no board, or one that goes away, is one complaint and status 1.
#include "sim/boardctl/control_client.hpp"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/fd.hpp"
#include "platform/board/sim_protocol.hpp"

namespace sim {

namespace {

int complain(const AnswerSink &sink, const std::string &what)
{
    sink(false, "error: " + what + ": " + std::strerror(errno) + "\n");
    return 1;
}

bool send_all(int fd, const std::string &text)
{
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t size = ::send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (size < 0 && errno != EINTR)
            return false;
        sent += static_cast<std::size_t>(std::max<ssize_t>(size, 0));
    }
    return ::shutdown(fd, SHUT_WR) == 0;
}

} // namespace

int ask_board(const std::string &folder, const std::vector<std::string> &words, const AnswerSink &sink)
{
    const std::string file = folder + "/" + board::sim_control_socket;
    // An address holds 108 characters and a build folder may lie deeper: the folder is opened and the socket
    // named through its descriptor.
    const base::Fd folder_fd(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder_fd)
        return complain(sink, "no board at " + file);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder_fd.get(),
                  board::sim_control_socket);
    const base::Fd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd || ::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return complain(sink, "no board at " + file);
    std::string request;
    for (const std::string &word : words)
        request += word + '\0';
    if (!send_all(fd.get(), request))
        return complain(sink, file);

    std::string head; // status digit and newline
    for (char buffer[65536];;) {
        const ssize_t size = ::recv(fd.get(), buffer, sizeof buffer, 0);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return complain(sink, file);
        if (size == 0)
            break;
        const std::size_t skipped = std::min<std::size_t>(2 - head.size(), static_cast<std::size_t>(size));
        head.append(buffer, skipped);
        if (head.size() < 2)
            continue;
        sink(head[0] == '0', std::string_view(buffer, static_cast<std::size_t>(size)).substr(skipped));
    }
    if (head.size() == 2)
        return head[0] == '0' ? 0 : 1;
    sink(false, "error: the board ended without an answer\n");
    return 1;
}

} // namespace sim
