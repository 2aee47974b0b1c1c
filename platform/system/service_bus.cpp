// SPDX-License-Identifier: GPL-2.0-or-later
// Client on the service bus: a unix stream socket, served by the event loop of libfrr.
// Failure policy: a bus that is absent, goes away or breaks the framing costs its user nothing: the client
// looks for it again once a second, and until it is back a message is refused.  A message that does not come
// to its end in time breaks the framing, too.  Nothing ever blocks: a bus that does not read what it is sent
// counts as one that is away.
// The event loop's thread connects and receives; any thread may send.
#include "base/fd.hpp"
#include "base/owner.hpp"
#include "platform/board/service_bus_protocol.hpp"
#include "platform/description/board_description.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"

#include <zebra.h>

#include <stream.h>
#include <thread.h>

#include <cerrno>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

namespace {

using board::service_bus_header_size;
using board::service_bus_max_message;
using board::ServiceBusCommand;

constexpr long retry_ms = 1000;
constexpr long message_ms = 5000; // from its first byte to its last; a bus writes it at once

using StreamOwner = base::Owner<struct stream, stream_free>;

void put_header(struct stream *stream, std::uint16_t command) noexcept
{
    stream_putw(stream, service_bus_header_size); // the sender of a body writes the whole length over it
    stream_putw(stream, command);
}

// One client, and what its user does not see.
class BusClient {
public:
    explicit BusClient(struct thread_master *master) noexcept : master_(master) {}
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    struct sclient *shown() noexcept { return &shown_; }
    // Both streams, or nothing.
    bool allocate() noexcept
    {
        input_.reset(stream_new(service_bus_max_message));
        output_.reset(stream_new(service_bus_max_message));
        shown_ = {.ibuf = input_.get(), .obuf = output_.get(), .message_handler = nullptr, .priv = this};
        return input_ && output_;
    }
    void start(std::uint16_t type, std::uint16_t instance) noexcept
    {
        type_ = type;
        instance_ = instance;
        thread_add_event(master_, on_connect_time, this, 0, nullptr);
    }
    // The whole message or nothing of it.
    int send(const struct stream *message) noexcept;

private:
    static void on_connect_time(struct thread *thread) noexcept
    {
        static_cast<BusClient *>(THREAD_ARG(thread))->connect();
    }
    static void on_readable(struct thread *thread) noexcept
    {
        static_cast<BusClient *>(THREAD_ARG(thread))->receive();
    }
    static void on_message_late(struct thread *thread) noexcept
    {
        static_cast<BusClient *>(THREAD_ARG(thread))->drop();
    }
    void connect() noexcept;
    void receive() noexcept;
    void drop() noexcept;
    void look_again() noexcept { thread_add_timer_msec(master_, on_connect_time, this, retry_ms, nullptr); }
    void await_input() noexcept { thread_add_read(master_, on_readable, this, socket_.get(), &reader_); }
    void await_rest() noexcept
    {
        if (stream_get_endp(input_.get()) > 0 && !late_timer_)
            thread_add_timer_msec(master_, on_message_late, this, message_ms, &late_timer_);
        await_input();
    }
    bool fill_input(std::size_t wanted) noexcept;

