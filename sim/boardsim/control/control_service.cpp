// SPDX-License-Identifier: GPL-2.0-or-later
// The control socket.  Failure policy: a client that sends too much or goes away loses its connection only.
#include "sim/boardsim/control/control_service.hpp"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>

namespace sim {

namespace {

constexpr std::size_t max_request = 1U << 20;
constexpr std::size_t max_backlog = 64U << 20; // a client that does not read gets no more than this

Words split(const std::string &text)
{
    Words words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\0', at);
        words.push_back(text.substr(at, end - at));
        if (end == std::string::npos)
            break;
        at = end + 1;
    }
    return words;
}

} // namespace

class ControlService::Connection final : public ControlClient {
public:
    Connection(EventLoop &loop, base::Fd fd) : loop_(loop), fd_(std::move(fd)) {}
    ~Connection() override
    {
        loop_.unwatch(fd_.get());
        if (gone_ && !finished_)
            gone_();
    }

    void send(std::string_view text) override
    {
        if (output_.size() + text.size() <= max_backlog)
            output_ += text;
        flush();
    }
    void finish() override
    {
        finished_ = true;
        flush();
    }
    void on_gone(std::function<void()> gone) override { gone_ = std::move(gone); }

    // True while the connection is of use.
    bool receive()
    {
        char buffer[65536];
        const ssize_t size = ::recv(fd_.get(), buffer, sizeof buffer, 0);
        if (size < 0)
            return errno == EAGAIN || errno == EINTR;
        input_.append(buffer, static_cast<std::size_t>(size));
        complete_ = complete_ || size == 0;
        return input_.size() <= max_request;
    }
    bool flush()
    {
        while (!output_.empty()) {
            const ssize_t size = ::send(fd_.get(), output_.data(), output_.size(), MSG_NOSIGNAL);
            if (size < 0)
                break;
            output_.erase(0, static_cast<std::size_t>(size));
        }
        const bool blocked = !output_.empty();
        const bool alive = !blocked || errno == EAGAIN;
        // The request has ended, so the reading side would be ready for ever; what is left to learn is that
        // the client has gone, which epoll always tells.
        const std::uint32_t wanted = complete_ ? (blocked || finished_ ? EPOLLOUT : 0U) : EPOLLIN;
        loop_.change(fd_.get(), wanted);
        return alive;
    }
    [[nodiscard]] bool complete() const { return complete_; }
    [[nodiscard]] bool done() const { return finished_ && output_.empty(); }
    [[nodiscard]] int fd() const { return fd_.get(); }
    [[nodiscard]] Words words() const { return split(input_); }

private:
    EventLoop &loop_;
    base::Fd fd_;
    std::string input_;
    std::string output_;
    bool complete_ = false;
    bool finished_ = false;
    std::function<void()> gone_;
};

ControlService::ControlService(EventLoop &loop, base::Fd listener, Handler handler)
    : loop_(loop), listener_(std::move(listener)), handler_(std::move(handler))
{
    loop_.watch(listener_.get(), EPOLLIN, [this](std::uint32_t) { accept(); });
}

ControlService::~ControlService() = default;

void ControlService::accept()
{
    base::Fd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!fd)
        return;
    const int raw = fd.get();
    auto connection = std::make_unique<Connection>(loop_, std::move(fd));
    loop_.watch(raw, EPOLLIN, [this, c = connection.get()](std::uint32_t events) { serve(*c, events); });
    connections_.emplace(raw, std::move(connection));
}

void ControlService::drop(int fd)
{
    // Out of the table first: its end may call back.
    if (auto node = connections_.extract(fd); !node.empty())
        node.mapped().reset();
}

void ControlService::serve(Connection &connection, std::uint32_t events)
{
    bool alive = true;
    if (!connection.complete()) {
        alive = connection.receive();
        if (alive && connection.complete())
            handler_(connection.words(), connection);
    } else if ((events & (EPOLLHUP | EPOLLERR)) != 0) {
        alive = false;
    }
    if (!alive || !connection.flush() || connection.done())
        drop(connection.fd());
}

} // namespace sim
