// SPDX-License-Identifier: GPL-2.0-or-later
// Enquiries of a session.
#include "shell/enquiries.hpp"

#include "shell/failure.hpp"
#include "shell/text_lines.hpp"

#include <algorithm>
#include <charconv>

namespace diagsh {

namespace {

constexpr char enquiry = '\x05';
enum class Ask : char { state = '$', help = '?', words = '\t', nodes = '@', commands = '*' };

std::string ask(VtySession &session, Ask kind, std::string_view line = {})
{
    VtyAnswer answer = session.run(std::string{enquiry, static_cast<char>(kind)} + std::string(line));
    if (answer.status != 0)
        throw Failure(EX_PROTOCOL, "the daemon's library answers no enquiries");
    return std::move(answer.text);
}

// A syntax as a person reads it: as it stands in the daemon's source it has names for the program, behind
// "$", and blanks of its layout there.
std::string readable(std::string_view source)
{
    constexpr std::string_view blanks = " \t", letters = "abcdefghijklmnopqrstuvwxyz_0123456789";
    std::string text;
    for (std::size_t at = 0; at < source.size();) {
        const char c = source[at];
        if (c == '$') {
            at = std::min(source.find_first_not_of(letters, at + 1), source.size());
        } else if (blanks.find(c) != std::string_view::npos) {
            at = std::min(source.find_first_not_of(blanks, at), source.size());
            const bool opened =
                text.empty() || std::string_view("<[{|").find(text.back()) != std::string_view::npos;
            const bool closes =
                at == source.size() || std::string_view(">]}|").find(source[at]) != std::string_view::npos;
            text += opened || closes ? "" : " ";
        } else {
            text += c;
            ++at;
        }
    }
    return text;
}

} // namespace

SessionState ask_state(VtySession &session)
{
    const std::string answer = ask(session, Ask::state);
    const std::size_t first = answer.find('\n');
    const std::size_t second = answer.find('\n', first + 1);
    SessionState state;
    if (second == std::string::npos ||
        std::from_chars(answer.data(), answer.data() + first, state.lines).ec != std::errc{})
        throw Failure(EX_PROTOCOL, "the daemon tells no prompt");
    state.node = answer.substr(first + 1, second - first - 1);
    state.prompt = answer.substr(second + 1);
    return state;
}

std::string ask_help(VtySession &session, std::string_view line)
{
    std::string help = ask(session, Ask::help, line);
    help.erase(0, help.find_first_not_of("\r\n"));
    return help;
}

std::vector<std::string> ask_words(VtySession &session, std::string_view line)
{
    return split_lines(ask(session, Ask::words, line));
}

std::vector<std::string> ask_nodes(VtySession &session, std::string_view line)
{
    return split_lines(ask(session, Ask::nodes, line));
}

std::vector<Command> ask_commands(VtySession &session)
{
    return parse_commands(ask(session, Ask::commands));
}

std::vector<Command> parse_commands(std::string_view answer)
{
    std::vector<Command> commands;
    for (const std::string &line : split_lines(answer)) {
        const std::size_t tab = line.find('\t');
        if (tab == 0 && !commands.empty())
            commands.back().help.push_back(line.substr(1));
        else if (tab != std::string::npos)
            commands.push_back({line.substr(0, tab), readable(std::string_view(line).substr(tab + 1)), {}});
    }
    return commands;
}

} // namespace diagsh
