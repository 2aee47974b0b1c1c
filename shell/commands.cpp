// SPDX-License-Identifier: GPL-2.0-or-later
// Commands run one after another without a person, and what they print.
#include "shell/modes.hpp"

#include "shell/failure.hpp"
#include "shell/vty_session.hpp"

#include <cstdio>

namespace diagsh {

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

std::vector<std::string> way_to_node(const std::string &node)
{
    if (node == "view")
        return {};
    if (node == "enable")
        return {"enable"};
    if (node == "config")
        return {"enable", "configure terminal"};
    return {"enable", "configure terminal", node};
}

int run_commands(const OltPaths &olt, const std::string &node, const std::vector<std::string> &commands)
{
    VtySession session(olt.vty_socket);
    for (const std::string &step : way_to_node(node)) {
        if (const VtyAnswer answer = session.run(step); answer.status != 0)
            return report_failed(step, answer);
    }
    for (const std::string &command : commands) {
        const VtyAnswer answer = session.run(command);
        if (answer.status != 0)
            return report_failed(command, answer);
        write_out(answer.text);
    }
    return 0;
}

} // namespace diagsh
