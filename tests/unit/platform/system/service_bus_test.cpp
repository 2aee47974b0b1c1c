// SPDX-License-Identifier: GPL-2.0-or-later
// The service bus client against a bus of the test's own, its event loop stepped by hand.
#include "platform/board/service_bus_protocol.hpp"
#include "tests/unit/temporary_folder.hpp"
#include "tq_api.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <zebra.h>

#include <stream.h>
#include <thread.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

std::vector<std::string> handled; // bodies

int handler(struct sclient *, struct stream *message)
{
    handled.emplace_back(reinterpret_cast<char *>(stream_pnt(message)), STREAM_READABLE(message));
    return 0;
}

const std::string hello = "\0\x08\0\x01\0\x0a\0\x05"s; // type 10, instance 5

class ServiceBusClient : public testing::Test {
protected:
    ServiceBusClient()
    {
        setenv("OLT_BOARD", OLT8_JSON, 1);
        setenv("BOARDSIM_DIR", folder_.path().c_str(), 1);
        handled.clear();
        loop_ = thread_master_create(nullptr);
        // Somebody always has something to do, so that a step ends.
        thread_add_timer_msec(loop_, tick, nullptr, 5, nullptr);
        client_ = sclient_new(loop_, 5, nullptr);
        client_->message_handler = handler;
        // A client lives as long as its process, and so does the list of them.
        static auto &of_all_tests = *new std::vector<struct sclient *>;
        of_all_tests.push_back(client_);
    }
    ~ServiceBusClient() override
    {
        take_down();
        thread_master_free(loop_);
    }

    void start() { sclient_init(client_, 10, 5, nullptr); }
    void bring_up()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder_.path() + "/" + board::service_bus_socket;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
        ASSERT_EQ(::bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        ASSERT_EQ(::listen(listener_, 4), 0);
    }
    void take_down()
    {
        hang_up();
        if (listener_ >= 0)
            ::close(listener_);
        listener_ = -1;
        std::filesystem::remove(folder_.path() + "/" + board::service_bus_socket);
    }
    void hang_up()
    {
        if (peer_ >= 0)
            ::close(peer_);
        peer_ = -1;
        received_.clear();
    }
    // Runs the event loop until `condition` holds.
    template <typename Condition>
    bool run_until(Condition condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        struct thread event;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline)
                return false;
            if (thread_fetch(loop_, &event))
                thread_call(&event);
        }
        return true;
    }
    bool accepted()
    {
        if (peer_ < 0 && listener_ >= 0)
            peer_ = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK);
        return peer_ >= 0;
    }
    // What has come from the client.
    const std::string &received()
    {
        char buffer[256];
        ssize_t size;
        while ((size = ::recv(peer_, buffer, sizeof buffer, 0)) > 0)
            received_.append(buffer, static_cast<std::size_t>(size));
        return received_;
    }
    bool connected()
    {
        return run_until([&] { return accepted(); }) && run_until([&] { return received() == hello; });
    }
    void tell(const std::string &bytes) const
    {
        ASSERT_EQ(::send(peer_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    int send_reset()
    {
        stream_reset(client_->obuf);
        sclient_create_header(client_->obuf, 45);
        return sclient_send_message(client_);
    }

    // The peer reads `count` bytes.
    bool read_off(std::size_t count)
    {
        char buffer[16];
        return ::recv(peer_, buffer, count, 0) == static_cast<ssize_t>(count);
    }
    bool is_at_end() const
    {
        char byte;
        return ::recv(peer_, &byte, 1, 0) == 0;
    }
    // The peer finds the end of the connection after all that was sent.
    bool is_ended()
    {
        char buffer[4096];
        ssize_t size;
        while ((size = ::recv(peer_, buffer, sizeof buffer, 0)) > 0) {
        }
        return size == 0;
    }

    struct sclient *client_;
    int peer_ = -1;

private:
    static void tick(struct thread *thread)
    {
        thread_add_timer_msec(thread->master, tick, nullptr, 5, nullptr);
    }

protected:
    struct thread_master *loop_;

private:
    TemporaryFolder folder_;
    int listener_ = -1;
    std::string received_;
};

} // namespace

TEST_F(ServiceBusClient, without_an_event_loop_there_is_none)
{
    EXPECT_EQ(sclient_new(nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(sclient_send_message(nullptr), -1);
}

TEST_F(ServiceBusClient, says_its_type_and_instance_first)
{
    bring_up();
    start();
    EXPECT_TRUE(connected());
}

TEST_F(ServiceBusClient, refuses_a_message_while_the_bus_is_away)
{
    EXPECT_EQ(send_reset(), -1);
    start();
    EXPECT_EQ(send_reset(), -1);
}

TEST_F(ServiceBusClient, a_header_has_its_own_length)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    EXPECT_EQ(send_reset(), 0);
    EXPECT_TRUE(run_until([&] { return received() == hello + "\0\x04\0\x2d"s; }));
}

TEST_F(ServiceBusClient, finds_a_bus_that_comes_later)
{
    start();
    int turns = 0;
    run_until([&] { return ++turns == 20; });
    bring_up();
    EXPECT_TRUE(connected());
}

TEST_F(ServiceBusClient, finds_a_bus_that_went_away_and_came_back)
{
    bring_up();
    start();
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(connected());
        take_down();
        EXPECT_TRUE(run_until([&] { return send_reset() == -1; }));
        bring_up();
    }
    ASSERT_TRUE(connected());
    EXPECT_EQ(send_reset(), 0);
}

TEST_F(ServiceBusClient, hands_over_the_body_of_each_message_however_it_is_cut)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    const std::string message = "\0\x08\0\x2e\0\0\0\x07"s;
    for (const char byte : message) {
        tell(std::string(1, byte));
        int turns = 0;
        run_until([&] { return ++turns == 3; });
    }
    EXPECT_TRUE(run_until([&] { return handled.size() == 1; }));
    tell(message + "\0\x04\0\x09"s + message); // three in one piece
    EXPECT_TRUE(run_until([&] { return handled.size() == 4; }));
    const std::string body = "\0\0\0\x07"s;
    EXPECT_EQ(handled, (std::vector<std::string>{body, body, "", body}));
}

