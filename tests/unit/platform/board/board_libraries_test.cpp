// SPDX-License-Identifier: GPL-2.0-or-later
// The C libraries of the CPLD and of I2C devices against a boardsim of their own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <thread>

#include "tests/unit/platform/board/libraries.hpp"

namespace {

using testing::HasSubstr;

TEST_F(Libraries, cpld_place_comes_from_the_description)
{
    std::uint8_t bus = 99, address = 0;
    EXPECT_EQ(misc_cpld_i2c_init(&bus, &address, 20), 0);
    EXPECT_EQ(bus, 0);
    EXPECT_EQ(address, 0x60);
    EXPECT_LT(misc_cpld_i2c_init(&bus, &address, 0), 0);
}

TEST_F(Libraries, written_register_reads_back)
{
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 10, 0xa5), 0);
    std::uint8_t value = 0;
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 10, &value), 0);
    EXPECT_EQ(value, 0xa5);
    EXPECT_EQ(board_->ask({"reg", "get", "10"}), "0xa5");
}

TEST_F(Libraries, cpld_takes_writes_through_a_raw_handle_too)
{
    const Handle handle(misc_i2c_device_init(0));
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 4, 1), 0);
    EXPECT_EQ(board_->ask({"reg", "get", "4"}), "0x01");
}

TEST_F(Libraries, cpld_does_not_answer_on_another_bus)
{
    const Handle handle(misc_i2c_device_init(2));
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 4, 1), -1);
    EXPECT_EQ(errno, ENXIO);
}

TEST_F(Libraries, unknown_bus_cannot_be_opened)
{
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_open(7), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(misc_i2c_device_init(-1), -1);
}

TEST_F(Libraries, identity_and_status_have_their_described_values)
{
    const Handle handle(misc_cpld_i2c_open(0));
    std::uint8_t value = 0;
    EXPECT_EQ(misc_cpld_i2c_logic_version_get(handle, &value), 0);
    EXPECT_EQ(value, 0x21);
    EXPECT_EQ(misc_cpld_i2c_device_type_get(handle, &value), 0);
    EXPECT_EQ(value, 0x05);
    EXPECT_EQ(misc_cpld_i2c_power_state_get(handle, &value), 0);
    EXPECT_EQ(value, 0x03);
    board_->ask({"power", "0x01"});
    EXPECT_EQ(misc_cpld_i2c_power_state_get(handle, &value), 0);
    EXPECT_EQ(value, 0x01);
    board_->ask({"power", "0x03"});
}

TEST_F(Libraries, operation_is_recorded_by_the_board)
{
    EXPECT_EQ(misc_cpld_oper_set(1), 0);
    EXPECT_THAT(board_->ask({"show"}), HasSubstr("monitors operate"));
    EXPECT_EQ(misc_cpld_oper_set(0), 0);
    EXPECT_THAT(board_->ask({"show"}), HasSubstr("monitors off"));
}

TEST_F(Libraries, operation_leaves_no_descriptor_open)
{
    const auto open_now = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = open_now();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(misc_cpld_oper_set(0), 0);
    EXPECT_EQ(open_now(), before);
}

TEST_F(Libraries, handle_is_a_socket_that_close_releases)
{
    const int handle = misc_cpld_i2c_open(0);
    struct stat status {};
    ASSERT_EQ(::fstat(handle, &status), 0);
    EXPECT_EQ(misc_cpld_i2c_close(handle), 0);
    EXPECT_EQ(::fstat(handle, &status), -1);
    EXPECT_EQ(misc_cpld_i2c_close(handle), -1);
}

TEST_F(Libraries, sensor_gives_its_word_high_byte_first)
{
    const Handle handle(misc_i2c_device_init(2));
    board_->ask({"temp", "set", "-5"}); // half a degree below zero
    std::array<std::uint8_t, 2> word{};
    EXPECT_GE(misc_i2c_read(handle, 0x48, 0, word.data(), 2, 0), 0);
    EXPECT_THAT(word, testing::ElementsAre(0xff, 0x80));
    board_->ask({"temp", "raw", "0x1900"});
    EXPECT_GE(misc_i2c_read(handle, 0x48, 0, word.data(), 2, 0), 0);
    EXPECT_THAT(word, testing::ElementsAre(0x19, 0x00));
}

