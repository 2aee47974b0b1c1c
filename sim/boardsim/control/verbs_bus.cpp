// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the service bus.
#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/module_image.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::string reached(std::size_t clients)
{
    return format("sent to %zu\n", clients);
}

// A list without entries is shown as no text, which the caller takes for "ok".
std::string listed(std::string lines)
{
    return lines.empty() ? "none\n" : lines;
}

} // namespace

std::string Verbs::bus_send(const Words &words)
{
    return reached(
        service_bus_.send_monitoring(static_cast<std::uint32_t>(parse_number(words[0], 0, 0xffffffff))));
}

std::string Verbs::bus_raw(const Words &words)
{
    return reached(service_bus_.send_bytes(parse_bytes(words[0])));
}

std::string Verbs::bus_clients(const Words &)
{
    return listed(service_bus_.clients());
}

std::string Verbs::bus_log(const Words &)
{
    return listed(service_bus_.log());
}

std::string Verbs::bus_clear(const Words &)
{
    service_bus_.clear_log();
    return {};
}

std::string Verbs::bus_up(const Words &)
{
    service_bus_.set_up(true);
    return {};
}

std::string Verbs::bus_down(const Words &)
{
    service_bus_.set_up(false);
    return {};
}

} // namespace sim
