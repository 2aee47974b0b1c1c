// SPDX-License-Identifier: GPL-2.0-or-later
// Looking commands up.
#include "shell/find.hpp"

#include "shell/layout.hpp"
#include "shell/nodes.hpp"
#include "shell/syntax_words.hpp"
#include "shell/text_lines.hpp"

#include <regex.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <set>
#include <sstream>
#include <string>

namespace diagsh {

namespace {

constexpr std::ptrdiff_t longest_list = 5;    // names that are read in passing
constexpr std::size_t longest_list_text = 45; // characters
constexpr std::size_t most_nodes = 4;         // that are named one by one
constexpr std::size_t help_column = 24;       // at most

// What people call things that the commands have another name for.
struct OtherName {
    std::string_view people_say;
    std::string_view commands_say;
};
constexpr std::array other_names{
    OtherName{"optic", "transceiver"},   OtherName{"optical", "transceiver"},
    OtherName{"optics", "transceiver"},  OtherName{"module", "transceiver"},
    OtherName{"modules", "transceiver"}, OtherName{"sfp", "transceiver"},
    OtherName{"qsfp", "transceiver"},    OtherName{"light", "transceiver"},
    OtherName{"laser", "transceiver"},   OtherName{"supply", "sys power"},
    OtherName{"psu", "sys power"},       OtherName{"serial", "idprom"},
    OtherName{"firmware", "logic"},      OtherName{"syslog", "remote server"},
};

std::string_view name_of_commands(std::string_view said)
{
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == b; };
    for (const OtherName &name : other_names)
        if (std::ranges::equal(said, name.people_say, same))
            return name.commands_say;
    return {};
}

class Pattern {
public:
    explicit Pattern(const std::string &text) : m_text(text)
    {
        m_is_expression = ::regcomp(&m_expression, text.c_str(), REG_EXTENDED | REG_ICASE | REG_NOSUB) == 0;
    }
    ~Pattern()
    {
        if (m_is_expression)
            ::regfree(&m_expression);
    }
    Pattern(const Pattern &) = delete;
    Pattern &operator=(const Pattern &) = delete;

    bool is_in(const std::string &text) const
    {
        if (m_is_expression)
            return ::regexec(&m_expression, text.c_str(), 0, nullptr, 0) == 0;
        const auto is_same = [](unsigned char a, unsigned char b) {
            return std::tolower(a) == std::tolower(b);
        };
        return std::search(text.begin(), text.end(), m_text.begin(), m_text.end(), is_same) != text.end();
    }

private:
    std::string m_text;
    regex_t m_expression{};
    bool m_is_expression = false;
};

// One command with all nodes that have it.
struct Found {
    const Command *command;
    std::vector<std::string> nodes;

    std::string node_text() const
    {
        if (nodes.size() > most_nodes)
            return "all";
        std::string text;
        for (const std::string &node : nodes)
            text.append(text.empty() ? "" : ",").append(node);
        return text;
    }
};

std::vector<Found> matching(const std::vector<Command> &commands,
                            const std::function<bool(const Command &)> &matches)
{
    std::vector<Found> found;
    for (const Command &command : commands) {
        if (option_for_node(command.node).empty() || !matches(command))
            continue;
        const auto same = std::ranges::find_if(
            found, [&](const Found &other) { return other.command->syntax == command.syntax; });
        if (same == found.end())
            found.push_back({&command, {command.node}});
        else
            same->nodes.push_back(command.node);
    }
    return found;
}

// What the command is about: the help of its last word that is always there and no value.
std::string help_in_short(const Command &command)
{
    std::string help;
    for (const SyntaxWord &word : words_of(command.syntax, command.help))
        if (word.depth == 0 && word.is_keyword() && !word.help.empty())
            help = word.help;
    return help;
}

bool may_stand_for(std::string_view typed, const SyntaxWord &word)
{
    return word.is_keyword() ? std::string_view(word.text).starts_with(typed) : true;
}

bool begins_with(const Command &command, const std::vector<std::string> &typed)
{
    const std::vector<SyntaxWord> words = words_of(command.syntax, command.help);
    for (std::size_t at = 0; at < typed.size(); ++at)
        if (std::ranges::none_of(words, [&](const SyntaxWord &word) {
                return word.element == at && may_stand_for(typed[at], word);
            }))
            return false;
    return !typed.empty();
}

bool is_long(std::string_view list)
{
    return std::ranges::count(list, '|') >= longest_list || list.size() > longest_list_text;
}

// A name for a list behind `before`: that of the keyword in front of it.
std::string list_name(std::string_view before)
{
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz";
    const std::size_t last = before.find_last_of(letters);
    const std::size_t between = before.find_last_not_of(letters, last);
    if (last == std::string_view::npos)
        return "NAME";
    std::string name(before.substr(between + 1, last - between));
    if (name == "threshold")
        return "ALARM";
    for (char &c : name)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return name;
}

struct HelpRow {
    std::string word;
    std::string help;
};

// A row for each word; one for all names of a long list.
std::vector<HelpRow> help_rows(const Command &command)
{
    const std::vector<SyntaxWord> words = words_of(command.syntax, command.help);
    std::vector<HelpRow> rows;
    for (auto begin = words.begin(); begin != words.end();) {
        const auto end = std::find_if(begin, words.end(),
                                      [&](const SyntaxWord &word) { return word.element != begin->element; });
        if (end - begin > longest_list) {
            const std::size_t at = command.syntax.find("<" + begin->text + "|");
            rows.push_back({list_name(std::string_view(command.syntax).substr(0, at)), {}});
            for (auto word = begin; word != end; ++word)
                rows.back().help.append(word == begin ? "" : ", ").append(word->text);
        } else {
            for (auto word = begin; word != end; ++word)
                rows.push_back({word->text, word->help});
        }
        begin = end;
    }
    return rows;
}

// A line for each.
std::string rows_of(const std::vector<Found> &found)
{
    std::size_t width = 0;
    for (const Found &one : found)
        width = std::max(width, one.node_text().size());
    std::string text;
    for (const Found &one : found) {
        std::string node = one.node_text();
        node.append(width - node.size(), ' ');
        text.append(node).append("  ").append(short_syntax(one.command->syntax));
        if (const std::string help = help_in_short(*one.command); !help.empty())
            text.append("  -- ").append(help);
        text += '\n';
    }
    return text;
}

} // namespace

