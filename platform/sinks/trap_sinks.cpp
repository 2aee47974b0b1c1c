// SPDX-License-Identifier: GPL-2.0-or-later
// Text of the file of trap sinks (see trap_sinks.hpp).
#include "platform/sinks/trap_sinks.hpp"

#include "platform/sinks/trap_message.hpp"
#include "platform/sinks/udp_receiver.hpp"

#include <charconv>
#include <optional>

namespace tq {

namespace {

constexpr std::uint16_t trap_port = 162;
constexpr std::string_view blanks = " \t\r";

// The words of a line in front of its comment.
std::vector<std::string_view> words_of(std::string_view line)
{
    std::vector<std::string_view> words;
    while ((line = line.substr(std::min(line.find_first_not_of(blanks), line.size()))), !line.empty()) {
        if (line[0] == '#')
            break;
        words.push_back(line.substr(0, line.find_first_of(blanks)));
        line.remove_prefix(words.back().size());
    }
    return words;
}

// "ADDRESS", "IPV4:PORT" or "[IPV6]:PORT"; an address with several colons and no brackets has no port.
std::optional<TrapSink> target(std::string_view word)
{
    std::string_view address = word, port;
    bool has_port = false;
    if (word.starts_with('[')) {
        const std::size_t end = word.find(']');
        if (end == word.npos)
            return std::nullopt;
        address = word.substr(1, end - 1);
        port = word.substr(end + 1);
        has_port = !port.empty();
        if (has_port && port[0] != ':')
            return std::nullopt;
        port.remove_prefix(has_port ? 1 : 0);
    } else if (const std::size_t colon = word.find(':'); colon != word.npos && colon == word.rfind(':')) {
        address = word.substr(0, colon);
        port = word.substr(colon + 1);
        has_port = true;
    }
    TrapSink sink{std::string(address), trap_port, {}};
    if (has_port) {
        const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), sink.port);
        if (error != std::errc{} || end != port.data() + port.size() || sink.port == 0)
            return std::nullopt;
    }
    if (!UdpReceiver::at(sink.address, sink.port))
        return std::nullopt;
    return sink;
}

// What is wrong with the line, or nothing.
const char *add_line(std::string_view line, std::vector<TrapSink> &sinks)
{
    const auto words = words_of(line);
    if (words.empty())
        return nullptr;
    if (words.size() != 2)
        return "an address and a community are wanted";
    auto sink = target(words[0]);
    if (!sink)
        return "no address of the form IPV4[:PORT], IPV6 or [IPV6]:PORT";
    if (words[1].size() > max_community)
        return "the community is too long";
    if (sinks.size() == max_trap_sinks)
        return "there are too many sinks";
    sink->community = words[1];
    sinks.push_back(std::move(*sink));
    return nullptr;
}

} // namespace

TrapSinks parse_trap_sinks(std::string_view text)
{
    TrapSinks result;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (const char *mistake = add_line(line, result.sinks))
            result.mistakes.push_back("line " + std::to_string(number) + ": " + mistake);
    }
    return result;
}

} // namespace tq
