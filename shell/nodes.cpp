// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's nodes.
#include "shell/nodes.hpp"

#include "shell/enquiries.hpp"
#include "shell/failure.hpp"

#include <algorithm>
#include <array>

namespace diagsh {

namespace {

struct Node {
    std::string_view name;
    std::string_view option;
    std::size_t steps; // from view
};
// In the order in which they are told.
constexpr std::array<Node, 7> nodes{{
    {"config", "config", 2},
    {"diagnose", "diagnose", 3},
    {"gpon", "interface gpon 0/1", 3},
    {"xgpon", "interface xgpon 0/1", 3},
    {"enable", "enable", 1},
    {"view", "view", 0},
    {"vty", "line vty", 3},
}};

const Node *find_node(std::string_view name)
{
    const auto *const node = std::ranges::find(nodes, name, &Node::name);
    return node == nodes.end() ? nullptr : node;
}

std::vector<const Node *> nodes_with(VtySession &session, std::string_view command)
{
    // What stands behind a "|" is not part of the command.
    const std::vector<std::string> names = ask_nodes(session, command.substr(0, command.find('|')));
    std::vector<const Node *> known;
    for (const Node &node : nodes)
        if (std::ranges::find(names, node.name) != names.end())
            known.push_back(&node);
    return known;
}

std::string joined(const std::vector<std::string> &words, std::string_view between)
{
    std::string text;
    for (const std::string &word : words)
        text.append(text.empty() ? "" : between).append(word);
    return text;
}

} // namespace

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

std::optional<FailedStep> enter_node(VtySession &session, const std::string &node)
{
    for (const std::string &step : way_to_node(node))
        if (VtyAnswer answer = session.run(step); answer.status != 0)
            return FailedStep{step, std::move(answer)};
    return std::nullopt;
}

std::string option_for_node(std::string_view name)
{
    const Node *node = find_node(name);
    return std::string(node ? node->option : "");
}

std::vector<std::string> steps_between(std::string_view current, std::string_view name)
{
    const Node *to = find_node(name);
    if (!to)
        return {};
    const Node *from = find_node(current);
    const std::size_t taken =
        std::min<std::size_t>(from ? from->steps : 3, 2); // deeper nodes take configuration's
    if (to->steps < taken)
        return {to->name == "enable" ? "end" : "exit"};
    std::vector<std::string> way = way_to_node(std::string(to->option));
    way.erase(way.begin(), way.begin() + static_cast<std::ptrdiff_t>(std::min(taken, way.size())));
    return way;
}

std::string told_in_session(VtySession &session, std::string_view current, std::string_view command)
{
    std::vector<std::string> ways;
    std::size_t fewest = 0;
    for (const Node *node : nodes_with(session, command)) {
        const std::vector<std::string> steps = steps_between(current, node->name);
        if (steps.empty() || (!ways.empty() && steps.size() > fewest))
            continue;
        if (steps.size() < fewest)
            ways.clear();
        fewest = steps.size();
        ways.push_back(std::string(node->name) + " (" + joined(steps, ", ") + ")");
    }
    return ways.empty() ? "" : "It is known in " + joined(ways, " and ") + ".\n";
}

std::string told_for_option(VtySession &session, std::string_view command)
{
    std::vector<std::string> ways;
    std::size_t fewest = 0;
    for (const Node *node : nodes_with(session, command)) {
        if (!ways.empty() && node->steps > fewest)
            continue; // those of ports take much of configuration, too
        fewest = node->steps;
        const bool quoted = node->option.find(' ') != std::string_view::npos;
        ways.push_back(std::string(quoted ? "-n \"" : "-n ").append(node->option).append(quoted ? "\"" : ""));
    }
    return ways.empty() ? "" : "diagsh: it is known with " + joined(ways, " or ") + "\n";
}

} // namespace diagsh
