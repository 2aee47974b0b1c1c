// SPDX-License-Identifier: GPL-2.0-or-later
// Hot-plug messages of the kernel and what they mean for the USB LED.
#include "diagd/monitors/usb/uevent_parser.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

std::optional<bool> led(const std::string &text)
{
    diagd::UeventBuffer buffer{};
    std::copy_n(text.begin(), std::min(text.size(), buffer.size()), buffer.begin());
    return diagd::usb_led_after(buffer);
}

std::string zero_separated(const std::string &header, const std::string &variables)
{
    return header + '\0' + variables + '\0';
}

} // namespace

TEST(Uevent, an_added_usb_device_lights_the_led)
{
    EXPECT_EQ(led("add@/devices/pci0000:00/0000:00:14.0/usb1/1-2"), true);
    EXPECT_EQ(led("add@/devices/virtual/net/usb0"), true);
}

TEST(Uevent, any_other_event_of_a_usb_device_darkens_it)
{
    for (const char *action : {"remove", "change", "bind", "unbind", "move", "online", "offline"})
        EXPECT_EQ(led(std::string{action} + "@/devices/pci0000:00/usb1/1-2"), false) << action;
}

TEST(Uevent, what_is_not_about_usb_is_left_alone)
{
    EXPECT_EQ(led("add@/devices/virtual/net/x"), std::nullopt);
    EXPECT_EQ(led("remove@/devices/virtual/net/x"), std::nullopt);
    EXPECT_EQ(led(""), std::nullopt);
    EXPECT_EQ(led("libudev"), std::nullopt);
    EXPECT_EQ(led("add@/devices/us/b"), std::nullopt);
    EXPECT_EQ(led("add@/devices/USB1"), std::nullopt);
}

TEST(Uevent, add_is_looked_for_in_the_path_too)
{
    EXPECT_EQ(led("remove@/devices/usb1/padding"), true);
}

TEST(Uevent, only_the_part_before_the_first_zero_counts)
{
    EXPECT_EQ(led(zero_separated("add@/devices/virtual/net/x", "SUBSYSTEM=usb")), std::nullopt);
    EXPECT_EQ(led(zero_separated("remove@/devices/usb1", "ACTION=add")), false);
}

TEST(Uevent, a_message_that_fills_the_buffer_ends_with_it)
{
    EXPECT_EQ(led(std::string(1024, 'x')), std::nullopt);
    EXPECT_EQ(led(std::string(1021, 'x') + "usb"), false);
    EXPECT_EQ(led(std::string(1018, 'x') + "addusb"), true);
    EXPECT_EQ(led(std::string(1022, 'x') + "usb"), std::nullopt) << "cut before the last character";
}