TEST_F(Libraries, sensor_fails_as_often_as_asked)
{
    const Handle handle(misc_i2c_device_init(2));
    board_->ask({"temp", "fail", "2"});
    EXPECT_EQ(read_byte(handle, 0x48, 0), -1);
    EXPECT_EQ(read_byte(handle, 0x48, 0), -1);
    EXPECT_EQ(read_byte(handle, 0x48, 0), 0x19);
}

TEST_F(Libraries, threads_share_a_handle)
{
    const Handle sensor(misc_i2c_device_init(2));
    board_->ask({"temp", "raw", "0x1940"});
    std::atomic<int> wrong = 0;
    const auto read = [&] {
        for (int i = 0; i < 2000 && wrong == 0; ++i) { // one that goes wrong may have waited for its reply
            std::array<std::uint8_t, 2> word{};
            if (misc_i2c_read(sensor, 0x48, 0, word.data(), 2, 0) != 0 ||
                word != std::array<std::uint8_t, 2>{0x19, 0x40})
                ++wrong;
        }
    };
    {
        const std::array<std::jthread, 3> others{std::jthread(read), std::jthread(read), std::jthread(read)};
        read();
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(Libraries, module_is_reached_through_its_channel_only)
{
    board_->ask({"plug", "ge", "1", module("sfp-850")});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(read_byte(handle, 0x50, 0), -1);
    EXPECT_EQ(misc_cpld_channel_select(handle, 8), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), 0x03);
    EXPECT_EQ(misc_cpld_channel_select(handle, 9), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), -1);
    EXPECT_EQ(misc_cpld_channel_select(handle, 8), 0);
    EXPECT_EQ(misc_cpld_channel_select_end(handle), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), -1);
    const Handle raw(misc_i2c_device_init(0));
    EXPECT_EQ(read_byte(raw, 0x50, 0), -1);
}

TEST_F(Libraries, channel_that_the_multiplexer_does_not_have_is_refused)
{
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_LT(misc_cpld_channel_select(handle, 14), 0);
    EXPECT_LT(misc_cpld_channel_select(handle, -1), 0);
}

TEST_F(Libraries, presence_bit_follows_the_plug_and_power)
{
    const Handle handle(misc_cpld_i2c_open(0));
    std::uint8_t bits = 0xff;
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 11, 0xff), 0);
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 11, &bits), 0);
    EXPECT_EQ(bits, 0x00) << "an empty cage cannot be switched on";
    board_->ask({"plug", "xgpon", "3", module("xgpon-1577")});
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 11, &bits), 0);
    EXPECT_EQ(bits, 0x04);
    EXPECT_EQ(misc_cpld_channel_select(handle, 2), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), 0x03);
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 11, 0x00), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), -1) << "a module without power does not answer";
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 11, 0xff), 0);
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 11, &bits), 0);
    EXPECT_EQ(bits, 0x04);
    EXPECT_EQ(read_byte(handle, 0x50, 0), 0x03);
}

TEST_F(Libraries, module_without_second_path_does_not_answer_there)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    board_->ask({"plug", "gpon", "2", module("combo-1490-1577")});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    errno = 0;
    EXPECT_EQ(read_byte(handle, 0x58, 0), -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_EQ(misc_cpld_channel_select(handle, 1), 0);
    EXPECT_EQ(read_byte(handle, 0x58, 0), 0x03);
    EXPECT_EQ(read_byte(handle, 0x59, 98), 0x80);
}