std::string short_syntax(std::string_view syntax)
{
    std::string text;
    while (!syntax.empty()) {
        const std::size_t end = syntax[0] == '<' ? syntax.find('>') : std::string_view::npos;
        const std::string_view list =
            end == std::string_view::npos ? syntax.substr(0, 1) : syntax.substr(0, end + 1);
        if (is_long(list))
            text += "<" + list_name(text) + ">";
        else
            text += list;
        syntax.remove_prefix(list.size());
    }
    return text;
}

std::string find_commands(const std::vector<Command> &commands, const std::string &pattern)
{
    const Pattern wanted(pattern);
    const auto has = [&](const Command &command) {
        return wanted.is_in(command.syntax) ||
               std::ranges::any_of(command.help, [&](const std::string &help) { return wanted.is_in(help); });
    };
    std::string text = rows_of(matching(commands, has));
    const std::string other(name_of_commands(pattern));
    if (other.empty())
        return text;
    std::vector<Found> more = matching(commands, [&](const Command &command) {
        return !has(command) && command.syntax.find(other) != std::string::npos;
    });
    if (more.empty())
        return text;
    // First the display of the thing itself.
    std::stable_partition(more.begin(), more.end(),
                          [&](const Found &one) { return one.command->syntax.starts_with("show " + other); });
    return text.append("% also by another name, ").append(other).append(":\n").append(rows_of(more));
}

std::string help_for(const std::vector<Command> &commands, std::string_view words, std::size_t width)
{
    std::istringstream line{std::string(words)};
    std::vector<std::string> typed;
    for (std::string word; line >> word;)
        typed.push_back(word);

    const auto found =
        matching(commands, [&](const Command &command) { return begins_with(command, typed); });
    std::string text;
    for (const Found &one : found) {
        text.append(text.empty() ? "" : "\n").append(one.node_text()).append(": ");
        text.append(short_syntax(one.command->syntax)).append("\n");
        for (const HelpRow &row : help_rows(*one.command)) {
            std::string begin = "  " + row.word + "  ";
            begin.append(help_column - std::min(begin.size(), help_column), ' ');
            for (const std::string &part : fold_line(begin + row.help, width, help_column))
                text.append(part.substr(0, part.find_last_not_of(' ') + 1)).append("\n");
        }
    }
    return text;
}

std::vector<std::string> alarm_names(const std::vector<Command> &commands)
{
    std::set<std::string> names;
    for (const Command &command : commands)
        if (command.syntax.starts_with("alarm-log alarm <") ||
            command.syntax.starts_with("alarm-log event <"))
            for (const SyntaxWord &word : words_of(command.syntax, {}))
                if (word.element == 2)
                    names.insert(word.text);
    return {names.begin(), names.end()};
}

} // namespace diagsh
