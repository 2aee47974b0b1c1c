// SPDX-License-Identifier: GPL-2.0-or-later
// Line editing with libedit.  What its callbacks throw is kept until they have returned: nothing unwinds
// through C.
#include "shell/line_editor.hpp"

#include "base/owner.hpp"
#include "shell/failure.hpp"
#include "shell/layout.hpp"
#include "shell/text_lines.hpp"

#include <histedit.h>

#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <exception>
#include <optional>
#include <utility>

namespace diagsh {

namespace {

constexpr int history_size = 500;

using Edit = base::Owner<EditLine, el_end>;
using Lines = base::Owner<History, history_end>;

// Keys as terminals send them, of xterm, the Linux console, VT220 and rxvt, and what they do.
constexpr std::array<std::pair<const char *, const char *>, 27> keys{{
    {"\\e[H", "ed-move-to-beg"},   {"\\eOH", "ed-move-to-beg"},  {"\\e[1~", "ed-move-to-beg"},
    {"\\e[7~", "ed-move-to-beg"},  {"\\e[F", "ed-move-to-end"},  {"\\eOF", "ed-move-to-end"},
    {"\\e[4~", "ed-move-to-end"},  {"\\e[8~", "ed-move-to-end"}, {"\\e[3~", "ed-delete-next-char"},
    {"\\e[A", "ed-prev-history"},  {"\\e[B", "ed-next-history"}, {"\\e[C", "ed-next-char"},
    {"\\e[D", "ed-prev-char"},     {"\\eOA", "ed-prev-history"}, {"\\eOB", "ed-next-history"},
    {"\\eOC", "ed-next-char"},     {"\\eOD", "ed-prev-char"},    {"\\e[1;5C", "em-next-word"},
    {"\\e[1;5D", "ed-prev-word"},  {"\\e[1;3C", "em-next-word"}, {"\\e[1;3D", "ed-prev-word"},
    {"\\e[5C", "em-next-word"},    {"\\e[5D", "ed-prev-word"},   {"^R", "em-inc-search-prev"},
    {"^W", "ed-delete-prev-word"}, {"^U", "vi-kill-line-prev"},  {"\\e[3;5~", "em-delete-next-word"},
}};

std::string_view before_cursor(EditLine *edit)
{
    const LineInfo *line = el_line(edit);
    return {line->buffer, static_cast<std::size_t>(line->cursor - line->buffer)};
}

// The word that the cursor is at the end of; empty after a blank.
std::string_view last_word(std::string_view line)
{
    const std::size_t blank = line.find_last_of(" \t");
    return blank == std::string_view::npos ? line : line.substr(blank + 1);
}

} // namespace

struct LineEditor::State {
    State(Terminal &on, LineHelp with) : terminal(on), help(std::move(with)) {}

    Terminal &terminal;
    LineHelp help;
    Lines history{history_init()};
    Edit edit; // goes before the history that it uses
    std::string prompt;
    int peer = -1;
    int log = -1;
    TypedLine::End end = TypedLine::End::line;
    std::exception_ptr failure;
    std::string bytes;      // of a character not yet complete
    bool searching = false; // Control-R

    static State &of(EditLine *edit)
    {
        void *state = nullptr;
        el_get(edit, EL_CLIENTDATA, &state);
        return *static_cast<State *>(state);
    }

    static char *show_prompt(EditLine *edit) { return of(edit).prompt.data(); }

    // --- keys

    static int next_key(EditLine *edit, wchar_t *key) noexcept
    {
        State &state = of(edit);
        try {
            return state.wait_for_key(*key);
        } catch (...) {
            state.failure = std::current_exception();
            return 0;
        }
    }