TEST_F(Libraries, long_read_wraps_inside_the_page)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    std::array<std::uint8_t, 300> all{};
    EXPECT_GE(misc_i2c_read(handle, 0x50, 0, all.data(), static_cast<int>(all.size()), 0), 0);
    EXPECT_EQ(all[256], all[0]);
    EXPECT_EQ(all[256 + 20], 'O');
    std::array<std::uint8_t, 4> end{};
    EXPECT_GE(misc_i2c_read(handle, 0x50, 254, end.data(), 4, 0), 0);
    EXPECT_EQ(end[2], 0x03);
}

TEST_F(Libraries, module_keeps_what_is_written)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    std::uint8_t value = 0x80;
    EXPECT_GE(misc_i2c_write(handle, 0x51, 118, &value, 1, 0), 0);
    EXPECT_EQ(read_byte(handle, 0x51, 118), 0x80);
    EXPECT_EQ(board_->ask({"module", "get", "gpon", "1", "0x51", "118", "1"}), "80");
}

TEST_F(Libraries, qsfp_pages_follow_byte_127)
{
    board_->ask({"plug", "ge", "1", module("qsfp28-lr4")});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 8), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 148), 'O');
    std::uint8_t page = 3;
    EXPECT_GE(misc_i2c_write(handle, 0x50, 127, &page, 1, 0), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 128), 80); // high alarm, degrees
    page = 9;
    EXPECT_GE(misc_i2c_write(handle, 0x50, 127, &page, 1, 0), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 127), 0) << "a page that is not there selects page 0";
}

TEST_F(Libraries, lengths_out_of_range_are_refused_without_a_transaction)
{
    const Handle handle(misc_i2c_device_init(2));
    const std::string before = board_->ask({"log", "next"});
    std::uint8_t byte = 0;
    EXPECT_EQ(misc_i2c_read(handle, 0x48, 0, &byte, -1, 0), -1);
    EXPECT_EQ(misc_i2c_read(handle, 0x48, 0, nullptr, 1, 0), -1);
    EXPECT_EQ(misc_i2c_read(handle, 0x48, 0, &byte, 5000, 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(misc_i2c_read(handle, 0x48, 0, &byte, 0, 0), 0);
    EXPECT_EQ(board_->ask({"log", "next"}), before);
}

TEST_F(Libraries, call_on_a_closed_handle_fails)
{
    std::uint8_t value = 0;
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_read_byte(987, 4, &value), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(misc_cpld_i2c_read_byte(-1, 4, &value), -1);
}

TEST_F(Libraries, fault_hits_the_wanted_transaction_only)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    board_->ask({"fault", "add", "i2c_read", "addr=0x51", "reg=96", "nth=2", "count=1", "errno=121"});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    EXPECT_GE(read_byte(handle, 0x51, 97), 0);
    EXPECT_GE(read_byte(handle, 0x51, 96), 0);
    errno = 0;
    EXPECT_EQ(read_byte(handle, 0x51, 96), -1);
    EXPECT_EQ(errno, 121);
    EXPECT_GE(read_byte(handle, 0x51, 96), 0);
}

TEST_F(Libraries, select_and_open_can_fail)
{
    board_->ask({"fault", "add", "select", "ch=3"});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 3), -1);
    EXPECT_EQ(misc_cpld_channel_select(handle, 2), 0);
    board_->ask({"fault", "add", "open", "errno=13"});
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_open(0), -1);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(Libraries, dead_module_stays_visible_but_silent)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    board_->ask({"module", "die", "gpon", "1"});
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    EXPECT_EQ(read_byte(handle, 0x50, 0), -1);
    EXPECT_EQ(board_->ask({"reg", "get", "11"}), "0x01");
    board_->ask({"module", "revive", "gpon", "1"});
    EXPECT_EQ(read_byte(handle, 0x50, 0), 0x03);
}

TEST_F(Libraries, late_reply_is_a_timeout_and_not_taken_for_the_next)
{
    const Handle handle(misc_cpld_i2c_open(0));
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 20, 0x11), 0);
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 21, 0x22), 0);
    board_->ask({"fault", "add", "cpld_read", "reg=20", "delay=1300", "count=1"});
    std::uint8_t value = 0;
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 20, &value), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    // Wait on the board, not with a sleep, until the late reply is on its way.
    board_->ask({"fault", "add", "cpld_read", "reg=22", "delay=500", "count=1"});
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 22, &value), 0);
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 21, &value), 0);
    EXPECT_EQ(value, 0x22);
}

