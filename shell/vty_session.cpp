// SPDX-License-Identifier: GPL-2.0-or-later
// A session on the daemon's unix vty socket.
#include "shell/vty_session.hpp"

#include "shell/failure.hpp"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <span>
#include <string_view>

namespace diagsh {

namespace {

constexpr std::size_t end_mark_size = 4;      // three NULs and the status byte
constexpr std::size_t longest_command = 4094; // libfrr takes the rest of a longer one for another command

[[noreturn]] void connect_failed(const std::string &path, int error)
{
    if (error == EACCES || error == EPERM)
        throw Refused(EX_NOPERM, "only root and the vty group may use " + path);
    if (error == ENOENT || error == ENOTDIR || error == ECONNREFUSED)
        throw NoDaemon(EX_UNAVAILABLE, "no daemon answers on " + path + "; is the OLT running?");
    throw Failure(EX_UNAVAILABLE, path + ": " + std::strerror(error));
}

// The address holds 108 characters and a build folder may lie deeper, so the folder is opened and the socket
// named through its descriptor.
base::Fd connect_to(const std::string &path, std::chrono::seconds longest_answer)
{
    const std::filesystem::path socket_path(path);
    const std::string folder = socket_path.has_parent_path() ? socket_path.parent_path().string() : ".";
    const base::Fd folder_fd(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder_fd)
        connect_failed(path, errno);

    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name =
        "/proc/self/fd/" + std::to_string(folder_fd.get()) + "/" + socket_path.filename().string();
    if (name.size() >= sizeof address.sun_path)
        connect_failed(path, ENAMETOOLONG);
    name.copy(address.sun_path, name.size());

    base::Fd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd)
        connect_failed(path, errno);
    // A connection waits, too, for a daemon that does not accept any.
    const timeval limit{.tv_sec = longest_answer.count(), .tv_usec = 0};
    for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO})
        ::setsockopt(fd.get(), SOL_SOCKET, direction, &limit, sizeof limit);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        connect_failed(path, errno);
    return fd;
}

// As recv(); a descriptor that comes along replaces `passed`.
ssize_t receive_bytes(int socket, std::span<char> bytes, base::Fd &passed)
{
    iovec area{bytes.data(), bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control;
    msghdr message{};
    message.msg_iov = &area;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t got = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    const cmsghdr *header = got < 0 ? nullptr : CMSG_FIRSTHDR(&message);
    if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS &&
        header->cmsg_len == CMSG_LEN(sizeof(int))) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
        passed = base::Fd(fd);
    }
    return got;
}

} // namespace

VtySession::VtySession(const std::string &socket_path, std::chrono::seconds longest_answer)
    : m_socket(connect_to(socket_path, longest_answer))
{
}

void VtySession::send(const std::string &command)
{
    if (command.size() > longest_command || command.find('\0') != std::string::npos)
        throw Failure(EX_DATAERR, "not a command: longer than " + std::to_string(longest_command) +
                                      " characters, or with a NUL in it");
    m_command = command;
    m_passed.reset();
    m_mark = 0;
    std::string_view rest(command.c_str(), command.size() + 1); // with its NUL
    while (!rest.empty()) {
        const ssize_t sent = ::send(m_socket.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            throw Closed(EX_UNAVAILABLE, "the daemon closed the session during: " + m_command);
        rest.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::optional<int> VtySession::receive(std::string &text)
{
    std::array<char, 65536> chunk;
    ssize_t got = 0;
    while ((got = receive_bytes(m_socket.get(), chunk, m_passed)) < 0 && errno == EINTR) {
    }
    if (got < 0 && errno == EAGAIN)
        throw Failure(EX_UNAVAILABLE, "the daemon did not answer in time: " + m_command);
    if (got <= 0)
        throw Closed(EX_UNAVAILABLE, "the daemon closed the session during: " + m_command);
    // The vty prints no NUL, so the answer ends with the first one, three bytes later.
    for (const char c : std::string_view(chunk.data(), static_cast<std::size_t>(got))) {
        if (m_mark == 0 && c != '\0')
            text += c;
        else if (++m_mark == end_mark_size)
            return static_cast<unsigned char>(c);
    }
    return std::nullopt;
}

VtyAnswer VtySession::run(const std::string &command)
{
    send(command);
    VtyAnswer answer;
    std::optional<int> status;
    while (!(status = receive(answer.text))) {
    }
    answer.status = *status;
    answer.passed = take_passed();
    return answer;
}

} // namespace diagsh
