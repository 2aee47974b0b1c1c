// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the PHYs and on the devices of the I2C buses.
#include <cstring>
#include <optional>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/boardsim/devices/fru.hpp"
#include "sim/modules/module_image.hpp"
#include "sim/modules/text.hpp"

namespace sim {

PhyChip &Verbs::phy(const Words &words)
{
    PhyChip *chip = board_.phys.find(words[0], static_cast<std::uint32_t>(parse_number(words[1], 0, 31)));
    if (chip == nullptr)
        throw std::invalid_argument("no PHY " + words[1] + " on " + words[0]);
    return *chip;
}

namespace {

std::uint32_t phy_register(const std::string &word)
{
    const long reg = parse_number(word, 0, 0x7fffffff);
    if (reg > 31 && (static_cast<unsigned long>(reg) & phy_clause45) == 0)
        throw std::invalid_argument("\"" + word + "\" is not in 0..31 and no clause 45 number");
    return static_cast<std::uint32_t>(reg);
}

} // namespace

std::string Verbs::phy_get(const Words &words)
{
    return format("0x%04x\n", phy(words).look(phy_register(words[2])));
}

std::string Verbs::phy_set(const Words &words)
{
    phy(words).set(phy_register(words[2]), static_cast<std::uint16_t>(parse_number(words[3], 0, 0xffff)));
    return {};
}

std::string Verbs::phy_link(const Words &words)
{
    if (words[2] != "up" && words[2] != "down")
        throw std::invalid_argument("\"" + words[2] + "\" is neither up nor down");
    phy(words).plug_cable(words[2] == "up");
    return {};
}

namespace {

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

} // namespace

std::string Verbs::fru(const Words &)
{
    const board::Board &description = board_.description;
    std::string text;
    for (const PhyChip &chip : board_.phys.all()) {
        const board::Phy &phy = chip.identity();
        text += format("phy %s %-6u oui 0x%06x, model %u, revision %u, link %s\n", phy.interface.c_str(),
                       phy.address, phy.oui, unsigned{phy.model}, unsigned{phy.revision},
                       chip.link() ? "up" : "down");
    }
    text += bus_line(description.cpld.bus, description.cpld.address, "cpld");
    text += bus_line(description.multiplexer.bus, description.multiplexer.address,
                     format("multiplexer, channels 0x%04x", board_.channel_switch.channels()));
    text += bus_line(description.lm75.bus, description.lm75.address, DeviceText{}(board_.lm75));
    for (const I2cDevice &device : board_.devices.all())
        text += bus_line(device.description.bus, device.description.address,
                         device.description.name + ": " + std::visit(DeviceText{}, device.chip));
    return text;
}

std::string Verbs::fru_get(const Words &words)
{
    const DevicePlace place = device_place(words, board_.description.bus_count);
    std::vector<std::uint8_t> data(static_cast<std::size_t>(parse_number(words[3], 1, 256)));
    check_answer(board_.read_device(place.bus, place.address, place.reg, data));
    return hex_text(data) + "\n";
}

// Byte by byte: the operator knows nothing of pages.
std::string Verbs::fru_set(const Words &words)
{
    DevicePlace place = device_place(words, board_.description.bus_count);
    for (const std::uint8_t byte : parse_bytes(words[3]))
        check_answer(board_.write_device(place.bus, place.address, place.reg++, {&byte, 1}));
    return {};
}

} // namespace sim
