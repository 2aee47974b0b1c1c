// SPDX-License-Identifier: GPL-2.0-or-later
// What a daemon sends to the shell over telnet, cut anywhere.  Input: where to cut, then the bytes.
#include "shell/telnet_decoder.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const diagsh::WindowSize window{input.u16(), input.u16()};
    const std::size_t cut = input.u8();
    const std::string_view bytes = input.rest();

    std::string replies, replies_in_pieces;
    diagsh::TelnetDecoder at_once, in_pieces;
    const std::string text = at_once.decode(bytes, window, replies);
    std::string pieces = in_pieces.decode(bytes.substr(0, cut), window, replies_in_pieces);
    pieces += in_pieces.decode(bytes.substr(std::min(cut, bytes.size())), window, replies_in_pieces);
    fuzz::expect(pieces == text && replies_in_pieces == replies,
                 "it does not matter where the bytes are cut");
    fuzz::expect(at_once.wants_window_size() == in_pieces.wants_window_size(), "nor for the window's size");
    // A command of three bytes is answered with three, a request for the window's size with 13 more at most.
    fuzz::expect(replies.size() <= bytes.size() / 3 * 16, "answers do not grow beyond what was asked");
    return 0;
}
