// SPDX-License-Identifier: GPL-2.0-or-later
// Comparing the parts of a description with each other and with what the daemon takes for granted.
#include "platform/description/board_check.hpp"

#include <algorithm>
#include <set>
#include <utility>

namespace board {

namespace {

using Lines = std::vector<std::string>;

constexpr std::uint32_t in_service = 6; // word108
constexpr std::uint32_t pon_capability = 1U << 3;
constexpr std::uint32_t sfp_capability = 1U << 4;

// What the daemon has in its code, whatever the description says.
constexpr int fans_bus = 0;
constexpr int sensor_bus = 2;
constexpr int sensor_address = 0x48;
constexpr int pon_register = 11;
constexpr int ge_register = 12;
constexpr int pon_channel = 0; // of the first cage
constexpr int ge_channel = 8;
constexpr const char *phy_interface = "aux";
constexpr const char *gpio_device = "/dev/tq_gpio_cfg";
constexpr const char *button_device = "/dev/uio0";
constexpr unsigned button_offset = 8;
constexpr unsigned button_bit = 21;

// Bytes of the port record that the interface table is made of.
constexpr std::size_t gpon_ports = 10;
constexpr std::size_t xgpon_ports = 11;

std::string text(unsigned value)
{
    return std::to_string(value);
}

std::string element(const std::string &list, std::size_t index)
{
    return list + "[" + std::to_string(index) + "]";
}

std::string cages_text(int count)
{
    return count == 1 ? "1 cage" : std::to_string(count) + " cages";
}

void check_fixed(Lines &lines, bool fits, const std::string &field, const std::string &wanted)
{
    if (!fits)
        lines.push_back(field + ": the daemon always uses " + wanted);
}

void check_places(Lines &lines, const Board &board)
{
    for (const auto &[field, bus] :
         {std::pair{"cpld.bus", board.cpld.bus}, std::pair{"multiplexer.bus", board.multiplexer.bus},
          std::pair{"lm75.bus", board.lm75.bus}})
        if (bus >= board.bus_count)
            lines.push_back(std::string(field) + ": " + std::to_string(bus) + ", but i2c_buses is " +
                            std::to_string(board.bus_count) + ": the buses are 0 to " +
                            std::to_string(board.bus_count - 1));
    check_fixed(lines, board.cpld.bus == fans_bus, "cpld.bus", "bus 0 for the fans");
    check_fixed(lines, board.lm75.bus == sensor_bus, "lm75.bus", "bus 2");
    check_fixed(lines, board.lm75.address == sensor_address, "lm75.address", "0x48");
    check_fixed(lines, board.gpio_device == gpio_device, "gpio_device", gpio_device);
    check_fixed(lines, board.button.device == button_device, "button.device", button_device);
    check_fixed(lines, board.button.offset == button_offset, "button.offset", text(button_offset));
    check_fixed(lines, board.button.bit == button_bit, "button.bit", text(button_bit));
    for (std::size_t i = 0; i < board.phys.size(); ++i)
        check_fixed(lines, board.phys[i].interface == phy_interface, element("phys", i) + ".interface",
                    phy_interface);
}

void check_cages(Lines &lines, const Board &board)
{
    check_fixed(lines, board.pon.count == 0 || board.pon.presence_register == pon_register,
                "pon_cages.presence_register", "register 11");
    check_fixed(lines, board.ge.count == 0 || board.ge.presence_register == ge_register,
                "ge_cages.presence_register", "register 12");
    check_fixed(lines, board.pon.count == 0 || board.pon.first_channel == pon_channel,
                "pon_cages.first_channel", "channel 0 for PON port 1");
    check_fixed(lines, board.ge.count == 0 || board.ge.first_channel == ge_channel, "ge_cages.first_channel",
                "channel 8 for Ethernet port 1");
    const int first = std::max(board.pon.first_channel, board.ge.first_channel);
    const int end =
        std::min(board.pon.first_channel + board.pon.count, board.ge.first_channel + board.ge.count);
    if (first < end)
        lines.push_back("ge_cages.first_channel: channel " + std::to_string(first) +
                        " of the multiplexer leads to a PON cage, too");
}

// The ports of one list of a record, against the cages that they stand for.
void check_ports(Lines &lines, const std::vector<Port> &ports, const std::string &list, const char *cages,
                 int count)
{
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const Port &port = ports[i];
        const std::string field = element(list, i);
        if (port.number == 0)
            lines.push_back(field + ".port: 0, but ports are counted from 1");
        else if (port.number > static_cast<unsigned>(count) && port.in_use)
            lines.push_back(field + ".port: " + text(port.number) + ", but " + cages + " has " +
                            cages_text(count) + ": the port is listed and never has a module");
        if (port.slot != 0)
            lines.push_back(field + ".slot: " + text(port.slot) + ", but the cages are those of slot 0");
    }
}

// Cages 1 to `count` that are in none of the lists.
void check_listed(Lines &lines, const std::set<unsigned> &listed, const char *cages, int count,
                  const char *lists)
{
    for (unsigned cage = 1; cage <= static_cast<unsigned>(count); ++cage)
        if (!listed.contains(cage))
            lines.push_back(std::string(cages) + ".count: " + std::to_string(count) + ", but port " +
                            text(cage) + " is in no " + lists +
                            " of the first record in service: no display lists that cage");
}

// Where one row of cages is looked up in the records.
struct Row {
    std::uint32_t capability;
    const char *bit; // of it
    const char *cages;
    const char *lists;
    int count;
    std::vector<std::pair<const char *, std::vector<Port> Record::*>> tables;
};

// Displays take the first record in service with the capability, and no other.
void check_row(Lines &lines, const Board &board, const Row &row)
{
    const Record *used = nullptr;
    std::set<unsigned> listed;
    for (std::size_t i = 0; i < board.records.size(); ++i) {
        const Record &record = board.records[i];
        const std::string name = element("records", i);
        bool has_ports = false;
        for (const auto &[table, member] : row.tables) {
            check_ports(lines, record.*member, name + "." + table, row.cages, row.count);
            has_ports = has_ports || !(record.*member).empty();
        }
        const bool capable = (record.capability & row.capability) != 0;
        if (has_ports && !capable)
            lines.push_back(name + ".capability: " + row.bit + " is not set, so nobody looks at " +
                            row.lists);
        if (!capable || record.word108 != in_service)
            continue;
        const bool first = used == nullptr || record.index < used->index;
        if (used != nullptr)
            lines.push_back(name + ".index: another record in service has such ports, too (" + row.lists +
                            "); displays list those of the lowest index only");
        if (!first)
            continue;
        used = &record;
        listed.clear();
        for (const auto &[table, member] : row.tables)
            for (const Port &port : record.*member)
                if (port.in_use && port.slot == 0)
                    listed.insert(port.number);
    }
    check_listed(lines, listed, row.cages, row.count, row.lists);
}

void check_port_record(Lines &lines, const Board &board)
{
    const unsigned ports = std::max(board.port_record[gpon_ports], board.port_record[xgpon_ports]);
    if (ports != static_cast<unsigned>(board.pon.count))
        lines.push_back("port_record[10], [11]: the higher one is " + text(ports) + ", but pon_cages has " +
                        cages_text(board.pon.count) + ": so many ports have their thresholds saved");
}

} // namespace

std::vector<std::string> inconsistencies(const Board &board)
{
    Lines lines;
    check_places(lines, board);
    check_cages(lines, board);
    check_row(lines, board,
              {pon_capability,
               "bit 3 (0x08)",
               "pon_cages",
               "pon1 or pon2",
               board.pon.count,
               {{"pon1", &Record::pon1}, {"pon2", &Record::pon2}}});
    check_row(lines, board,
              {sfp_capability, "bit 4 (0x10)", "ge_cages", "sfp", board.ge.count, {{"sfp", &Record::sfp}}});
    check_port_record(lines, board);
    return lines;
}

} // namespace board
