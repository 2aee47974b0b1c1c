// SPDX-License-Identifier: GPL-2.0-or-later
// Reading a remote log server: the widths that the database is told, and texts that fill them.
#include "diagd/alarm_log/servers/remote_server.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace diagd;

namespace {

struct {
    int enable_code, address_code, port_code;
    std::uint8_t enabled;
    std::string address;
    int enable_length, address_length, port_length; // as told; 0 when not asked
} stored;

int get_enable(tq_database_t *, void *buffer, int *length)
{
    stored.enable_length = *length;
    std::memcpy(buffer, &stored.enabled, sizeof stored.enabled);
    return stored.enable_code;
}

int get_address(tq_database_t *, void *buffer, int *length)
{
    stored.address_length = *length;
    std::memcpy(buffer, stored.address.data(), stored.address.size());
    return stored.address_code;
}

int get_port(tq_database_t *, void *buffer, int *length)
{
    stored.port_length = *length;
    const std::uint16_t port = 65535;
    std::memcpy(buffer, &port, sizeof port);
    return stored.port_code;
}

constexpr RemoteServer server{"ipv4",      16,      nullptr, get_enable, nullptr,
                              get_address, nullptr, nullptr, get_port,   nullptr};

class RemoteServerRead : public testing::Test {
protected:
    void SetUp() override { stored = {}; }
};

} // namespace

tq_database_t g_diagd_db;

TEST_F(RemoteServerRead, gives_the_width_of_each_buffer)
{
    stored.address = "10.0.0.1";
    EXPECT_FALSE(is_enabled(server));
    EXPECT_TRUE(read_address(server));
    EXPECT_EQ(stored.enable_length, 1);
    EXPECT_EQ(stored.address_length, 64);
    EXPECT_EQ(stored.port_length, 2);
}

TEST_F(RemoteServerRead, ends_a_text_that_fills_its_buffer)
{
    stored.address = std::string(64, 'x');
    const auto address = read_address(server);
    ASSERT_TRUE(address);
    EXPECT_EQ(std::string(address->text), stored.address);
    EXPECT_EQ(address->port, 65535);
}

TEST_F(RemoteServerRead, asks_for_the_port_only_behind_an_address)
{
    stored.address_code = -2;
    EXPECT_FALSE(read_address(server));
    EXPECT_EQ(stored.port_length, 0);
}

TEST_F(RemoteServerRead, gives_no_address_without_a_port)
{
    stored.port_code = -2;
    EXPECT_FALSE(read_address(server));
}

TEST_F(RemoteServerRead, takes_a_switch_that_cannot_be_read_for_off)
{
    stored.enabled = 1;
    EXPECT_TRUE(is_enabled(server));
    stored.enable_code = -1;
    EXPECT_FALSE(is_enabled(server));
}
