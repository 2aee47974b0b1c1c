// SPDX-License-Identifier: GPL-2.0-or-later
// The table of verbs: finds the one that is asked for, checks its words, answers.
#pragma once

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "sim/boardsim/control/control_service.hpp"

namespace sim {

inline constexpr unsigned any_number = 64; // of words

struct Verb {
    // Takes the words after the name and returns the text to show, "" for "ok".  Mistakes are std::exceptions
    // whose text is shown after "error: "; they change nothing.
    using Now = std::function<std::string(const Words &)>;
    // Answers over time, itself.
    using Later = std::function<void(const Words &, ControlClient &)>;

    const char *name;   // one or two words
    unsigned min_words; // after the name
    unsigned max_words;
    const char *usage;
    std::variant<Now, Later> work;
    bool writes = false; // changes what the state folder keeps
};

// on, off
bool to_flag(const std::string &word);
std::uint8_t to_byte(const std::string &word);

class VerbTable {
public:
    // Below the others, in the order that help shows.
    void add(std::vector<Verb> verbs);
    // Answers the client: status digit, newline, text.  Never throws.
    void run(const Words &words, ControlClient &client) const;
    // Called after a verb that may have changed what the state folder keeps.
    void on_write(std::function<void()> written) { written_ = std::move(written); }
    // One line a verb: name and usage.
    [[nodiscard]] std::string help() const;

private:
    void dispatch(const Words &words, ControlClient &client) const;
    [[noreturn]] void refuse(const std::string &word) const;

    std::vector<Verb> verbs_;
    std::function<void()> written_;
};

} // namespace sim
