// SPDX-License-Identifier: GPL-2.0-or-later
// A threshold on many ports.  The node must fit the module: in another one the daemon compares 0 and files
// records of nothing.  What is refused for one port is refused for all, so the first refusal ends it.
#include "shell/verbs.hpp"

#include "shell/enquiries.hpp"
#include "shell/failure.hpp"
#include "shell/modes.hpp"
#include "shell/nodes.hpp"
#include "shell/port_modules.hpp"
#include "shell/syntax_words.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace diagsh {

namespace {

constexpr std::size_t name_width = 12;

// The names that "alarm-log threshold" has in a node, one behind the other; empty where it has `name`.
std::string other_names(const std::vector<Command> &commands, std::string_view node, std::string_view name)
{
    std::string text;
    for (const Command &command : commands) {
        if (command.node != node || !command.syntax.starts_with("alarm-log threshold <"))
            continue;
        for (const SyntaxWord &word : words_of(command.syntax, {})) {
            if (word.element != 2)
                continue;
            if (word.text == name)
                return {};
            if (text.find(word.text) == std::string::npos)
                text.append(text.empty() ? "" : ", ").append(word.text);
        }
    }
    return text;
}

void check_name(VtySession &session, const std::string &name)
{
    const std::vector<Command> commands = ask_commands(session);
    if (const std::string others = other_names(commands, "gpon", name); !others.empty())
        throw Failure(EX_USAGE,
                      "no threshold of modules is named " + name + "; there are " + others +
                          ".\nThose of the board (" + other_names(commands, "config", "") +
                          ") are kept by board-thresholds; received power and Ethernet modules have none");
}

class PortThresholds {
public:
    PortThresholds(VtySession &session, std::string command)
        : m_session(session), m_command(std::move(command))
    {
    }

    // In both nodes: the module that it was set for may be another one by now, or gone.
    bool end(const PortModule &module) { return set_in("gpon", module.port) && set_in("xgpon", module.port); }

    // False when the daemon refuses.
    bool set(const PortModule &module)
    {
        if (!module.plugged || (!module.gpon && !module.xgpon)) {
            tell(module.port, module.plugged ? "skipped, its module measures nothing"
                                             : "skipped, no module that is decoded");
            ++m_skipped;
            return true;
        }
        return (!module.gpon || set_in("gpon", module.port)) &&
               (!module.xgpon || set_in("xgpon", module.port));
    }

    void sum_up() const
    {
        std::printf("%u set, %u ports skipped; to keep it: diagsh -c write\n", m_set, m_skipped);
    }
    static void sum_up_end() { std::printf("ended; to keep it: diagsh -c write\n"); }

private:
    bool set_in(const std::string &kind, const std::string &port)
    {
        const std::string node = "interface " + kind + " " + port;
        for (const std::string &command : {node, m_command}) {
            const VtyAnswer answer = m_session.run(command);
            if (answer.status != 0 ||
                !answer.text.empty()) { // a threshold that is refused is success with a word
                report_failed(command, answer);
                return false;
            }
        }
        tell(kind + " " + port, m_command);
        ++m_set;
        return true;
    }

    static void tell(const std::string &where, const std::string &what)
    {
        std::printf("%-*s%s\n", static_cast<int>(name_width), where.c_str(), what.c_str());
    }

    VtySession &m_session;
    std::string m_command;
    unsigned m_set = 0;
    unsigned m_skipped = 0;
};

bool is_asked_for(const PortModule &module, const Words &ports)
{
    return ports.empty() || std::ranges::any_of(ports, [&](const std::string &port) {
               return port == module.port || "0/" + port == module.port;
           });
}

} // namespace

int set_port_thresholds(const OltPaths &olt, const Words &words)
{
    const bool off = words.size() >= 2 && words[1] == "off";
    const std::size_t taken = off ? 2 : 3;
    if (words.size() < taken)
        throw Failure(EX_USAGE,
                      "threshold takes the name of a PON alarm, the values that raise and clear it, or off, "
                      "and ports");
    const Words ports(words.begin() + static_cast<std::ptrdiff_t>(taken), words.end());
    VtySession session(olt.vty_socket);
    check_name(session, words[0]);
    if (const auto failed = enter_node(session, "config"))
        return report_failed(failed->command, failed->answer);
    const std::vector<PortModule> modules = parse_port_modules(session.run("show transceiver json").text);
    if (modules.empty())
        throw Failure(EX_UNAVAILABLE, "the daemon tells no PON ports");
    for (const std::string &port : ports)
        if (std::ranges::none_of(modules,
                                 [&](const PortModule &module) { return is_asked_for(module, {port}); }))
            throw Failure(EX_USAGE, "there is no PON port " + port);

    PortThresholds thresholds(session, "alarm-log threshold " + words[0] +
                                           (off ? " disable" : " enable " + words[1] + " " + words[2]));
    for (const PortModule &module : modules)
        if (is_asked_for(module, ports) && !(off ? thresholds.end(module) : thresholds.set(module)))
            return EXIT_FAILURE;
    if (off)
        PortThresholds::sum_up_end();
    else
        thresholds.sum_up();
    return EXIT_SUCCESS;
}

} // namespace diagsh
