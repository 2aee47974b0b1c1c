// SPDX-License-Identifier: GPL-2.0-or-later
// What libfrr's zebra client sends for route type 32 and message 136, byte for byte, on a socket that
// records. Meant to run under AddressSanitizer, too: the client indexes its arrays by the route type.
#include <zebra.h>

#include <thread.h>
#include <zclient.h>

#include "tests/unit/temporary_folder.hpp"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int diagd_route_type = 32;
constexpr std::uint16_t system_reset_message = 136;

/// A zebra socket that accepts one client and keeps what it sends.
class RecordingZebra {
public:
    RecordingZebra()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        folder_.file("zserv.api").copy(address.sun_path, sizeof(address.sun_path) - 1);
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(listener_, 1), 0);
        std::memcpy(&zclient_addr, &address, sizeof(address));
        zclient_addr_len = sizeof(address);
    }
    RecordingZebra(const RecordingZebra &) = delete;
    RecordingZebra &operator=(const RecordingZebra &) = delete;
    ~RecordingZebra()
    {
        close(client_);
        close(listener_);
    }

    /// Everything received until `size` bytes are there or `patience` is over.
    Bytes receive(std::size_t size, std::chrono::milliseconds patience = std::chrono::seconds(5))
    {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        Bytes received;
        while (received.size() < size && readable_before(deadline)) {
            if (client_ < 0) {
                client_ = accept(listener_, nullptr, nullptr);
                continue;
            }
            std::uint8_t part[256];
            const ssize_t length = recv(client_, part, sizeof(part), 0);
            if (length <= 0)
                break;
            received.insert(received.end(), part, part + length);
        }
        return received;
    }

private:
    bool readable_before(std::chrono::steady_clock::time_point deadline) const
    {
        using std::chrono::milliseconds;
        const auto left =
            std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{client_ < 0 ? listener_ : client_, POLLIN, 0};
        return left.count() > 0 && poll(&waiting, 1, static_cast<int>(left.count())) == 1;
    }

    TemporaryFolder folder_;
    int listener_ = -1;
    int client_ = -1;
};

class ZclientRouteType : public testing::Test {
protected:
    ZclientRouteType()
        : master_(thread_master_create(nullptr)),
          client_(zclient_new(master_, &zclient_options_default, nullptr, 0))
    {
        zclient_init(client_, diagd_route_type, 0, nullptr);
    }
    ~ZclientRouteType() override
    {
        zclient_stop(client_);
        zclient_free(client_);
        thread_master_free(master_);
    }

    /// Runs the connection attempt that zclient_init has scheduled.
    void connect()
    {
        struct thread event;
        ASSERT_NE(thread_fetch(master_, &event), nullptr);
        thread_call(&event);
    }

    // Each message: 2 bytes length, marker 254, version 6, 4 bytes VRF 0, 2 bytes command.
    const Bytes hello_{0,  19, 254, 6, 0, 0, 0, 0, 0, 18, // ZEBRA_HELLO
                       32,                                // route type
                       0,  0,                             // instance
                       0,  0,  0,   0,                    // session
                       0,  0};                            // no notices, not synchronous
    const Bytes interface_add_{0, 10, 254, 6, 0, 0, 0, 0, 0, 0};
    const Bytes system_reset_{0, 10, 254, 6, 0, 0, 0, 0, 0, 136};

    RecordingZebra zebra_;
    struct thread_master *master_;
    struct zclient *client_;
};

TEST_F(ZclientRouteType, says_hello_with_its_type_and_requests_no_routes)
{
    connect();
    Bytes expected = hello_;
    expected.insert(expected.end(), interface_add_.begin(), interface_add_.end());
    EXPECT_EQ(zebra_.receive(expected.size()), expected);
    EXPECT_EQ(zebra_.receive(1, std::chrono::milliseconds(50)), Bytes{}) << "nothing follows";
}

TEST_F(ZclientRouteType, requests_only_routes_of_other_types_when_it_registers)
{
    connect();
    (void)zebra_.receive(hello_.size() + interface_add_.size());
    zclient_send_reg_requests(client_, VRF_DEFAULT);
    const Bytes router_id_add{0, 12, 254, 6, 0, 0, 0, 0, 0, 15, 0, 1};
    Bytes expected = router_id_add;
    expected.insert(expected.end(), interface_add_.begin(), interface_add_.end());
    EXPECT_EQ(zebra_.receive(expected.size()), expected);
    EXPECT_EQ(zebra_.receive(1, std::chrono::milliseconds(50)), Bytes{}) << "nothing follows";
}

TEST_F(ZclientRouteType, sends_the_reset_message_as_a_header_alone)
{
    connect();
    (void)zebra_.receive(hello_.size() + interface_add_.size());
    stream_reset(client_->obuf);
    zclient_create_header(client_->obuf, system_reset_message, VRF_DEFAULT);
    stream_putw_at(client_->obuf, 0, static_cast<std::uint16_t>(stream_get_endp(client_->obuf)));
    EXPECT_EQ(zclient_send_message(client_), ZCLIENT_SEND_SUCCESS);
    EXPECT_EQ(zebra_.receive(system_reset_.size()), system_reset_);
}

TEST(RouteTypes, has_a_name_for_the_daemon_and_leaves_the_others_in_place)
{
    EXPECT_STREQ(zebra_route_string(diagd_route_type), "diagd");
    EXPECT_STREQ(zebra_route_string(0), "system");
    EXPECT_STREQ(zebra_route_string(9), "bgp");
    EXPECT_STREQ(zebra_route_string(30), "wildcard");
    EXPECT_EQ(ZEBRA_ROUTE_MAX, diagd_route_type + 1);
}

TEST(ZebraMessages, has_a_name_for_the_reset_message)
{
    EXPECT_STREQ(zserv_command_string(system_reset_message), "ZEBRA_SYSTEM_RESET");
    EXPECT_STREQ(zserv_command_string(135), "ZEBRA_GRE_UPDATE");
    EXPECT_STREQ(zserv_command_string(18), "ZEBRA_HELLO");
}

} // namespace