TEST_F(Libraries, late_bytes_are_not_those_of_a_read_that_fails)
{
    board_->ask({"plug", "gpon", "1", module("gpon-1490")});
    const Handle handle(misc_cpld_i2c_open(0));
    ASSERT_EQ(misc_cpld_channel_select(handle, 0), 0);
    board_->ask({"fault", "add", "i2c_read", "reg=20", "delay=1300", "count=1"});
    board_->ask({"fault", "add", "i2c_read", "reg=40", "delay=500", "errno=121", "count=1"});
    std::array<std::uint8_t, 4> bytes{};
    EXPECT_EQ(misc_i2c_read(handle, 0x50, 20, bytes.data(), 4, 0), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(misc_i2c_read(handle, 0x50, 40, bytes.data(), 4, 0), -1);
    EXPECT_EQ(errno, EREMOTEIO);
    EXPECT_THAT(bytes, testing::Each(0));
}

TEST_F(Libraries, silent_board_is_a_timeout)
{
    const Handle handle(misc_cpld_i2c_open(0));
    board_->signal(SIGSTOP);
    std::uint8_t value = 0;
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 4, &value), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_open(0), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    board_->signal(SIGCONT);
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 4, &value), 0);
}

TEST_F(Libraries, handle_works_again_after_the_board_was_started_again)
{
    const Handle cpld(misc_cpld_i2c_open(0));
    const Handle sensor(misc_i2c_device_init(2));
    EXPECT_EQ(board_->end(SIGKILL), 128 + SIGKILL);
    std::uint8_t value = 0;
    errno = 0;
    EXPECT_EQ(misc_cpld_i2c_read_byte(cpld, 0, &value), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
    board_->start();
    EXPECT_EQ(misc_cpld_i2c_read_byte(cpld, 0, &value), 0);
    EXPECT_EQ(value, 0x21);
    EXPECT_EQ(read_byte(sensor, 0x48, 0), 0x19);
    EXPECT_EQ(::fcntl(cpld, F_GETFD), FD_CLOEXEC) << "programs that are started inherit none";
}

TEST_F(Libraries, debug_switches_are_kept_and_print_one_line_per_access)
{
    EXPECT_EQ(misc_cpld_debug_get(), 0);
    EXPECT_EQ(misc_cpld_debug_set(1), 0);
    EXPECT_EQ(misc_cpld_debug_get(), 1);
    EXPECT_EQ(cpld_debug, 1);
    const Handle handle(misc_cpld_i2c_open(0));
    testing::internal::CaptureStdout();
    misc_cpld_i2c_set_byte(handle, 6, 1);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed,
                testing::MatchesRegex("cpld write handle [0-9]+ register 0x06 value 0x01 ret 0\r\n"));
    EXPECT_EQ(misc_i2c_debug_get(), 0);
    EXPECT_EQ(misc_phy_debug_get(), 0);
}

TEST_F(Libraries, log_shows_every_transaction_with_its_thread)
{
    const Handle handle(misc_cpld_i2c_open(0));
    const std::string since = board_->ask({"log", "mark", "here"});
    misc_cpld_i2c_set_byte(handle, 5, 2);
    const std::string log = board_->ask({"log", "dump", since});
    EXPECT_THAT(log, testing::ContainsRegex("[0-9]+ [0-9]+ - mark here\n"));
    EXPECT_THAT(log, testing::ContainsRegex("[0-9]+ [0-9]+ main cpld_write h=[0-9]+ reg=5 val=0x02 -> 0"));
    EXPECT_THAT(board_->ask({"log", "wait", "reg=5 val", "1", since}), HasSubstr("cpld_write"));
}

} // namespace
