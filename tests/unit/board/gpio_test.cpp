// SPDX-License-Identifier: GPL-2.0-or-later
// Resets through the GPIO device: requests, their order, and what is closed when one fails.
#include "diagd/board/gpio.hpp"

#include "diagd/core/privileges.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int device_fd = 77'777; // no descriptor of this process

std::vector<std::string> calls;
int open_error;   // errno of the open, 0: it succeeds
int get_error;    // errno of request 3
int set_fails_at; // number of the request 1 that fails, 0: none
int set_count;

void reset_recorder()
{
    calls.clear();
    open_error = get_error = set_fails_at = set_count = 0;
}

// Runs of the same request are noted once.
void note(const std::string &call)
{
    if (calls.empty() || calls.back() != call)
        calls.push_back(call);
}

std::string hex(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%x", value);
    return text;
}

} // namespace

extern "C" {
int open(const char *path, int flags, ...)
{
    if (std::strcmp(path, "/dev/tq_gpio_cfg") != 0)
        return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0600));
    EXPECT_EQ(flags & O_ACCMODE, O_RDWR);
    note("open");
    if (open_error != 0) {
        errno = open_error;
        return -1;
    }
    return device_fd;
}
int close(int fd)
{
    if (fd != device_fd)
        return static_cast<int>(syscall(SYS_close, fd));
    note("close");
    return 0;
}
int ioctl(int fd, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (fd != device_fd)
        return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
    note("request " + std::to_string(request) + " " + hex(*static_cast<std::uint32_t *>(argument)));
    if (request == 3 && get_error != 0) {
        errno = get_error;
        return -1;
    }
    if (request == 1 && ++set_count == set_fails_at) {
        errno = EIO;
        return -1;
    }
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
    errno = 0;
}
}

class GpioReset : public testing::Test {
protected:
    void SetUp() override { reset_recorder(); }

    // What it logs.
    static std::string run(void (*reset)() noexcept)
    {
        testing::internal::CaptureStderr();
        reset();
        return testing::internal::GetCapturedStderr();
    }
};

TEST(GpioWord, has_the_value_below_the_gpio_number)
{
    EXPECT_EQ(diagd::gpio_word(1, 1), 0x101u);
    EXPECT_EQ(diagd::gpio_word(8, 1), 0x801u);
    EXPECT_EQ(diagd::gpio_word(255, 255), 0xFFFFu);
}

TEST_F(GpioReset, pon_reset_leaves_the_device_open)
{
    EXPECT_EQ(run(diagd::pon_chip_reset), "");
    EXPECT_THAT(calls,
                ElementsAre("raise pon_chip_reset", "open", "request 3 0x101", "request 1 0x100", "lower"));
}

TEST_F(GpioReset, pon_reset_without_device_logs_one_error)
{
    open_error = ENOENT;
    EXPECT_THAT(run(diagd::pon_chip_reset),
                HasSubstr("open /dev/tq_gpio_cfg failed: No such file or directory"));
    EXPECT_THAT(calls, ElementsAre("raise pon_chip_reset", "open", "lower"));
}

TEST_F(GpioReset, pon_reset_closes_when_it_cannot_get)
{
    get_error = ENOTTY;
    EXPECT_THAT(run(diagd::pon_chip_reset), HasSubstr("get gpio 1 fail: Inappropriate ioctl for device"));
    EXPECT_THAT(calls, ElementsAre("raise pon_chip_reset", "open", "request 3 0x101", "close", "lower"));
}

TEST_F(GpioReset, pon_reset_closes_when_it_cannot_set)
{
    set_fails_at = 1;
    EXPECT_THAT(run(diagd::pon_chip_reset), HasSubstr("set gpio 1 fail: Input/output error"));
    EXPECT_THAT(calls, ElementsAre("raise pon_chip_reset", "open", "request 3 0x101", "request 1 0x100",
                                   "close", "lower"));
}

TEST_F(GpioReset, system_reset_writes_100000_times_and_leaves_the_device_open)
{
    EXPECT_EQ(run(diagd::system_gpio_reset), "");
    EXPECT_EQ(set_count, 100'000);
    EXPECT_THAT(
        calls, ElementsAre("raise system_gpio_reset", "open", "lower", "request 3 0x801", "request 1 0x801"));
}

TEST_F(GpioReset, system_reset_stops_at_the_first_write_that_fails)
{
    set_fails_at = 42;
    EXPECT_THAT(run(diagd::system_gpio_reset), HasSubstr("set gpio 8 fail: Input/output error"));
    EXPECT_EQ(set_count, 42);
    EXPECT_EQ(calls.back(), "close");
}

TEST_F(GpioReset, system_reset_writes_nothing_when_it_cannot_get)
{
    get_error = EPERM;
    EXPECT_THAT(run(diagd::system_gpio_reset), HasSubstr("get gpio 8 fail: Operation not permitted"));
    EXPECT_THAT(calls, ElementsAre("raise system_gpio_reset", "open", "lower", "request 3 0x801", "close"));
}

TEST_F(GpioReset, system_reset_without_device_keeps_the_reason_over_lowering)
{
    open_error = EACCES;
    EXPECT_THAT(run(diagd::system_gpio_reset), HasSubstr("open /dev/tq_gpio_cfg failed: Permission denied"));
    EXPECT_THAT(calls, ElementsAre("raise system_gpio_reset", "open", "lower"));
}