    int wait_for_key(wchar_t &character)
    {
        for (;;) {
            switch (terminal.wait(peer, log)) {
            case Terminal::Event::keys:
                if (const auto complete = add_key(character))
                    return *complete;
                break;
            case Terminal::Event::peer:
                end = TypedLine::End::closed;
                return 0;
            case Terminal::Event::second:
                show_beside(help.log_text());
                break;
            case Terminal::Event::window:
                el_resize(edit.get());
                el_set(edit.get(), EL_REFRESH);
                break;
            case Terminal::Event::end:
                end = TypedLine::End::leave;
                return 0;
            }
        }
    }

    // 1 when `character` is a whole character, 0 when the terminal is gone, none when more bytes are wanted.
    std::optional<int> add_key(wchar_t &character)
    {
        const std::optional<char> byte = terminal.read_key();
        if (!byte) {
            end = TypedLine::End::leave;
            return 0;
        }
        if (ends_search(*byte)) // which takes the Escape for itself: the key that it begins comes after it
            terminal.put_back({key::escape});
        bytes += *byte;
        std::mbstate_t shift{};
        const std::size_t used = std::mbrtowc(&character, bytes.data(), bytes.size(), &shift);
        if (used == static_cast<std::size_t>(-2))
            return std::nullopt;
        bytes.clear();
        if (used == static_cast<std::size_t>(-1))
            return std::nullopt; // no character: dropped
        return 1;
    }

    // Whether this Escape begins a key that ends a search.
    bool ends_search(char byte)
    {
        constexpr char search_back = 0x12;
        const bool was_searching = searching;
        searching = byte == search_back || (searching && byte != key::escape && byte != '\r' && byte != '\n');
        return was_searching && byte == key::escape &&
               (terminal.unread().starts_with('[') || terminal.unread().starts_with('O'));
    }

    // Text in the place of the line, which is drawn again below it.
    void show_beside(const std::string &text) const
    {
        std::fputs("\r\x1b[K", stdout);
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
        el_set(edit.get(), EL_REFRESH);
    }

    // --- what keys do

    template <class Work>
    static unsigned char guarded(EditLine *edit, Work work) noexcept
    {
        State &state = of(edit);
        try {
            return work(state);
        } catch (...) {
            state.failure = std::current_exception();
            return CC_EOF;
        }
    }

    // Below the line, however many rows it takes; it is drawn again after that.
    unsigned char show_below(const std::string &text) const
    {
        const LineInfo *line = el_line(edit.get());
        const std::size_t width = terminal_size().columns;
        const std::size_t before = columns_of(prompt + std::string(before_cursor(edit.get())));
        const std::size_t behind =
            columns_of({line->cursor, static_cast<std::size_t>(line->lastchar - line->cursor)});
        for (std::size_t row = before / width; row <= (before + behind) / width; ++row)
            std::fputc('\n', stdout);
        std::fwrite(text.data(), 1, text.size(), stdout);
        el_set(edit.get(), EL_REFRESH);
        return CC_NORM;
    }

    static unsigned char show_help(EditLine *edit, int) noexcept
    {
        return guarded(edit,
                       [&](State &state) { return state.show_below(state.help.help(before_cursor(edit))); });
    }

