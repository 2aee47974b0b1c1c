// SPDX-License-Identifier: GPL-2.0-or-later
// Programming the CPLD: what is done with which monitors on, with the calls recorded.
#include "diagd/core/state.hpp"
#include "diagd/cpld/image_program.hpp"
#include "diagd/cpld/shell_runner.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"

#include "diagd/core/frr.hpp"
#include "tq_api.h"
#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

constexpr int cpld_handle = 7;

std::vector<std::string> calls;
int open_result;

std::string switches()
{
    std::string shown;
    for (const diagd::MonitorSwitch *monitor :
         {&diagm.fan_monitor, &diagm.usb_monitor, &diagm.power_monitor, &diagm.transceiver_monitor})
        shown += static_cast<char>('0' + monitor->load(std::memory_order_relaxed));
    return shown;
}

// A call with the four switches as it finds them.
void note(const std::string &call)
{
    calls.push_back(switches() + " " + call);
}

void switch_monitors(std::uint8_t fan, std::uint8_t usb, std::uint8_t power, std::uint8_t transceiver)
{
    diagm.fan_monitor = fan;
    diagm.usb_monitor = usb;
    diagm.power_monitor = power;
    diagm.transceiver_monitor = transceiver;
}

} // namespace

extern "C" {
int semaphore_p(int)
{
    note("P");
    return 0;
}
int semaphore_v(int)
{
    note("V");
    return 0;
}
struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    note(std::string{"raise "} + reason);
    return privs;
}
void _zprivs_lower(struct zebra_privs_t **privs)
{
    note("lower");
    *privs = nullptr;
}
int misc_cpld_i2c_open(int)
{
    note("open");
    return open_result;
}
int misc_cpld_i2c_close(int handle)
{
    EXPECT_EQ(handle, cpld_handle);
    note("close");
    return 0;
}
int misc_cpld_i2c_set_byte(int handle, std::uint8_t reg, std::uint8_t value)
{
    EXPECT_EQ(handle, cpld_handle);
    note("W(" + std::to_string(reg) + "," + std::to_string(value) + ")");
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
    return -1;
}
int board_mmap_read(int, void *)
{
    return -1;
}
int nanosleep(const struct timespec *pause, struct timespec *)
{
    note("wait " + std::to_string(pause->tv_sec * 1000 + pause->tv_nsec / 1'000'000) + " ms");
    return 0;
}
}

void diagd::run_to_its_end(const std::string &line) noexcept
{
    note(line);
}

void stop_watchdog(const char *reason)
{
    note(std::string{"stop watchdog "} + reason);
}

class ImageProgram : public testing::Test {
protected:
    ImageProgram()
    {
        calls.clear();
        open_result = cpld_handle;
        testing::internal::CaptureStdout();
    }
    // What programming prints.
    static std::string program()
    {
        diagd::program_image("/tmp/f.jed");
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(ImageProgram, keeps_every_monitor_off_from_before_the_first_write_until_after_the_last)
{
    switch_monitors(1, 0, 1, 0);
    EXPECT_EQ(program(), "\r\nStart to upgarde CPLD...\r\n");
    EXPECT_THAT(calls, ElementsAre("1010 P", "1010 raise update_cpld", "1010 open", "1010 lower",
                                   "1010 chmod -R 777 /usr/sbin/jtag ", "1010 chmod -R 777 /tmp/f.jed",
                                   "0000 W(0,0)", "0000 stop watchdog update_cpld", "0000 wait 1 ms",
                                   "0000 jtag /tmp/f.jed", "0000 wait 2000 ms", "0000 W(0,1)",
                                   "1111 rm /tmp/f.jed", "1111 close", "1111 V"));
}

TEST_F(ImageProgram, without_a_cpld_leaves_monitors_and_image_alone)
{
    switch_monitors(1, 0, 1, 0);
    open_result = -1;
    EXPECT_EQ(program(), "");
    EXPECT_THAT(calls, ElementsAre("1010 P", "1010 raise update_cpld", "1010 open", "1010 V", "1010 lower"));
}
