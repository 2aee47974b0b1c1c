// SPDX-License-Identifier: GPL-2.0-or-later
// Cages and the modules in them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/description/board_description.hpp"
#include "sim/modules/module_image.hpp"

namespace sim {

enum class CageKind { pon, ge };

// What the presence bit shows: the truth, or a stuck line for fault tests.
enum class Presence { real, stuck_off, stuck_on };

class Module {
public:
    explicit Module(ModuleImage image) : stored(image), live(std::move(image)) {}

    // One transaction, 0 or a negative errno value; bytes wrap within the 256 of the device.
    int read(std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data) const;
    int write(std::uint8_t address, std::uint8_t reg, std::span<const std::uint8_t> data);
    // Power has come back: pages and soft controls are what they were when it was plugged.
    void power_up() { live = stored; }

    ModuleImage stored; // as plugged, or as last set by the operator
    ModuleImage live;
    bool dead = false; // powered, but its two-wire interface no longer answers
};

struct Cage {
    CageKind kind = CageKind::pon;
    int port = 0; // 1-based
    std::optional<Module> module;
    bool powered = false;
    Presence presence = Presence::real;

    // The bit of the presence register.
    [[nodiscard]] bool visible() const;
    // The module, if it answers on the bus.
    Module *answering(bool gated);
    // Switches the cage's supply; an empty cage stays off.
    void set_power(bool on);
    void plug(ModuleImage image);
    void unplug();
    [[nodiscard]] std::string name() const;
};

// All cages of a board, by channel and by kind.
class Cages {
public:
    explicit Cages(const board::Board &board);

    [[nodiscard]] std::vector<Cage> &all() { return cages_; }
    Cage *find(CageKind kind, int port);
    Cage *on_channel(int channel);

private:
    const board::Board &board_;
    std::vector<Cage> cages_;
};

} // namespace sim
