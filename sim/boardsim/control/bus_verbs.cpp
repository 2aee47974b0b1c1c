// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the faults of transactions, and on the service bus.
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::string fault_list(const Faults &faults)
{
    std::string text;
    for (const Fault &fault : faults.all())
        text += fault.text() + "\n";
    return text.empty() ? "no faults\n" : text;
}

std::string reached(std::size_t clients)
{
    return format("sent to %zu\n", clients);
}

// A list without entries is no text, which would be shown as "ok".
std::string listed(const std::string &lines)
{
    return lines.empty() ? "none\n" : lines;
}

} // namespace

std::vector<Verb> fault_verbs(Faults &faults)
{
    return {
        {"fault add", 1, any_number, "OP|any [bus= addr= reg= ch= thread= nth= count= errno= delay=]",
         [&faults](const Words &words) { return format("fault %u\n", faults.add(parse_fault(words))); }},
        {"fault list", 0, 0, "", [&faults](const Words &) { return fault_list(faults); }},
        {"fault delete", 1, 1, "ID",
         [&faults](const Words &words) {
             if (!faults.remove(static_cast<unsigned>(parse_number(words[0], 1, 0x7fffffff))))
                 throw std::invalid_argument("no fault " + words[0]);
             return std::string();
         }},
        {"fault clear", 0, 0, "",
         [&faults](const Words &) {
             faults.clear();
             return std::string();
         }},
    };
}

std::vector<Verb> service_bus_verbs(ServiceBus &bus)
{
    const auto switch_bus = [&bus](bool up) {
        return [&bus, up](const Words &) {
            bus.set_up(up);
            return std::string();
        };
    };
    return {
        {"bus send", 1, 1, "VALUE",
         [&bus](const Words &words) {
             const auto value = static_cast<std::uint32_t>(parse_number(words[0], 0, 0xffffffff));
             return reached(bus.send_monitoring(value));
         }},
        {"bus raw", 1, 1, "HEXBYTES",
         [&bus](const Words &words) { return reached(bus.send_bytes(parse_bytes(words[0]))); }},
        {"bus clients", 0, 0, "", [&bus](const Words &) { return listed(bus.clients()); }},
        {"bus log", 0, 0, "", [&bus](const Words &) { return listed(bus.log()); }},
        {"bus clear", 0, 0, "",
         [&bus](const Words &) {
             bus.clear_log();
             return std::string();
         }},
        {"bus up", 0, 0, "", switch_bus(true)},
        {"bus down", 0, 0, "", switch_bus(false)},
    };
}

} // namespace sim
