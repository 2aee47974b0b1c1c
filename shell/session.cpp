// SPDX-License-Identifier: GPL-2.0-or-later
// A session on the daemon's vty socket.  When the daemon goes away the terminal is given back as it was.
#include "shell/modes.hpp"

#include "shell/enquiries.hpp"
#include "shell/failure.hpp"
#include "shell/find.hpp"
#include "shell/layout.hpp"
#include "shell/line_editor.hpp"
#include "shell/live_record.hpp"
#include "shell/nodes.hpp"
#include "shell/output.hpp"
#include "shell/session_line.hpp"
#include "shell/terminal.hpp"
#include "shell/text_lines.hpp"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>
#include <vector>

namespace diagsh {

namespace {

class Session {
public:
    Session(const OltPaths &olt, const std::string &node, Wide wide)
        : m_session(olt.vty_socket), m_wide(wide), m_olt(olt), m_node(node)
    {
    }

    int run()
    {
        if (!m_node.empty())
            if (const auto failed = enter_node(m_session, m_node))
                return report_failed(failed->command, failed->answer);
        m_state = ask_state(m_session);
        Terminal terminal(Terminal::Newlines::translated);
        LineEditor editor(terminal, {[this](std::string_view line) { return help(line); },
                                     [this](std::string_view line) { return words(line); },
                                     [this] { return log_text(); }});
        for (const std::string &line : fold_line(greeting(m_state, m_olt.state), terminal_size().columns, 0))
            write_all(STDOUT_FILENO, line + "\n");
        for (bool open = true; open;) {
            const TypedLine typed = editor.read(m_state.prompt, m_session.socket(), m_log.get());
            switch (typed.end) {
            case TypedLine::End::line:
                open = typed.text.empty() || obey(terminal, typed.text);
                break;
            case TypedLine::End::cancelled:
                break;
            case TypedLine::End::to_enable:
                open = m_state.node == "view" || obey(terminal, "end");
                break;
            case TypedLine::End::no_more:
            case TypedLine::End::leave:
                open = false;
                break;
            case TypedLine::End::closed:
                write_all(STDOUT_FILENO, "\n");
                throw Failure(EX_UNAVAILABLE, "the daemon has ended");
            }
        }
        return EXIT_SUCCESS;
    }

private:
    // --- while a line is typed

    std::string help(std::string_view line)
    {
        std::string text;
        for (const std::string &row : split_lines(ask_help(m_session, line)))
            for (const std::string &part : fold_line(row, terminal_size().columns, help_begins(row)))
                text.append(part).append("\n");
        return text;
    }

    std::vector<std::string> words(std::string_view line)
    {
        std::vector<std::string> words = ask_words(m_session, line);
        if (words.empty() && wants_alarm_name(line)) {
            words = alarm_names(ask_commands(m_session));
            const std::string_view typed = line.substr(line.find_last_of(' ') + 1);
            std::erase_if(words, [&](const std::string &name) { return !name.starts_with(typed); });
        }
        return words;
    }

    std::string log_text()
    {
        std::vector<char> packet(longest_live_packet);
        const ssize_t got = ::recv(m_log.get(), packet.data(), packet.size(), 0);
        const auto record = parse_live_record({packet.data(), got < 0 ? 0 : static_cast<std::size_t>(got)});
        if (record)
            return log_line(*record);
        m_log.reset(); // "no terminal monitor", or another library's log
        return {};
    }

    // --- when it is typed

    // False when the session is to end.
    bool obey(Terminal &terminal, const std::string &text)
    {
        const SessionLine line = parse_session_line(text, m_wide);
        Output output(terminal, m_state.lines, line.wide);
        if (!line.pattern.empty()) {
            show_found(output, find_commands(ask_commands(m_session), line.pattern));
            return !output.left();
        }
        const std::optional<int> status = execute(terminal, output, line.command);
        if (!status || output.left())
            return false;
        if (output.broke_table())
            hint_at_width(line.command);
        try {
            if (*status == status_unknown)
                for (const std::string &part :
                     fold(split_lines(told_in_session(m_session, m_state.node, line.command)),
                          terminal_size().columns))
                    write_all(STDOUT_FILENO, part + "\n");
            m_state = ask_state(m_session);
        } catch (const Closed &) {
            if (is_exit(line.command))
                return false;
            throw Failure(EX_UNAVAILABLE, "the daemon has ended");
        }
        return true;
    }

    static void show_found(Output &output, const std::string &found)
    {
        constexpr std::size_t indent = 4;
        for (const std::string &command : split_lines(found))
            for (const std::string &part : fold_line(command, terminal_size().columns, indent))
                output.add(part + "\n");
        if (found.empty())
            output.add("% No command has that.\n");
        output.end();
    }

    // Once in a session.
    void hint_at_width(const std::string &command)
    {
        if (std::exchange(m_hinted, true) || ::isatty(STDOUT_FILENO) == 0)
            return;
        const std::string hint = "% Wider than this terminal: " + command +
                                 " | fold shows it in parts, | scroll in a view; diagsh --wide folds always.";
        for (const std::string &part : fold_line(hint, terminal_size().columns, 2))
            write_all(STDOUT_FILENO, part + "\n");
    }

    // Runs it and shows what it says as it comes.  None when the person leaves meanwhile.
    std::optional<int> execute(Terminal &terminal, Output &output, const std::string &command)
    {
        m_session.send(command);
        std::string typed; // ahead, for the next prompt
        std::optional<int> status;
        while (!status) {
            const Terminal::Event event = terminal.wait(m_session.socket());
            if (event == Terminal::Event::end)
                return std::nullopt;
            if (event == Terminal::Event::keys) {
                const std::string keys = terminal.read_keys();
                if (keys.empty() || keys.find(key::leave) != std::string::npos)
                    return std::nullopt;
                if (keys.find(key::interrupt) != std::string::npos)
                    output.stop();
                else
                    typed += keys;
            } else if (event == Terminal::Event::peer) {
                std::string text;
                status = m_session.receive(text);
                output.add(text);
                if (output.left())
                    return std::nullopt;
            }
        }
        output.end();
        terminal.put_back(typed);
        if (base::Fd passed = m_session.take_passed())
            m_log = std::move(passed);
        return status;
    }

    VtySession m_session;
    Wide m_wide;
    const OltPaths &m_olt;
    std::string m_node;
    SessionState m_state;
    base::Fd m_log; // of "terminal monitor"
    bool m_hinted = false;
};

} // namespace

int run_session(const OltPaths &olt, const std::string &node, Wide wide)
{
    return Session(olt, node, wide).run();
}

} // namespace diagsh
