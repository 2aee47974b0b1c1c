// SPDX-License-Identifier: GPL-2.0-or-later
// All verbs in their order, and those that look at several parts.
#include "sim/boardsim/control/verbs.hpp"

#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::string cage_line(const Cage &cage)
{
    std::string text =
        format("%-12s %s", cage.name().c_str(), cage.module ? cage.module->stored.name.c_str() : "empty");
    if (cage.module && !cage.powered)
        text += ", no power";
    if (cage.module && cage.module->dead)
        text += ", dead";
    if (cage.presence != Presence::real)
        text += cage.presence == Presence::stuck_on ? ", presence stuck at 1" : ", presence stuck at 0";
    return text + "\n";
}

std::string show(const BoardParts &parts)
{
    SimulatedBoard &board = parts.board;
    const board::Board &description = board.description;
    Cpld &cpld = board.cpld;
    const std::uint8_t supplies = cpld.read(description.cpld.power_register);
    std::string text =
        format("board        %s, %s\n", description.name.c_str(), parts.drift.runs() ? "drifting" : "pinned");
    text += format("temperature  %.1f C (LM75 0x%04x)\n", board.lm75.celsius(), unsigned{board.lm75.raw()});
    text +=
        format("supplies     1 %s, 2 %s%s (0x%02x)\n", (supplies & 1) != 0 ? "good" : "bad",
               (supplies & 2) != 0 ? "good" : "bad", (supplies & 4) != 0 ? ", board too hot" : "", supplies);
    text += format("logic        version 0x%02x, device type 0x%02x, monitors %s\n",
                   cpld.read(description.cpld.logic_version_register),
                   cpld.read(description.cpld.device_type_register),
                   cpld.read(description.cpld.operation_register) != 0 ? "operate" : "off");
    text += format("fan          power %s (register 4), speed %u (register 5)\n",
                   cpld.read(4) != 0 ? "on" : "off", cpld.read(5));
    text += format("leds         usb 0x%02x, pon 0x%02x, system 0x%02x (registers 6, 10, 13)\n", cpld.read(6),
                   cpld.read(10), cpld.read(13));
    text +=
        format("pon          tx 0x%02x (register 8), power and presence 0x%02x (register %u)\n", cpld.read(8),
               cpld.read(description.pon.presence_register), description.pon.presence_register);
    text += format("ge           power and presence 0x%02x (register %u)\n",
                   cpld.read(description.ge.presence_register), description.ge.presence_register);
    text += format("button       %s\n", parts.panel.button_pressed() ? "pressed" : "released");
    text +=
        format("handles      %zu open, faults %zu\n", parts.bus.handles().size(), board.faults.all().size());
    for (const Cage &cage : board.cages.all())
        text += cage_line(cage);
    return text;
}

std::string channel_show(const BusService &bus)
{
    std::string text;
    for (const std::string &line : bus.handles())
        text += line + "\n";
    return text.empty() ? "no open handles\n" : text;
}

} // namespace

void add_verbs(VerbTable &table, const BoardParts &parts)
{
    table.add({
        {"show", 0, 0, "", [parts](const Words &) { return show(parts); }},
        {"help", 0, 0, "",
         [&table](const Words &) { return table.help() + "module make FILE.json [OPTIONS]\ncheck FILE\n"; }},
    });
    table.add(register_verbs(parts.board));
    table.add(temperature_verbs(parts.board, parts.heater));
    table.add(cage_verbs(parts.board));
    table.add({{"channel show", 0, 0, "", [&bus = parts.bus](const Words &) { return channel_show(bus); }}});
    table.add(panel_verbs(parts.panel, parts.time));
    table.add(fault_verbs(parts.board.faults));
    table.add(device_verbs(parts.board));
    table.add(service_bus_verbs(parts.service_bus));
    table.add(time_verbs(parts.time, parts.drift));
    table.add(log_verbs(parts.loop, parts.board.log));
}

} // namespace sim
