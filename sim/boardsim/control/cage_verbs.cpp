// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on cages and the modules in them.
#include <cstring>
#include <functional>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

// gpon and xgpon ports are the same cages: a module serves both.
Cage &cage_of(SimulatedBoard &board, const Words &words)
{
    const std::string &kind = words[0], &port = words[1];
    if (kind != "gpon" && kind != "xgpon" && kind != "pon" && kind != "ge")
        throw std::invalid_argument("\"" + kind + "\" is none of gpon, xgpon, ge");
    const CageKind row = kind == "ge" ? CageKind::ge : CageKind::pon;
    const int count = row == CageKind::ge ? board.description.ge.count : board.description.pon.count;
    Cage *found = board.cages.find(row, static_cast<int>(parse_number(port, 1, count)));
    if (found == nullptr)
        throw std::invalid_argument("no cage " + kind + " " + port);
    return *found;
}

Module &module_of(SimulatedBoard &board, const Words &words)
{
    Cage &found = cage_of(board, words);
    if (!found.module)
        throw std::invalid_argument("cage " + words[0] + " " + words[1] + " is empty");
    return *found.module;
}

std::string plug(SimulatedBoard &board, const Words &words)
{
    Cage &target = cage_of(board, words);
    const bool hidden = words.size() > 3;
    if (hidden && words[3] != "--no-presence")
        throw std::invalid_argument("no option " + words[3]);
    ModuleImage image = image_from_text(words[2]);
    board.log.add_text("- plug " + target.name() + " " + image.name);
    target.plug(std::move(image));
    target.presence = hidden ? Presence::stuck_off : Presence::real;
    return {};
}

std::string unplug(SimulatedBoard &board, const Words &words)
{
    Cage &target = cage_of(board, words);
    const bool keep = words.size() > 2;
    if (keep && words[2] != "--keep-presence")
        throw std::invalid_argument("no option " + words[2]);
    board.log.add_text("- unplug " + target.name());
    target.unplug();
    target.presence = keep ? Presence::stuck_on : Presence::real;
    return {};
}

std::uint8_t to_address(const std::string &word)
{
    return static_cast<std::uint8_t>(parse_number(word, 0, 0x7f));
}

std::string module_get(SimulatedBoard &board, const Words &words)
{
    const Module &target = module_of(board, words);
    std::vector<std::uint8_t> data(static_cast<std::size_t>(parse_number(words[4], 1, 256)));
    if (const int error = target.read(to_address(words[2]), to_byte(words[3]), data); error < 0)
        throw std::invalid_argument(std::string("the module does not answer there: ") +
                                    std::strerror(-error));
    return hex_text(data) + "\n";
}

// Changes the module for good: the value also comes back after a power cycle.
std::string module_set(SimulatedBoard &board, const Words &words)
{
    Module &target = module_of(board, words);
    const std::uint8_t address = to_address(words[2]);
    std::uint8_t reg = to_byte(words[3]);
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

std::string set_dead(SimulatedBoard &board, bool dead, const Words &words)
{
    module_of(board, words).dead = dead;
    return {};
}

} // namespace

std::vector<Verb> cage_verbs(SimulatedBoard &board)
{
    const auto on = std::ref(board);
    return {
        {"plug", 3, 4, "gpon|xgpon|ge PORT FILE... [--no-presence] [--pad]", std::bind_front(plug, on), true},
        {"unplug", 2, 3, "gpon|xgpon|ge PORT [--keep-presence]", std::bind_front(unplug, on), true},
        {"module get", 5, 5, "gpon|xgpon|ge PORT ADDRESS REG LENGTH", std::bind_front(module_get, on)},
        {"module set", 5, 5, "gpon|xgpon|ge PORT ADDRESS REG HEXBYTES", std::bind_front(module_set, on),
         true},
        {"module die", 2, 2, "gpon|xgpon|ge PORT", std::bind_front(set_dead, on, true)},
        {"module revive", 2, 2, "gpon|xgpon|ge PORT", std::bind_front(set_dead, on, false)},
    };
}

} // namespace sim
