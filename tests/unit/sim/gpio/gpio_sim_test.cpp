// SPDX-License-Identifier: GPL-2.0-or-later
// The GPIO device: this program is linked with the preload library, which answers as it does when preloaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

#include "tests/unit/running_board.hpp"

namespace {

using testing::HasSubstr;

class Gpio : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = new TemporaryFolder;
        // The library looks once, at the first open.
        ::setenv("OLT_GPIO_DEVICE", folder_->file("gpio-device").c_str(), 1);
        folder_->write("gpio-device", "");
        board_ = new RunningBoard;
        ::setenv("BOARDSIM_DIR", board_->path().c_str(), 1);
    }
    static void TearDownTestSuite()
    {
        delete board_;
        delete folder_;
    }
    void TearDown() override { board_->ask({"gpio", "fail", "off"}); }

    static int open_device() { return ::open(folder_->file("gpio-device").c_str(), O_RDWR); }
    static std::ptrdiff_t descriptors()
    {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }
    static int request(int fd, unsigned long number, std::uint32_t &word)
    {
        return ::ioctl(fd, number, &word);
    }

    static RunningBoard *board_;
    static TemporaryFolder *folder_;
};

RunningBoard *Gpio::board_ = nullptr;
TemporaryFolder *Gpio::folder_ = nullptr;

TEST_F(Gpio, set_value_is_what_get_gives_back)
{
    const int fd = open_device();
    ASSERT_GE(fd, 0);
    std::uint32_t word = 0x0801;
    EXPECT_EQ(request(fd, 1, word), 0);
    EXPECT_EQ(board_->ask({"gpio", "get", "8"}), "1");
    word = 0x0800;
    EXPECT_EQ(request(fd, 3, word), 0);
    EXPECT_EQ(word, 0x0801U);
    EXPECT_EQ(request(fd, 3, word), 0);
    const std::string shown = board_->ask({"gpio", "show"});
    EXPECT_THAT(shown, HasSubstr("request 3 2  request 1 1  last word 0x801\n"));
    EXPECT_THAT(shown, HasSubstr("gpio 8: value 1, set 1 times"));
    ::close(fd);
}

TEST_F(Gpio, requests_fail_from_the_wanted_one_on)
{
    const int fd = open_device();
    std::uint32_t word = 0x0100;
    board_->ask({"gpio", "fail", "req1", "3", "errno=16"});
    EXPECT_EQ(request(fd, 1, word), 0);
    EXPECT_EQ(request(fd, 1, word), 0);
    errno = 0;
    EXPECT_EQ(request(fd, 1, word), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(request(fd, 1, word), -1);
    EXPECT_EQ(request(fd, 3, word), 0) << "the other request works";
    board_->ask({"gpio", "fail", "off"});
    EXPECT_EQ(request(fd, 1, word), 0);
    board_->ask({"gpio", "fail", "req3", "1", "count=1"});
    EXPECT_EQ(request(fd, 3, word), -1);
    EXPECT_EQ(request(fd, 3, word), 0);
    ::close(fd);
}

TEST_F(Gpio, open_can_be_refused)
{
    const std::ptrdiff_t before = descriptors();
    board_->ask({"gpio", "fail", "open", "errno=13"});
    errno = 0;
    EXPECT_EQ(open_device(), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(open_device(), -1);
    EXPECT_EQ(descriptors(), before) << "what the file system opened is closed again";
    EXPECT_GE(::open("/dev/null", O_RDWR), 0) << "other files open";
}

TEST_F(Gpio, other_files_are_left_alone)
{
    const int fd = ::open(folder_->write("plain", "x").c_str(), O_RDWR);
    ASSERT_GE(fd, 0);
    std::uint32_t word = 0x0801;
    EXPECT_EQ(request(fd, 3, word), -1);
    EXPECT_EQ(errno, ENOTTY);
    ::close(fd);
}

} // namespace
