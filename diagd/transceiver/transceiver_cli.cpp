// SPDX-License-Identifier: GPL-2.0-or-later
// Install table of the transceiver unit.
#include "diagd/core/command.hpp"
#include "diagd/transceiver/transceiver_cmd.hpp"

using namespace diagd;

static constexpr InstallRow commands[] = {
    {config_node, &interface_idprom_show_cmd},     {config_node, &interface_xgpon_idprom_show_cmd},
    {config_node, &transceiver_show_cmd},          {config_node, &transceiver_detail_show_cmd},
    {gpon_node, &transceiver_rssi_txdis_cmd},      {xgpon_node, &transceiver_rssi_txdis_cmd},
    {gpon_node, &show_transceiver_rssi_txdis_cmd}, {xgpon_node, &show_transceiver_rssi_txdis_cmd},
    {diagnose_node, &debug_transceiver_cmd},
};

int transceiver_cmd_init(void)
{
    install_table(commands);
    return 0;
}