    static unsigned char complete(EditLine *edit, int) noexcept
    {
        return guarded(edit, [&](State &state) -> unsigned char {
            const std::string line(before_cursor(edit));
            const std::string_view typed = last_word(line);
            const std::vector<std::string> words = state.help.words(line);
            std::string word = common_start(words);
            if (words.size() == 1)
                word += ' ';
            else if (word.size() <= typed.size())
                return words.empty() ? static_cast<unsigned char>(CC_ERROR)
                                     : state.show_below(in_columns(words, terminal_size().columns));
            el_deletestr(edit, static_cast<int>(typed.size()));
            return el_insertstr(edit, word.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
        });
    }

    // Ends the line as Return does, so that what follows begins below it.
    unsigned char end_line(TypedLine::End how)
    {
        end = how;
        el_push(edit.get(), "\n");
        return CC_NORM;
    }

    template <TypedLine::End how>
    static unsigned char end_with(EditLine *edit, int) noexcept
    {
        return of(edit).end_line(how);
    }

    static unsigned char end_of_input(EditLine *edit, int) noexcept
    {
        const LineInfo *line = el_line(edit);
        if (line->buffer == line->lastchar)
            return of(edit).end_line(TypedLine::End::no_more);
        el_cursor(edit, 1);
        if (const LineInfo *moved = el_line(edit); moved->cursor == line->cursor)
            return CC_ERROR;
        el_deletestr(edit, 1);
        return CC_REFRESH;
    }
};

LineEditor::LineEditor(Terminal &terminal, LineHelp help)
    : m_state(std::make_unique<State>(terminal, std::move(help)))
{
    // Characters of more than one byte, whatever the locale; nothing else is translated.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    m_state->edit.reset(el_init("diagsh", stdin, stdout, stderr));
    if (!m_state->edit || !m_state->history)
        throw Failure(EX_OSERR, "no line editing");
    EditLine *edit = m_state->edit.get();
    HistEvent event{};
    history(m_state->history.get(), &event, H_SETSIZE, history_size);
    history(m_state->history.get(), &event, H_SETUNIQUE, 1);

    el_set(edit, EL_CLIENTDATA, m_state.get());
    el_set(edit, EL_PROMPT, State::show_prompt);
    el_set(edit, EL_HIST, ::history, m_state->history.get());
    el_set(edit, EL_EDITOR, "emacs");
    el_set(edit, EL_SETTY, "-d", "-isig", nullptr);
    // The library shows its prompt before it takes the terminal: keys that come in between are not echoed.
    el_set(edit, EL_SETTY, "-x", "-echo", "-icanon", "-isig", nullptr);
    el_wset(edit, EL_GETCFN, State::next_key);
    el_set(edit, EL_ADDFN, "dg-help", "What can follow", State::show_help);
    el_set(edit, EL_ADDFN, "dg-complete", "Complete the word", State::complete);
    el_set(edit, EL_ADDFN, "dg-cancel", "Drop the line", State::end_with<TypedLine::End::cancelled>);
    el_set(edit, EL_ADDFN, "dg-enable", "To the enable node", State::end_with<TypedLine::End::to_enable>);
    el_set(edit, EL_ADDFN, "dg-leave", "Leave at once", State::end_with<TypedLine::End::leave>);
    el_set(edit, EL_ADDFN, "dg-end", "Delete, or end the session", State::end_of_input);
    for (const auto &[key, function] : keys)
        el_set(edit, EL_BIND, key, function, nullptr);
    for (const auto &[key, function] : {std::pair{"?", "dg-help"},
                                        {"^I", "dg-complete"},
                                        {"^C", "dg-cancel"},
                                        {"^Z", "dg-enable"},
                                        {"^]", "dg-leave"},
                                        {"^D", "dg-end"}})
        el_set(edit, EL_BIND, key, function, nullptr);
}

LineEditor::~LineEditor() = default;

TypedLine LineEditor::read(const std::string &prompt, int peer, int log)
{
    State &state = *m_state;
    state.prompt = prompt;
    state.peer = peer;
    state.log = log;
    state.end = TypedLine::End::line;
    state.searching = false;
    int count = 0;
    const char *line = el_gets(state.edit.get(), &count);
    state.terminal.take();
    if (state.failure)
        std::rethrow_exception(std::exchange(state.failure, nullptr));
    if (!line && state.end == TypedLine::End::line)
        state.end = TypedLine::End::leave;
    if (state.end != TypedLine::End::line)
        return {state.end, {}};
    const std::string text(trimmed(std::string_view(line, static_cast<std::size_t>(count))));
    HistEvent event{};
    if (!text.empty())
        ::history(state.history.get(), &event, H_ENTER, text.c_str());
    return {TypedLine::End::line, text};
}

} // namespace diagsh
