// SPDX-License-Identifier: GPL-2.0-or-later
// The peers: client set-up, the bus message that suspends monitoring, the reset notices, what comes before a
// reset, the port numbers.
#include "diagd/peers/peers.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"

#include "tq_api.h"
#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using testing::ElementsAre;

int diag_sclient_init(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs);
int diag_zclient_init(struct thread_master *master);
int diag_port_init(void);
void diag_zebra_reset_send_waiting(void);

namespace {

std::vector<std::string> calls;
struct sclient client;
bool bus_absent;
int port_info_result;
struct zclient zebra_client;
struct thread_master *const loop = reinterpret_cast<struct thread_master *>(&client);

int send_result;

std::string bytes_of(const struct stream *message)
{
    std::string text;
    for (std::size_t i = 0; i < message->endp; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, i == 0 ? "%02X" : " %02X", message->data[i]);
        text += digits;
    }
    return text;
}

std::string switches()
{
    return std::to_string(diagm.fan_monitor.load()) + std::to_string(diagm.usb_monitor.load()) +
           std::to_string(diagm.power_monitor.load()) + std::to_string(diagm.transceiver_monitor.load());
}

} // namespace

extern "C" {
const char *tq_strerror(int)
{
    return "no reason";
}
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
int sclient_send_message(struct sclient *bus)
{
    calls.push_back("sclient_send_message " + bytes_of(bus->obuf));
    return send_result;
}
void sclient_create_header(struct stream *message, std::uint16_t command)
{
    stream_putw(message, 0);
    stream_putw(message, command);
}
enum zclient_send_status zclient_send_message(struct zclient *zebra)
{
    EXPECT_EQ(zebra, &zebra_client);
    calls.push_back("zclient_send_message " + bytes_of(zebra->obuf));
    return static_cast<zclient_send_status>(send_result);
}
void zclient_stop(struct zclient *zebra)
{
    EXPECT_EQ(zebra, &zebra_client);
    calls.emplace_back("zclient_stop");
}
void zclient_free(struct zclient *zebra)
{
    EXPECT_EQ(zebra, &zebra_client);
    calls.emplace_back("zclient_free");
}
struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    calls.push_back(std::string{"raise "} + reason);
    return privs;
}
void _zprivs_lower(struct zebra_privs_t **privs)
{
    calls.emplace_back("lower");
    *privs = nullptr;
}
int pal_system(const char *line)
{
    calls.emplace_back(line);
    return -1; // nothing holds a reset up
}
void sync() noexcept
{
    calls.emplace_back("sync");
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
        send_result = 0;
        client.obuf = stream_new(64);
        zebra_client.obuf = stream_new(64);
        zebra_client.master = thread_master_create(nullptr);
        // An event loop with nothing to come does not wait.
        thread_add_timer(zebra_client.master, nothing, nullptr, 60, nullptr);
    }
    void TearDown() override
    {
        thread_master_free(zebra_client.master);
        stream_free(client.obuf);
        stream_free(zebra_client.obuf);
    }

    static void nothing(struct thread *) {}
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

// The client is the process's: this one is gone at the next successful start only, so the bus is made absent
// first.
TEST_F(Peer, a_reset_notice_without_a_bus_client_is_refused_and_sends_nothing)
{
    bus_absent = true;
    diag_sclient_init(loop, 0, &diagd_privs);
    calls.clear();
    EXPECT_EQ(diag_sclient_reset_send(), -1);
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Peer, a_reset_notice_to_the_bus_is_a_header_with_its_own_length)
{
    diag_sclient_init(loop, 0, &diagd_privs);
    stream_putl(client.obuf, 7); // left from before
    for (const int result : {0, -1}) {
        calls.clear();
        send_result = result;
        EXPECT_EQ(diag_sclient_reset_send(), result);
        EXPECT_THAT(calls, ElementsAre("sclient_send_message 00 04 00 2D"));
    }
}

TEST_F(Peer, a_reset_notice_to_zebra_is_ten_bytes)
{
    diag_zclient_init(loop);
    stream_putl(zebra_client.obuf, 7);
    for (const int result : {0, -1}) {
        calls.clear();
        send_result = result;
        EXPECT_EQ(diag_zebra_reset_send(), result);
        EXPECT_THAT(calls, ElementsAre("zclient_send_message 00 0A FE 06 00 00 00 00 00 88"));
    }
}

TEST_F(Peer, the_zebra_client_is_stopped_and_freed_and_no_notice_is_sent_after_that)
{
    diag_zclient_init(loop);
    calls.clear();
    diag_zclient_stop();
    diag_zebra_reset_send();
    EXPECT_THAT(calls, ElementsAre("zclient_stop", "zclient_free"));
}

// libfrr's client must be used by the event loop's thread alone.
TEST_F(Peer, another_threads_notice_to_zebra_is_sent_by_the_event_loop)
{
    diag_zclient_init(loop);
    calls.clear();
    std::atomic<int> result{-7};
    std::thread sender{[&] { result = diag_zebra_reset_send(); }};
    struct thread event;
    ASSERT_NE(thread_fetch(zebra_client.master, &event), nullptr);
    EXPECT_EQ(result, -7);
    thread_call(&event);
    sender.join();
    EXPECT_EQ(result, 0);
    EXPECT_THAT(calls, ElementsAre("zclient_send_message 00 0A FE 06 00 00 00 00 00 88"));
}

TEST_F(Peer, a_thread_goes_on_without_its_notice_to_zebra_and_the_event_loop_sends_it_however_late)
{
    diag_zclient_init(loop);
    calls.clear();
    int result = 0;
    std::thread sender{[&] { result = diag_zebra_reset_send(); }};
    sender.join();
    EXPECT_EQ(result, ZCLIENT_SEND_BUFFERED);
    EXPECT_THAT(calls, testing::IsEmpty());
    struct thread event;
    ASSERT_NE(thread_fetch(zebra_client.master, &event), nullptr);
    thread_call(&event);
    EXPECT_THAT(calls, ElementsAre("zclient_send_message 00 0A FE 06 00 00 00 00 00 88"));
}

TEST_F(Peer, what_waits_for_zebra_is_sent_at_the_end_and_not_again)
{
    diag_zclient_init(loop);
    std::thread sender{[] { diag_zebra_reset_send(); }};
    sender.join();
    calls.clear();
    diag_zebra_reset_send_waiting();
    EXPECT_THAT(calls, ElementsAre("zclient_send_message 00 0A FE 06 00 00 00 00 00 88"));
    calls.clear();
    diag_zebra_reset_send_waiting();
    struct thread event;
    ASSERT_NE(thread_fetch(zebra_client.master, &event), nullptr);
    thread_call(&event);
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Peer, a_notice_that_comes_too_late_for_the_client_is_not_sent)
{
    diag_zclient_init(loop);
    std::thread sender{[] { diag_zebra_reset_send(); }};
    sender.join();
    diag_zclient_stop();
    calls.clear();
    diag_zebra_reset_send_waiting();
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Peer, logs_are_copied_to_flash_as_root_and_written_out)
{
    system_backup();
    EXPECT_THAT(calls, ElementsAre("raise log_backup", "cp /var/log/* /media/config/var/log/laststart/ -rf",
                                   "lower", "sync"));
}

TEST_F(Peer, the_watchdog_is_stopped_as_root_before_a_reboot)
{
    system_reboot();
    EXPECT_THAT(calls,
                ElementsAre("raise system_reboot", "killall -9 watchfrr &> /dev/null", "lower", "sync"));
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
