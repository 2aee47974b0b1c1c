// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on cages and modules, and the overview.
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::uint8_t to_address(const std::string &word)
{
    return static_cast<std::uint8_t>(parse_number(word, 0, 0x7f));
}

std::uint8_t to_register(const std::string &word)
{
    return static_cast<std::uint8_t>(parse_number(word, 0, 255));
}

} // namespace

// gpon and xgpon ports are the same cages: a module serves both.
Cage &Verbs::cage(const std::string &kind, const std::string &port)
{
    if (kind != "gpon" && kind != "xgpon" && kind != "pon" && kind != "ge")
        throw std::invalid_argument("\"" + kind + "\" is none of gpon, xgpon, ge");
    const CageKind row = kind == "ge" ? CageKind::ge : CageKind::pon;
    const int count = row == CageKind::ge ? board_.description.ge.count : board_.description.pon.count;
    Cage *found = board_.cages.find(row, static_cast<int>(parse_number(port, 1, count)));
    if (found == nullptr)
        throw std::invalid_argument("no cage " + kind + " " + port);
    return *found;
}

Module &Verbs::module(const std::string &kind, const std::string &port)
{
    Cage &found = cage(kind, port);
    if (!found.module)
        throw std::invalid_argument("cage " + kind + " " + port + " is empty");
    return *found.module;
}

std::string Verbs::plug(const Words &words)
{
    Cage &target = cage(words[0], words[1]);
    const bool hidden = words.size() > 3;
    if (hidden && words[3] != "--no-presence")
        throw std::invalid_argument("no option " + words[3]);
    ModuleImage image = image_from_text(words[2]);
    board_.log.add_text("- plug " + target.name() + " " + image.name);
    target.plug(std::move(image));
    target.presence = hidden ? Presence::stuck_off : Presence::real;
    return {};
}

std::string Verbs::unplug(const Words &words)
{
    Cage &target = cage(words[0], words[1]);
    const bool keep = words.size() > 2;
    if (keep && words[2] != "--keep-presence")
        throw std::invalid_argument("no option " + words[2]);
    board_.log.add_text("- unplug " + target.name());
    target.unplug();
    target.presence = keep ? Presence::stuck_on : Presence::real;
    return {};
}

std::string Verbs::module_get(const Words &words)
{
    const Module &target = module(words[0], words[1]);
    std::vector<std::uint8_t> data(static_cast<std::size_t>(parse_number(words[4], 1, 256)));
    if (const int error = target.read(to_address(words[2]), to_register(words[3]), data); error < 0)
        throw std::invalid_argument(std::string("the module does not answer there: ") +
                                    std::strerror(-error));
    return hex_text(data) + "\n";
}

// Changes the module for good: the value also comes back after a power cycle.
std::string Verbs::module_set(const Words &words)
{
    Module &target = module(words[0], words[1]);
    const std::uint8_t address = to_address(words[2]);
    std::uint8_t reg = to_register(words[3]);
    const auto stored = target.stored.devices.find(address);
    if (stored == target.stored.devices.end())
        throw std::invalid_argument("the module has nothing at address " + words[2]);
    for (const std::uint8_t value : parse_bytes(words[4])) {
        stored->second.write(reg, value);
        target.live.devices.at(address).write(reg, value);
        ++reg;
    }
    return {};
}

std::string Verbs::module_die(const Words &words)
{
    module(words[0], words[1]).dead = true;
    return {};
}

std::string Verbs::module_revive(const Words &words)
{
    module(words[0], words[1]).dead = false;
    return {};
}

std::string Verbs::show(const Words &)
{
    const board::Board &description = board_.description;
    Cpld &cpld = board_.cpld;
    const std::uint8_t supplies = cpld.read(description.cpld.power_register);
    std::string text =
        format("board        %s, %s\n", description.name.c_str(), drifting_ ? "drifting" : "pinned");
    text += format("temperature  %.1f C (LM75 0x%04x)\n", board_.lm75.celsius(), unsigned{board_.lm75.raw()});
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
    text += format("button       %s\n", panel_.button_pressed() ? "pressed" : "released");
    text += format("handles      %zu open, faults %zu\n", bus_.handles().size(), board_.faults.all().size());
    for (const Cage &cage : board_.cages.all()) {
        text +=
            format("%-12s %s", cage.name().c_str(), cage.module ? cage.module->stored.name.c_str() : "empty");
        if (cage.module && !cage.powered)
            text += ", no power";
        if (cage.module && cage.module->dead)
            text += ", dead";
        if (cage.presence != Presence::real)
            text += cage.presence == Presence::stuck_on ? ", presence stuck at 1" : ", presence stuck at 0";
        text += "\n";
    }
    return text;
}

} // namespace sim
