// SPDX-License-Identifier: GPL-2.0-or-later
// Commands run one after another without a person, and what they print.
#include "shell/modes.hpp"

#include "shell/enquiries.hpp"
#include "shell/failure.hpp"
#include "shell/find.hpp"
#include "shell/layout.hpp"
#include "shell/nodes.hpp"
#include "shell/text_lines.hpp"
#include "shell/viewer.hpp"
#include "shell/vty_session.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace diagsh {

namespace {

void show(const std::string &text, Wide wide)
{
    if (wide == Wide::as_is || ::isatty(STDOUT_FILENO) == 0)
        return write_out(text);
    if (wide == Wide::scroll && ::isatty(STDIN_FILENO) != 0) {
        Terminal terminal(Terminal::Newlines::translated);
        Output output(terminal, 0, wide);
        output.add(text);
        return output.end();
    }
    for (const std::string &line : fold(split_lines(text), terminal_size().columns))
        write_out(line + "\n");
}

// "show ?" asks in any case, "show alarm?" only when it is no command: texts may end so.
enum class Question { none, always, if_unknown };
Question question_in(std::string_view command)
{
    if (!command.ends_with('?'))
        return Question::none;
    command.remove_suffix(1);
    return command.empty() || command.ends_with(' ') ? Question::always : Question::if_unknown;
}

int answer_question(VtySession &session, std::string_view command, Wide wide)
{
    command.remove_suffix(1);
    const std::string help = ask_help(session, command);
    if (help.starts_with('%'))
        return report_failed(std::string(command), {status_unknown, help});
    show(help, wide);
    return EXIT_SUCCESS;
}

int run_command(VtySession &session, const std::string &command, Wide wide)
{
    const Question question = question_in(trimmed(command));
    if (question == Question::always)
        return answer_question(session, trimmed(command), wide);
    const VtyAnswer answer = session.run(command);
    if (answer.status == status_unknown && question == Question::if_unknown)
        return answer_question(session, trimmed(command), wide);
    if (answer.status == EXIT_SUCCESS) {
        show(answer.text, wide);
        return EXIT_SUCCESS;
    }
    report_failed(command, answer);
    if (answer.status == status_unknown)
        try {
            std::fputs(told_for_option(session, command).c_str(), stderr);
        } catch (const Failure &) { // a daemon that cannot tell has said enough
        }
    return answer.status;
}

} // namespace

void write_out(const std::string &text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure(EX_IOERR, "cannot write to standard output");
}

int report_failed(const std::string &command, const VtyAnswer &answer)
{
    std::fwrite(answer.text.data(), 1, answer.text.size(), stderr);
    if (answer.text.empty())
        std::fprintf(stderr, "diagsh: command failed with status %d: %s\n", answer.status, command.c_str());
    else if (answer.text.back() != '\n')
        std::fputc('\n', stderr);
    return answer.status;
}

int run_commands(const OltPaths &olt, const std::string &node, const std::vector<std::string> &commands,
                 Wide wide)
{
    VtySession session(olt.vty_socket);
    if (const auto failed = enter_node(session, node))
        return report_failed(failed->command, failed->answer);
    for (const std::string &command : commands)
        if (const int status = run_command(session, command, wide); status != EXIT_SUCCESS)
            return status;
    return EXIT_SUCCESS;
}

int print_found(const OltPaths &olt, const std::string &pattern)
{
    VtySession session(olt.vty_socket);
    const std::string found = find_commands(ask_commands(session), pattern);
    write_out(found);
    return found.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}

int print_help_for(const OltPaths &olt, const std::string &words)
{
    VtySession session(olt.vty_socket);
    const std::string help = help_for(ask_commands(session), words, terminal_size().columns);
    write_out(help);
    return help.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace diagsh
