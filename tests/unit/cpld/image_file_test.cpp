// SPDX-License-Identifier: GPL-2.0-or-later
// CPLD images: their names, who holds their paths, and the lines that fetch them.
#include "diagd/cpld/image_file.hpp"
#include "tests/unit/temporary_folder.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <string>

using diagd::holder_of;
using diagd::PathHolder;

using diagd::is_image_name;

TEST(ImageName, letters_digits_and_dot_underscore_plus_minus_make_one)
{
    for (const char *name : {"f.jed", "K7200Q4_CPLD_1200HC.jed", "a", "7", "_", "+x", "a-b+c_d.e", "A..B"})
        EXPECT_TRUE(is_image_name(name)) << name;
}

TEST(ImageName, every_other_character_is_refused)
{
    const std::string allowed = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._+-";
    for (int c = 0; c < 256; ++c) {
        const char character = static_cast<char>(c);
        EXPECT_EQ(is_image_name(std::string{"a"} + character + "b"),
                  allowed.find(character) != std::string::npos)
            << c;
    }
}

TEST(ImageName, no_option_no_hidden_file_no_other_folder)
{
    for (const char *name : {"", "-rf", "-", ".", "..", ".f.jed", "../f.jed", "/tmp/f.jed", "a/b"})
        EXPECT_FALSE(is_image_name(name)) << name;
}

TEST(ImageName, is_as_long_as_the_programmers_line_allows)
{
    EXPECT_EQ(("jtag " + diagd::image_path(std::string(diagd::image_name_size, 'x'))).size(), 79);
    EXPECT_TRUE(is_image_name(std::string(69, 'x')));
    EXPECT_FALSE(is_image_name(std::string(70, 'x')));
    EXPECT_FALSE(is_image_name(std::string(100, 'x')));
}

TEST(ImageLines, tftp)
{
    EXPECT_EQ(diagd::tftp_line("f.jed", "10.0.0.1"), "/usr/bin/tftp -l /tmp/f.jed -r f.jed -g 10.0.0.1");
    EXPECT_EQ(diagd::tftp_line("f.jed", "2001:db8::1"),
              "/usr/bin/tftp -l /tmp/f.jed -r f.jed -g 2001:db8::1");
}

TEST(ImageLines, ftp)
{
    EXPECT_EQ(diagd::ftp_line("f.jed", "10.0.0.1", "joe", "secret"),
              "/usr/bin/ftpget -u joe -p secret 10.0.0.1 /tmp/f.jed f.jed");
}

TEST(ImageLines, what_the_shell_would_act_on_is_quoted)
{
    EXPECT_EQ(diagd::ftp_line("f.jed", "10.0.0.1", "$(id)", "a'b;c"),
              R"(/usr/bin/ftpget -u '$(id)' -p 'a'\''b;c' 10.0.0.1 /tmp/f.jed f.jed)");
    EXPECT_EQ(diagd::tftp_line("f.jed", "::1;id"), "/usr/bin/tftp -l /tmp/f.jed -r f.jed -g '::1;id'");
}

TEST(ImageLines, usb)
{
    EXPECT_EQ(diagd::usb_line("f.jed"), "find /mnt/s* -name 'f.jed'|head -n 1|xargs -i cp {} /tmp/f.jed");
}

TEST(PathHolder, a_regular_file_of_ours_with_one_link_is_ours)
{
    const TemporaryFolder folder;
    EXPECT_EQ(holder_of(folder.file("f.jed")), PathHolder::nobody);
    EXPECT_EQ(holder_of(folder.write("f.jed", "image")), PathHolder::ours);
}

TEST(PathHolder, a_link_is_others_wherever_it_leads)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("f.jed", "image");
    ASSERT_EQ(::symlink(file.c_str(), folder.file("soft").c_str()), 0);
    EXPECT_EQ(holder_of(folder.file("soft")), PathHolder::others);
    ASSERT_EQ(::symlink("nowhere", folder.file("dangling").c_str()), 0);
    EXPECT_EQ(holder_of(folder.file("dangling")), PathHolder::others);
    ASSERT_EQ(::link(file.c_str(), folder.file("hard").c_str()), 0);
    EXPECT_EQ(holder_of(folder.file("hard")), PathHolder::others);
    EXPECT_EQ(holder_of(file), PathHolder::others);
}

TEST(PathHolder, what_is_no_regular_file_is_others)
{
    const TemporaryFolder folder;
    EXPECT_EQ(holder_of(folder.path()), PathHolder::others);
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(holder_of(folder.file("pipe")), PathHolder::others);
}

TEST(PathHolder, a_file_of_another_user_is_others)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("f.jed", "image");
    ASSERT_EQ(::chown(file.c_str(), 65534, 0), 0);
    EXPECT_EQ(holder_of(file), PathHolder::others);
}

TEST(PathHolder, a_path_that_cannot_be_looked_at_is_others)
{
    const TemporaryFolder folder;
    EXPECT_EQ(holder_of(folder.write("file", "") + "/f.jed"), PathHolder::others);
}
