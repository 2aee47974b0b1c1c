// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the PHYs and on the devices of the I2C buses.
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/boardsim/devices/fru.hpp"
#include "sim/modules/module_image.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

PhyChip &phy_of(SimulatedBoard &board, const Words &words)
{
    PhyChip *chip = board.phys.find(words[0], static_cast<std::uint32_t>(parse_number(words[1], 0, 31)));
    if (chip == nullptr)
        throw std::invalid_argument("no PHY " + words[1] + " on " + words[0]);
    return *chip;
}

std::uint32_t phy_register(const std::string &word)
{
    const long reg = parse_number(word, 0, 0x7fffffff);
    if (reg > 31 && (static_cast<unsigned long>(reg) & phy_clause45) == 0)
        throw std::invalid_argument("\"" + word + "\" is not in 0..31 and no clause 45 number");
    return static_cast<std::uint32_t>(reg);
}

std::string phy_get(SimulatedBoard &board, const Words &words)
{
    return format("0x%04x\n", phy_of(board, words).look(phy_register(words[2])));
}

std::string phy_set(SimulatedBoard &board, const Words &words)
{
    phy_of(board, words)
        .set(phy_register(words[2]), static_cast<std::uint16_t>(parse_number(words[3], 0, 0xffff)));
    return {};
}

std::string phy_link(SimulatedBoard &board, const Words &words)
{
    if (words[2] != "up" && words[2] != "down")
        throw std::invalid_argument("\"" + words[2] + "\" is neither up nor down");
    phy_of(board, words).plug_cable(words[2] == "up");
    return {};
}

struct DeviceText {
    std::string operator()(const Lm75 &sensor) const
    {
        return format("lm75, %.1f C (0x%04x)", sensor.celsius(), unsigned{sensor.raw()});
    }
    std::string operator()(const Eeprom &eeprom) const
    {
        const std::optional<board::Fru> fru = decode_fru(eeprom.memory());
        if (!fru)
            return "eeprom without inventory";
        return "eeprom, " + fru->manufacturer + " " + fru->product + ", serial " + fru->serial_number +
               ", part " + fru->part_number +
               format(", made %d-%02u-%02u", static_cast<int>(fru->made.year()),
                      static_cast<unsigned>(fru->made.month()), static_cast<unsigned>(fru->made.day()));
    }
};

std::string bus_line(int bus, unsigned address, const std::string &what)
{
    return format("i2c %d 0x%02x   ", bus, address) + what + "\n";
}

struct DevicePlace {
    int bus;
    std::uint8_t address;
    std::uint8_t reg;
};

DevicePlace device_place(const std::vector<std::string> &words, int bus_count)
{
    return {static_cast<int>(parse_number(words[0], 0, bus_count - 1)),
            static_cast<std::uint8_t>(parse_number(words[1], 0, 0x7f)),
            static_cast<std::uint8_t>(parse_number(words[2], 0, 255))};
}

void check_answer(int result)
{
    if (result < 0)
        throw std::invalid_argument(std::string("no device answers there: ") + std::strerror(-result));
}

std::string show_devices(SimulatedBoard &board, const Words &)
{
    const board::Board &description = board.description;
    std::string text;
    for (const PhyChip &chip : board.phys.all()) {
        const board::Phy &phy = chip.identity();
        text += format("phy %s %-6u oui 0x%06x, model %u, revision %u, link %s\n", phy.interface.c_str(),
                       phy.address, phy.oui, unsigned{phy.model}, unsigned{phy.revision},
                       chip.link() ? "up" : "down");
    }
    text += bus_line(description.cpld.bus, description.cpld.address, "cpld");
    text += bus_line(description.multiplexer.bus, description.multiplexer.address,
                     format("multiplexer, channels 0x%04x", board.channel_switch.channels()));
    text += bus_line(description.lm75.bus, description.lm75.address, DeviceText{}(board.lm75));
    for (const I2cDevice &device : board.devices.all())
        text += bus_line(device.description.bus, device.description.address,
                         device.description.name + ": " + std::visit(DeviceText{}, device.chip));
    return text;
}

std::string fru_get(SimulatedBoard &board, const Words &words)
{
    const DevicePlace place = device_place(words, board.description.bus_count);
    std::vector<std::uint8_t> data(static_cast<std::size_t>(parse_number(words[3], 1, 256)));
    check_answer(board.read_device(place.bus, place.address, place.reg, data));
    return hex_text(data) + "\n";
}

// Byte by byte: the operator knows nothing of pages.
std::string fru_set(SimulatedBoard &board, const Words &words)
{
    DevicePlace place = device_place(words, board.description.bus_count);
    for (const std::uint8_t byte : parse_bytes(words[3]))
        check_answer(board.write_device(place.bus, place.address, place.reg++, {&byte, 1}));
    return {};
}

} // namespace

std::vector<Verb> device_verbs(SimulatedBoard &board)
{
    const auto on = std::ref(board);
    return {
        {"fru get", 4, 4, "BUS ADDRESS REG LENGTH", std::bind_front(fru_get, on)},
        {"fru set", 4, 4, "BUS ADDRESS REG HEXBYTES", std::bind_front(fru_set, on), true},
        {"fru", 0, 0, "", std::bind_front(show_devices, on)},
        {"phy get", 3, 3, "INTERFACE PHY REG", std::bind_front(phy_get, on)},
        {"phy set", 4, 4, "INTERFACE PHY REG VALUE", std::bind_front(phy_set, on)},
        {"phy link", 3, 3, "INTERFACE PHY up|down", std::bind_front(phy_link, on)},
    };
}

} // namespace sim
