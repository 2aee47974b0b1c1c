// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardctl/file_verbs.hpp"

#include <cstdio>
#include <stdexcept>

#include "platform/description/board_check.hpp"
#include "sim/boardctl/module_make.hpp"
#include "sim/modules/module_file.hpp"

namespace sim {

namespace {

using Words = std::vector<std::string>;

constexpr char plug_usage[] =
    "usage: boardctl plug gpon|xgpon|ge PORT FILE [FILE...] [--no-presence] [--pad]";

// "plug KIND PORT FILE..." becomes "plug KIND PORT IMAGE".
Words prepare_plug(const Words &words)
{
    Words request{words[0]};
    Words files;
    bool hidden = false;
    bool pad = false;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (*word == "--no-presence")
            hidden = true;
        else if (*word == "--pad")
            pad = true;
        else if (word->starts_with("--"))
            throw std::invalid_argument("no option " + *word + "\n" + plug_usage);
        else if (request.size() < 3)
            request.push_back(*word);
        else
            files.push_back(*word);
    }
    if (files.empty())
        throw std::invalid_argument(plug_usage);
    const ModuleFile module = read_module(files, pad);
    for (const std::string &note : module.notes)
        std::fprintf(stderr, "note: %s\n", note.c_str());
    request.push_back(to_text(module.image));
    if (hidden)
        request.emplace_back("--no-presence");
    return request;
}

// Throws with a line for each thing that does not fit.
void check_description(const Words &words)
{
    if (words.size() != 2)
        throw std::invalid_argument("usage: boardctl check FILE");
    const std::vector<std::string> found = board::inconsistencies(board::load(words[1]));
    if (found.empty())
        return;
    std::string text = words[1] + " does not fit together:";
    for (const std::string &line : found)
        text += "\n  " + line;
    throw std::runtime_error(text);
}

} // namespace

bool is_file_verb(const Words &words)
{
    const std::string first = words.empty() ? "" : words[0];
    return first == "plug" || first == "check" ||
           (first == "module" && words.size() > 1 && words[1] == "make");
}

std::vector<std::string> prepare_file_verb(const Words &words)
{
    if (words[0] == "plug")
        return prepare_plug(words);
    if (words[0] == "check")
        check_description(words);
    else
        make_module({words.begin() + 2, words.end()});
    std::puts("ok");
    return {};
}

} // namespace sim