TEST_F(ServiceBusClient, takes_the_longest_message)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    tell("\xff\xff\0\x2e"s + std::string(0xffff - 4, 'x'));
    ASSERT_TRUE(run_until([&] { return handled.size() == 1; }));
    EXPECT_EQ(handled[0].size(), 0xffffu - 4);
}

TEST_F(ServiceBusClient, hangs_up_on_a_length_shorter_than_a_header_and_connects_anew)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    tell("\0\x03\0\x2e"s);
    EXPECT_TRUE(run_until([&] { return is_at_end(); }));
    hang_up();
    EXPECT_TRUE(connected());
    EXPECT_TRUE(handled.empty());
}

// A length that is no length takes what follows for its body, and the client would hear nothing any more.
TEST_F(ServiceBusClient, hangs_up_on_a_message_that_does_not_end_and_connects_anew)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    const std::string message = "\0\x08\0\x2e\0\0\0\x07"s;
    tell("\xff\xff\0\x2e"s + message);
    EXPECT_TRUE(run_until([&] { return is_at_end(); }));
    EXPECT_TRUE(handled.empty());
    hang_up();
    ASSERT_TRUE(connected());
    tell(message);
    EXPECT_TRUE(run_until([&] { return handled.size() == 1; }));
}

TEST_F(ServiceBusClient, refuses_and_never_waits_when_the_bus_does_not_read)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    const auto begin = std::chrono::steady_clock::now();
    int result = 0;
    for (int i = 0; i < 1'000'000 && result == 0; ++i)
        result = send_reset();
    EXPECT_EQ(result, -1);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 9s);
}

// A bus that stops reading has room for a part of a long message at last.  What follows a part cannot be told
// apart from the rest of it, so the connection ends there, and the client makes another.
TEST_F(ServiceBusClient, a_message_of_which_a_part_went_out_ends_the_connection)
{
    bring_up();
    start();
    ASSERT_TRUE(connected());
    while (send_reset() == 0) {
    }
    ASSERT_TRUE(read_off(board::service_bus_header_size)) << "room for a little";
    stream_reset(client_->obuf);
    sclient_create_header(client_->obuf, 45);
    while (STREAM_WRITEABLE(client_->obuf) > 0)
        stream_putc(client_->obuf, 0);
    EXPECT_EQ(sclient_send_message(client_), -1);
    EXPECT_TRUE(run_until([&] { return is_ended(); }));
    hang_up();
    EXPECT_TRUE(connected());
    EXPECT_EQ(send_reset(), 0);
}
