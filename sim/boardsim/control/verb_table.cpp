// SPDX-License-Identifier: GPL-2.0-or-later
// The table of verbs.  Failure policy: a mistake changes nothing and is one line.
#include "sim/boardsim/control/verb_table.hpp"

#include <exception>
#include <iterator>
#include <stdexcept>

#include "sim/modules/text.hpp"

namespace sim {

bool to_flag(const std::string &word)
{
    if (word != "on" && word != "off")
        throw std::invalid_argument("\"" + word + "\" is neither on nor off");
    return word == "on";
}

std::uint8_t to_byte(const std::string &word)
{
    return static_cast<std::uint8_t>(parse_number(word, 0, 255));
}

void VerbTable::add(std::vector<Verb> verbs)
{
    std::move(verbs.begin(), verbs.end(), std::back_inserter(verbs_));
}

void VerbTable::run(const Words &words, ControlClient &client) const
{
    try {
        dispatch(words, client);
    } catch (const std::exception &error) {
        client.send(std::string("1\nerror: ") + error.what() + "\n");
        client.finish();
    }
}

void VerbTable::dispatch(const Words &words, ControlClient &client) const
{
    if (words.empty())
        throw std::invalid_argument("no verb");
    for (const Verb &verb : verbs_) {
        const std::string name = verb.name;
        const bool two = name.find(' ') != std::string::npos;
        if (name != (two && words.size() > 1 ? words[0] + " " + words[1] : words[0]))
            continue;
        const Words rest(words.begin() + (two ? 2 : 1), words.end());
        if (rest.size() < verb.min_words || rest.size() > verb.max_words)
            throw std::invalid_argument("usage: boardctl " + name + " " + verb.usage);
        if (const auto *later = std::get_if<Verb::Later>(&verb.work)) {
            (*later)(rest, client);
            return;
        }
        const std::string text = std::get<Verb::Now>(verb.work)(rest);
        if (verb.writes && written_)
            written_();
        client.send("0\n" + (text.empty() ? "ok\n" : text));
        client.finish();
        return;
    }
    refuse(words[0]);
}

// With the usage of every verb that begins with the word.
void VerbTable::refuse(const std::string &word) const
{
    std::string known;
    for (const Verb &verb : verbs_)
        if (const std::string name = verb.name; name.substr(0, name.find(' ')) == word)
            known += std::string(known.empty() ? "" : "\n       ") + "boardctl " + name + " " + verb.usage;
    throw std::invalid_argument(known.empty() ? "no verb \"" + word + "\"" : "usage: " + known);
}

std::string VerbTable::help() const
{
    std::string text;
    for (const Verb &verb : verbs_)
        text += std::string(verb.name) + (*verb.usage != '\0' ? " " : "") + verb.usage + "\n";
    return text;
}

} // namespace sim
