// SPDX-License-Identifier: GPL-2.0-or-later
// Displays of what optical modules measure: of the session's PON port, of one port, and as a table.
// Failure policy: a CPLD that cannot be opened makes the command a warning, without a word, and ends a table;
// a module that does not answer shows what its zeroes come to.
#include "diagd/transceiver/optical_cmd.hpp"

#include "diagd/board/interface.hpp"
#include "diagd/core/text.hpp"
#include "diagd/transceiver/memory/optical_readout.hpp"

#include <array>
#include <cstdio>
#include <vector>

using namespace diagd;

namespace {

// Words of a command behind "show optical transceiver interface".
constexpr int kind_at = 4;
constexpr int position_at = 5;

// A line of a display: the value stands between two texts.
struct ValueLine {
    const char *before;
    float OpticalValues::*value;
    const char *behind;
};
using ValueLines = std::array<ValueLine, 5>;

constexpr ValueLines pon_lines{{
    {"Tempperature: ", &OpticalValues::temperature_c, " C"},
    {"Voltage: ", &OpticalValues::voltage_v, " V"},
    {"TxBias: ", &OpticalValues::bias_ma, " mA"},
    {"TxPower: ", &OpticalValues::tx_power_dbm, " dBm"},
    {"RxPower: ", &OpticalValues::rx_power_dbm, " dBm"},
}};
constexpr ValueLines port_lines{{
    {"Tempperature   : ", &OpticalValues::temperature_c, ".C"},
    {"Voltage        : ", &OpticalValues::voltage_v, "V"},
    {"Bias Current   : ", &OpticalValues::bias_ma, "mA"},
    {"Transmit Power : ", &OpticalValues::tx_power_dbm, "dBm"},
    {"Receiver Power : ", &OpticalValues::rx_power_dbm, "dBm"},
}};

// Numbers are made into text here: libfrr's own formatting of a negative one loses what stands behind it.
std::array<char, 64> value_text(float value)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f", value);
    return text;
}

// `generation` stands before each line.
void print_lines(struct vty *vty, const char *generation, const ValueLines &lines,
                 const OpticalValues &values)
{
    for (const ValueLine &line : lines)
        vty_out(vty, "%s%s%s%s%s", generation, line.before, value_text(values.*line.value).data(),
                line.behind, line_end);
}

void print_heading(struct vty *vty)
{
    vty_out(
        vty,
        "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    Optical Tx Power(dBm)  "
        "         Optical Rx Power(dBm)%s",
        line_end);
    vty_out(vty,
            "----------    ---------------------    ---------------    ------------    "
            "----------------------------    ---------------------------- %s",
            line_end);
}

void print_row(struct vty *vty, const char *name, const OpticalValues &values)
{
    std::array<char, 512> row{}; // the widest numbers take less than half
    std::snprintf(row.data(), row.size(), "%-13s %-24.3f %-18.3f %-15.3f %-31.3f %-27.3f", name,
                  values.temperature_c, values.voltage_v, values.bias_ma, values.tx_power_dbm,
                  values.rx_power_dbm);
    vty_out(vty, "%s%s", row.data(), line_end);
}

// A module that has an XG-PON path has a second row, without a name.
void print_rows(struct vty *vty, const Interface &interface, const OpticalReadout &readout)
{
    print_row(vty, interface_name(interface).c_str(), readout.plain);
    if (readout.xg != OpticalValues{})
        print_row(vty, "", readout.xg);
}

struct PortReading {
    int result;                            // of the command: CMD_WARNING when the CPLD cannot be opened
    std::optional<OpticalReadout> readout; // of the module, if there is one
};

// Reads one port in a session of its own; `reason` is the literal that names the operation for the
// privilege raise.
PortReading read_port(const char *reason, PortKind kind, int port, SelectFailure on_failure)
{
    const BoardSession board{reason, SessionPolicy::lower_then_release};
    if (!board)
        return {CMD_WARNING, {}};
    return {CMD_SUCCESS, read_optics(board, kind, port, on_failure)};
}

} // namespace

// Shows both generations whatever the module has; without a module, zeroes.
DEFUN(show_pon_transceiver_optical, show_pon_transceiver_optical_cmd, "show pon optical transceiver",
      SHOW_STR "PON information\n"
               "Show optical information.\n"
               "Show optical transceiver information.\n")
{
    // Both generations of a port share its cage.
    const auto [result, found] =
        read_port("show_pon_transceiver_optical", PortKind::gpon, vty->port, SelectFailure::read_on);
    if (result != CMD_SUCCESS)
        return result;
    const OpticalReadout readout = found.value_or(OpticalReadout{});
    print_lines(vty, "", pon_lines, readout.plain);
    print_lines(vty, "XG ", pon_lines, readout.xg);
    return CMD_SUCCESS;
}

#define SHOW_OPTICAL_INTERFACE_STR                                                                           \
    SHOW_STR "Show optical information.\n"                                                                   \
             "Show optical transceiver information.\n"                                                       \
             "Show interface optical transceiver information.\n"

DEFUN(show_transceiver_optical, show_transceiver_optical_cmd,
      "show optical transceiver interface <gigabitEthernet|gpon> <S/P>",
      SHOW_OPTICAL_INTERFACE_STR "GigabitEthernet IEEE 802.3z\n"
                                 "GPON information\n" SLOT_PORT_STR)
{
    const auto interface = find_interface(vty, argv[kind_at]->text, argv[position_at]->arg);
    if (!interface)
        return CMD_SUCCESS;
    const auto [result, readout] =
        read_port("show_transceiver_optical", interface->kind, interface->port, SelectFailure::no_module);
    if (!readout)
        return result;
    print_lines(vty, "", port_lines, readout->plain);
    if (interface->kind == PortKind::gpon) {
        vty_out(vty, "%s", line_end);
        print_lines(vty, "XG ", port_lines, readout->xg);
    }
    return CMD_SUCCESS;
}

ALIAS(show_transceiver_optical, show_xgpon_transceiver_optical_cmd,
      "show optical transceiver interface xgpon <S/P>",
      SHOW_OPTICAL_INTERFACE_STR "XGPON information\n" SLOT_PORT_STR)

// One port as a table, too.  Each row takes the board for itself, so that others get at it in between.
DEFUN(show_port_laser, show_port_laser_cmd,
      "show optical transceiver [interface <gigabitEthernet|gpon> <S/P>]",
      SHOW_OPTICAL_INTERFACE_STR "GigabitEthernet IEEE 802.3z\n"
                                 "GPON information\n" SLOT_PORT_STR)
{
    std::vector<Interface> interfaces;
    if (argc > position_at) {
        const auto interface = find_interface(vty, argv[kind_at]->text, argv[position_at]->arg);
        if (!interface)
            return CMD_SUCCESS;
        interfaces = {*interface};
    } else {
        interfaces = list_interfaces();
    }

    print_heading(vty);
    for (const Interface &interface : interfaces) {
        const auto [result, readout] =
            read_port("show_port_laser", interface.kind, interface.port, SelectFailure::no_module);
        if (result != CMD_SUCCESS)
            return result;
        if (readout)
            print_rows(vty, interface, *readout);
    }
    return CMD_SUCCESS;
}

ALIAS(show_port_laser, show_xgpon_laser_cmd, "show optical transceiver interface xgpon <S/P>",
      SHOW_OPTICAL_INTERFACE_STR "XGPON information\n" SLOT_PORT_STR)
