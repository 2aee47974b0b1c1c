// SPDX-License-Identifier: GPL-2.0-or-later
// The peers: client set-up, the bus message that suspends monitoring, the port numbers.
#include "frr.hpp"
#include "port_map.hpp"
#include "privileges.hpp"
#include "state.hpp"

#include "tq_api.h"
#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

int diag_sclient_init(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs);
int diag_zclient_init(struct thread_master *master);
int diag_port_init(void);

namespace {

std::vector<std::string> calls;
struct sclient client;
bool bus_absent;
int port_info_result;
struct zclient zebra_client;
struct thread_master *const loop = reinterpret_cast<struct thread_master *>(&client);

std::string switches()
{
    return std::to_string(diagm.fan_monitor.load()) + std::to_string(diagm.usb_monitor.load()) +
           std::to_string(diagm.power_monitor.load()) + std::to_string(diagm.transceiver_monitor.load());
}

} // namespace

extern "C" {
struct sclient *sclient_new(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs)
{
    EXPECT_EQ(master, loop);
    EXPECT_EQ(privs, &diagd_privs);
    calls.push_back("sclient_new " + std::to_string(instance));
    return bus_absent ? nullptr : &client;
}
void sclient_init(struct sclient *bus, int type, std::uint16_t instance, struct zebra_privs_t *privs)
{
    EXPECT_EQ(bus, &client);
    EXPECT_EQ(privs, &diagd_privs);
    calls.push_back("sclient_init " + std::to_string(type) + " " + std::to_string(instance));
}
struct zclient *zclient_new(struct thread_master *master, struct zclient_options *options,
                            zclient_handler *const *, size_t handlers)
{
    EXPECT_EQ(master, loop);
    EXPECT_EQ(options, &zclient_options_default);
    EXPECT_EQ(handlers, 0u);
    calls.emplace_back("zclient_new");
    return &zebra_client;
}
void zclient_init(struct zclient *zebra, int type, unsigned short instance, struct zebra_privs_t *privs)
{
    EXPECT_EQ(zebra, &zebra_client);
    EXPECT_EQ(privs, &diagd_privs);
    calls.push_back("zclient_init " + std::to_string(type) + " " + std::to_string(instance));
}
int misc_cpld_oper_set(int on)
{
    calls.push_back("misc_cpld_oper_set " + std::to_string(on) + " switches " + switches());
    return -1;
}
int database_dev_get_port_info(tq_database_t *, tq_port_info_t *record)
{
    for (std::uint8_t i = 0; i < 16; ++i)
        record->b[i] = i;
    return port_info_result;
}
int semaphore_p(int)
{
    return 0;
}
int semaphore_v(int)
{
    return 0;
}
int misc_cpld_i2c_open(int)
{
    return -1;
}
int misc_cpld_i2c_close(int)
{
    return 0;
}
int misc_cpld_i2c_read_byte(int, std::uint8_t, std::uint8_t *)
{
    return -1;
}
int misc_cpld_channel_select(int, int)
{
    return -1;
}
int misc_cpld_channel_select_end(int)
{
    return 0;
}
int board_mmap_read(int, void *)
{
    return -1;
}
}

class Peer : public testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        client = {};
        bus_absent = false;
        port_info_result = 0;
        diag_port = {};
    }

    static void receive(std::uint32_t value)
    {
        struct stream *const message = stream_new(16);
        stream_putl(message, value);
        client.message_handler(&client, message);
        stream_free(message);
    }
};

TEST_F(Peer, the_bus_client_is_made_and_gets_its_handler)
{
    EXPECT_EQ(diag_sclient_init(loop, 0, &diagd_privs), 0);
    EXPECT_THAT(calls, ElementsAre("sclient_new 0", "sclient_init 10 0"));
    EXPECT_NE(client.message_handler, nullptr);
}

TEST_F(Peer, the_bus_client_gets_the_low_16_bits_of_the_instance)
{
    diag_sclient_init(loop, 0x12345, &diagd_privs);
    EXPECT_THAT(calls, ElementsAre("sclient_new 74565", "sclient_init 10 9029"));
}

TEST_F(Peer, an_absent_bus_is_left_alone)
{
    bus_absent = true;
    EXPECT_EQ(diag_sclient_init(loop, 0, &diagd_privs), -1);
    EXPECT_THAT(calls, ElementsAre("sclient_new 0"));
}

TEST_F(Peer, the_bus_switches_all_monitors_before_the_board)
{
    diag_sclient_init(loop, 0, &diagd_privs);
    calls.clear();
    diagm.set_all_monitors(true);
    receive(7);
    diagm.fan_monitor = 0;
    receive(0);
    EXPECT_THAT(calls,
                ElementsAre("misc_cpld_oper_set 0 switches 0000", "misc_cpld_oper_set 1 switches 1111"));
}

TEST_F(Peer, a_bus_message_that_cannot_be_read_changes_nothing)
{
    diag_sclient_init(loop, 0, &diagd_privs);
    calls.clear();
    diagm.set_all_monitors(true);
    client.message_handler(&client, nullptr);
    struct stream *const message = stream_new(16);
    stream_putw(message, 1);
    client.message_handler(&client, message);
    stream_free(message);
    EXPECT_THAT(calls, testing::IsEmpty());
    EXPECT_EQ(switches(), "1111");
}

TEST_F(Peer, the_zebra_client_has_route_type_32)
{
    EXPECT_EQ(diag_zclient_init(loop), 0);
    EXPECT_THAT(calls, ElementsAre("zclient_new", "zclient_init 32 0"));
}

TEST_F(Peer, port_numbers_come_in_the_daemons_order)
{
    diag_port_init();
    EXPECT_THAT(diag_port, ElementsAre(10, 11, 12, 13, 3, 4, 1, 0));
}

TEST_F(Peer, without_port_record_the_port_numbers_stay_zero)
{
    port_info_result = -1;
    testing::internal::CaptureStdout();
    diag_port_init();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "diagd port init failed\r\n");
    EXPECT_THAT(diag_port, testing::Each(0));
}
