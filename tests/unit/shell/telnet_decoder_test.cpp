// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/telnet_decoder.hpp"

#include <gtest/gtest.h>

using diagsh::TelnetDecoder;
using diagsh::WindowSize;
using namespace std::string_literals;

namespace {

constexpr WindowSize window{132, 50};

struct Decoded {
    std::string text;
    std::string replies;
};

Decoded decode(TelnetDecoder &decoder, const std::string &bytes)
{
    Decoded decoded;
    decoded.text = decoder.decode(bytes, window, decoded.replies);
    return decoded;
}

Decoded decode(const std::string &bytes)
{
    TelnetDecoder decoder;
    return decode(decoder, bytes);
}

} // namespace

TEST(TelnetDecoder, text_passes_unchanged)
{
    EXPECT_EQ(decode("olt# show\r\r\n").text, "olt# show\r\r\n");
    EXPECT_EQ(decode("\xC3\xA4").text, "\xC3\xA4");
}

TEST(TelnetDecoder, padding_is_no_text)
{
    EXPECT_EQ(decode("a\0b"s).text, "ab");
}

TEST(TelnetDecoder, a_doubled_command_byte_is_one_byte_of_text)
{
    EXPECT_EQ(decode("a\xFF\xFF"
                     "b")
                  .text,
              "a\xFF"
              "b");
}

TEST(TelnetDecoder, echo_and_no_go_ahead_are_accepted_from_the_vty)
{
    const Decoded decoded = decode("\xFF\xFB\x01\xFF\xFB\x03Password: ");
    EXPECT_EQ(decoded.text, "Password: ");
    EXPECT_EQ(decoded.replies, "\xFF\xFD\x01\xFF\xFD\x03");
}

TEST(TelnetDecoder, other_offers_and_wishes_are_declined)
{
    EXPECT_EQ(decode("\xFF\xFB\x05").replies, "\xFF\xFE\x05");
    EXPECT_EQ(decode("\xFF\xFD\x18").replies, "\xFF\xFC\x18");
}

TEST(TelnetDecoder, a_refusal_needs_no_answer)
{
    EXPECT_EQ(decode("\xFF\xFE\x22\xFF\xFC\x01").replies, "");
}

TEST(TelnetDecoder, the_window_size_is_told_when_wanted)
{
    TelnetDecoder decoder;
    EXPECT_FALSE(decoder.wants_window_size());
    const Decoded decoded = decode(decoder, "\xFF\xFD\x1F");
    EXPECT_EQ(decoded.replies, "\xFF\xFB\x1F\xFF\xFA\x1F\x00\x84\x00\x32\xFF\xF0"s);
    EXPECT_TRUE(decoder.wants_window_size());
}

TEST(TelnetDecoder, commands_cut_anywhere_are_understood)
{
    const std::string bytes = "a\xFF\xFD\x1F\xFF\xFA\x1F\xFF\xFFx\xFF\xF0z";
    TelnetDecoder decoder;
    Decoded all;
    for (const char byte : bytes) {
        const Decoded one = decode(decoder, std::string(1, byte));
        all.text += one.text;
        all.replies += one.replies;
    }
    EXPECT_EQ(all.text, "az");
    EXPECT_EQ(all.replies, decode(bytes).replies);
}

TEST(WindowSizeMessage, doubles_a_size_byte_that_looks_like_a_command)
{
    EXPECT_EQ(diagsh::window_size_message({255, 24}), "\xFF\xFA\x1F\x00\xFF\xFF\x00\x18\xFF\xF0"s);
}

TEST(EncodeTyped, doubles_the_command_byte)
{
    EXPECT_EQ(diagsh::encode_typed("a\xFF"), "a\xFF\xFF");
}
