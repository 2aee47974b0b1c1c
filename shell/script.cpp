// SPDX-License-Identifier: GPL-2.0-or-later
// Commands run one after another without a person.
#include "shell/script.hpp"

#include "shell/output.hpp"
#include "shell/vty_session.hpp"

namespace diagsh {

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
