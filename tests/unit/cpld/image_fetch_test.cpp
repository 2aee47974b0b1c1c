// SPDX-License-Identifier: GPL-2.0-or-later
// Fetching a CPLD image with an argument missing, and how long it may take; what fetching does is tested in a
// box.
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/cpld/image_fetch.hpp"
#include "diagd/cpld/shell_runner.hpp"
#include "tests/unit/printing_vty.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> done;
std::vector<diagd::RunBounds> bounds_given;

class ImageFetch : public testing::Test {
protected:
    ImageFetch()
    {
        done.clear();
        bounds_given.clear();
    }

    PrintingVty vty;
};

} // namespace

void diagd::file_alarm(tq_alarm_id code, AlarmState, const char *message) noexcept
{
    done.push_back(std::to_string(code) + " " + message);
}

int diagd::run_dropping_output(const std::string &line) noexcept
{
    done.push_back(line);
    return -1;
}

int diagd::run_dropping_output(const std::string &line, const RunBounds &bounds) noexcept
{
    bounds_given.push_back(bounds);
    return run_dropping_output(line);
}

TEST_F(ImageFetch, tftp_wants_a_server_and_a_file)
{
    EXPECT_LT(diagd::fetch_by_tftp(&vty.session, nullptr, "f.jed"), 0);
    EXPECT_EQ(vty.text(), "tftp_server or file is NULL\r\n");
    EXPECT_LT(diagd::fetch_by_tftp(&vty.session, "10.0.0.1", nullptr), 0);
    EXPECT_EQ(vty.text(), "tftp_server or file is NULL\r\n");
    EXPECT_TRUE(done.empty());
}

TEST_F(ImageFetch, ftp_wants_all_four)
{
    const char *const given[] = {"10.0.0.1", "f.jed", "joe", "secret"};
    for (unsigned missing = 0; missing < 4; ++missing) {
        const char *words[4];
        for (unsigned i = 0; i < 4; ++i)
            words[i] = i == missing ? nullptr : given[i];
        EXPECT_LT(diagd::fetch_by_ftp(&vty.session, words[0], words[1], words[2], words[3]), 0);
        EXPECT_EQ(vty.text(), "tftp_server or file is NULL\r\n");
    }
    EXPECT_TRUE(done.empty());
}

TEST_F(ImageFetch, usb_wants_a_file)
{
    EXPECT_EQ(diagd::fetch_by_usb(&vty.session, nullptr), -1);
    EXPECT_EQ(vty.text(), "Error: file is NULL\r\n");
    EXPECT_TRUE(done.empty());
}

TEST_F(ImageFetch, a_program_that_cannot_be_started_is_a_failed_download)
{
    EXPECT_EQ(diagd::fetch_by_tftp(&vty.session, "10.0.0.1", "f.jed"), -1);
    EXPECT_EQ(done, (std::vector<std::string>{"/usr/bin/tftp -l /tmp/f.jed -r f.jed -g 10.0.0.1",
                                              "1 download f.jed fail"}));
    EXPECT_EQ(vty.text(), "\r\nTrying to download f.jed from server 10.0.0.1, please wait...\r\n");
}

TEST_F(ImageFetch, a_server_may_be_silent_for_a_minute_and_a_fetch_take_ten)
{
    diagd::fetch_by_tftp(&vty.session, "10.0.0.1", "none-of-these.jed");
    diagd::fetch_by_ftp(&vty.session, "10.0.0.1", "none-of-these.jed", "joe", "secret");
    ASSERT_EQ(bounds_given.size(), 2);
    for (const diagd::RunBounds &bounds : bounds_given) {
        EXPECT_EQ(bounds.total, std::chrono::minutes{10});
        EXPECT_EQ(bounds.file, "/tmp/none-of-these.jed");
        EXPECT_EQ(bounds.standstill, std::chrono::seconds{60});
    }
}

TEST_F(ImageFetch, a_search_of_the_sticks_has_ten_minutes_and_writes_nothing_to_watch)
{
    diagd::fetch_by_usb(&vty.session, "none-of-these.jed");
    ASSERT_EQ(bounds_given.size(), 1);
    EXPECT_EQ(bounds_given[0].total, std::chrono::minutes{10});
    EXPECT_EQ(bounds_given[0].file, "");
}