    struct sclient shown_ {};
    struct thread_master *master_;
    struct thread *reader_ = nullptr;
    struct thread *late_timer_ = nullptr; // runs while a part of a message is there
    StreamOwner input_;
    StreamOwner output_;
    std::uint16_t type_ = 0;
    std::uint16_t instance_ = 0;
    std::mutex mutex_; // of the descriptor: the event loop replaces it, any thread sends through it
    base::Fd socket_;
};

base::Fd connect_to_bus() noexcept
{
    std::string reason;
    const board::Board *const board = board::this_board(reason);
    if (!board)
        return {};
    const std::string path = board::sim_folder(*board) + "/" + board::service_bus_socket;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return {};
    path.copy(address.sun_path, path.size());
    base::Fd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // A unix socket connects at once or not at all.
    if (!fd || ::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    return fd;
}

void BusClient::connect() noexcept
{
    base::Fd fd = connect_to_bus();
    if (!fd) {
        look_again();
        return;
    }
    stream_reset(input_.get());
    {
        const std::lock_guard lock{mutex_};
        socket_ = std::move(fd);
    }
    const StreamOwner hello{stream_new(service_bus_header_size + 4)};
    put_header(hello.get(), static_cast<std::uint16_t>(ServiceBusCommand::hello));
    stream_putw(hello.get(), type_);
    stream_putw(hello.get(), instance_);
    stream_putw_at(hello.get(), 0, static_cast<std::uint16_t>(stream_get_endp(hello.get())));
    send(hello.get());
    await_input();
}

int BusClient::send(const struct stream *message) noexcept
{
    const std::lock_guard lock{mutex_};
    if (!socket_)
        return -1;
    const std::size_t size = message->endp;
    const ssize_t sent = ::send(socket_.get(), message->data, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent == static_cast<ssize_t>(size))
        return 0;
    // A piece of a message would derange all that follow.  The event loop finds the connection ended.
    if (sent > 0)
        ::shutdown(socket_.get(), SHUT_RDWR);
    return -1;
}

void BusClient::drop() noexcept
{
    thread_cancel(&reader_);
    thread_cancel(&late_timer_);
    {
        const std::lock_guard lock{mutex_};
        socket_.reset();
    }
    look_again();
}

// Reads until `wanted` bytes of the message are there.  False: not yet, or the connection has ended.
bool BusClient::fill_input(std::size_t wanted) noexcept
{
    constexpr ssize_t would_block = -2; // stream_read_try's word for it
    const std::size_t had = stream_get_endp(input_.get());
    if (had >= wanted)
        return true;
    const ssize_t got = stream_read_try(input_.get(), socket_.get(), wanted - had);
    if (got > 0 && had + static_cast<std::size_t>(got) == wanted)
        return true;
    if (got > 0 || got == would_block) {
        await_rest();
        return false;
    }
    drop();
    return false;
}

// One message each time, so that a talkative bus leaves the event loop to others, too.
void BusClient::receive() noexcept
{
    if (!fill_input(service_bus_header_size))
        return;
    const std::uint16_t length = stream_getw_from(input_.get(), 0);
    if (length < service_bus_header_size) {
        drop();
        return;
    }
    if (!fill_input(length))
        return;
    thread_cancel(&late_timer_);
    stream_set_getp(input_.get(), service_bus_header_size);
    if (shown_.message_handler)
        shown_.message_handler(&shown_, input_.get());
    stream_reset(input_.get());
    await_input();
}

struct sclient *new_client(struct thread_master *master) noexcept
{
    if (!master) {
        errno = EINVAL;
        return nullptr;
    }
    std::unique_ptr<BusClient> client{new (std::nothrow) BusClient{master}};
    if (!client || !client->allocate())
        return nullptr;
    return client.release()->shown(); // lives as long as the process
}

BusClient &client_of(struct sclient *shown) noexcept
{
    return *static_cast<BusClient *>(shown->priv);
}

} // namespace

struct sclient *sclient_new(struct thread_master *m, std::uint32_t instance, struct zebra_privs_t *)
{
    return tq::traced(
        "sclient_new", [&] { return new_client(m); }, tq::arg("instance", instance));
}

// The bus lets every user in, so the privileges are not needed.
void sclient_init(struct sclient *c, int client_type, std::uint16_t instance, struct zebra_privs_t *)
{
    tq::traced(
        "sclient_init",
        [&] {
            if (c)
                client_of(c).start(static_cast<std::uint16_t>(client_type), instance);
        },
        tq::arg("type", client_type), tq::arg("instance", instance));
}

void sclient_create_header(struct stream *s, std::uint16_t command)
{
    tq::traced(
        "sclient_create_header", [&] { put_header(s, command); }, tq::arg("command", command));
}

int sclient_send_message(struct sclient *c)
{
    return tq::traced("sclient_send_message", [&] { return c ? client_of(c).send(c->obuf) : -1; });
}
