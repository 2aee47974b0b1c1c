// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/unit/command_table.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

namespace {

const std::map<std::string, int> node_numbers{
    {"config", 4}, {"fan", 97}, {"gpon", 124}, {"xgpon", 125}, {"diagnose", 133}, {"alarm-log", 155},
};

// A set or a command as it stands in the file.
struct Block {
    std::vector<std::string> title; // its words
    std::vector<std::string> lines;
    std::vector<std::string> help;
};

struct Set {
    std::vector<std::string> words;
    std::string help;
};

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream in{text};
    for (std::string part; std::getline(in, part, separator);)
        if (!part.empty())
            parts.push_back(part);
    return parts;
}

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::vector<Block> read_blocks(const char *path)
{
    std::ifstream in{path};
    EXPECT_TRUE(in.is_open()) << path;
    std::vector<Block> blocks{Block{}};
    for (std::string line; std::getline(in, line);) {
        if (line.empty())
            blocks.emplace_back();
        else if (line.starts_with("  - "))
            blocks.back().help.push_back(line.substr(4));
        else if (line.starts_with("  "))
            blocks.back().lines.push_back(line.substr(2));
        else if (!line.starts_with('#'))
            blocks.back().title = split(line, ' ');
    }
    std::erase_if(blocks, [](const Block &block) { return block.title.empty(); });
    return blocks;
}

Set read_set(const Block &block)
{
    Set set;
    for (const std::string &line : block.lines)
        for (const std::string &word : split(line, ' '))
            set.words.push_back(word);
    const bool for_each_word =
        std::ranges::any_of(block.help, [](const std::string &line) { return line.find("{}") != line.npos; });
    for (const std::string &word : for_each_word ? set.words : std::vector<std::string>{""})
        for (const std::string &line : block.help)
            set.help += replaced(line, "{}", word) + '\n';
    return set;
}

std::string alternatives(const Set &set)
{
    std::string joined;
    for (const std::string &word : set.words)
        joined += (joined.empty() ? "<" : "|") + word;
    return joined + ">";
}

} // namespace

std::vector<ListedCommand> read_command_table(const char *path)
{
    std::map<std::string, Set> sets;
    std::vector<ListedCommand> commands;
    for (const Block &block : read_blocks(path)) {
        if (block.title[0] == "set" && block.title.size() == 2) {
            sets['{' + block.title[1] + '}'] = read_set(block);
            continue;
        }
        const bool hidden = block.title.size() == 3 && block.title[2] == "hidden";
        if (block.lines.size() != 1 || block.title.size() != (hidden ? 3 : 2)) {
            ADD_FAILURE() << "no command: " << block.title[0];
            break;
        }
        std::string syntax = block.lines[0];
        for (const auto &[name, set] : sets)
            syntax = replaced(syntax, name, alternatives(set));
        std::string help;
        for (const std::string &line : block.help)
            help += sets.contains(line) ? sets.at(line).help : line + '\n';
        for (const std::string &node : split(block.title[0], ','))
            commands.push_back({node_numbers.at(node), block.title[1] + "_cmd", syntax, help, hidden});
    }
    return commands;
}
