// SPDX-License-Identifier: GPL-2.0-or-later
// A line typed at a prompt, edited with libedit: its keys, its history, Control-R.  `?` and TAB ask whoever
// knows the commands.
#pragma once

#include "shell/terminal.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// Who helps while a line is typed.  May throw Failure, which ends the line; read() throws it then.
struct LineHelp {
    std::function<std::string(std::string_view line)> help;               // "?": lines to show
    std::function<std::vector<std::string>(std::string_view line)> words; // TAB: what the last word may be
    std::function<std::string()> log_text = {}; // text of a log that is shown meanwhile, when it is readable
};

struct TypedLine {
    enum class End {
        line,      // `text` is to be run
        cancelled, // Control-C
        to_enable, // Control-Z
        no_more,   // Control-D
        leave,     // Control-], or the terminal is gone
        closed,    // the daemon has ended
    };
    End end = End::line;
    std::string text;
};

class LineEditor {
public:
    LineEditor(Terminal &terminal, LineHelp help);
    ~LineEditor();
    LineEditor(const LineEditor &) = delete;
    LineEditor &operator=(const LineEditor &) = delete;

    // Reads one line.  `peer`: ends it when it is readable.  `log`: see LineHelp, -1 for none.
    TypedLine read(const std::string &prompt, int peer, int log);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// `words` in columns for a terminal of `width` columns, each line ended.
std::string in_columns(const std::vector<std::string> &words, std::size_t width);

// What all of `words` begin with.
std::string common_start(const std::vector<std::string> &words);

} // namespace diagsh
