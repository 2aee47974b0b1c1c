// SPDX-License-Identifier: GPL-2.0-or-later
// The RSSI/TXDIS pin of the interface whose node the operator is in, and the debug switch.  All of them
// succeed whatever the module does.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/rssi_txdis.hpp"

#include <string_view>

using namespace diagd;

static PortKind interface_kind(const struct vty *vty)
{
    return static_cast<PortKind>(vty->intf_kind);
}

DEFUN(transceiver_rssi_txdis, transceiver_rssi_txdis_cmd, "transceiver rssi-txdis <rssi|txdis>",
      "Transceiver.\n"
      "RSSI and TXDIS information.\n"
      "RSSI.\n"
      "TXDIS.\n")
{
    const bool rssi = std::string_view{argv[2]->text} == "rssi";
    select_shared_pin(interface_kind(vty), vty->port, rssi ? SharedPin::rssi : SharedPin::txdis);
    return CMD_SUCCESS;
}

DEFUN(show_transceiver_rssi_txdis, show_transceiver_rssi_txdis_cmd, "show transceiver rssi-txdis",
      SHOW_STR "Transceiver.\n"
               "RSSI and TXDIS information.\n")
{
    if (const auto control = read_pin_control(interface_kind(vty), vty->port))
        vty_out(vty, "%s", pin_control_text(*control).c_str());
    return CMD_SUCCESS;
}

DEFUN(debug_transceiver, debug_transceiver_cmd, "[no] debug transceiver",
      NO_STR "Debugging functions\n"
             "Transceiver DEBUG\n")
{
    transceiver_debug_set(std::string_view{argv[0]->text} == "no" ? 0 : 1);
    return CMD_SUCCESS;
}
