// SPDX-License-Identifier: GPL-2.0-or-later
// The commands of optical modules: identification of one, displays of all, the RSSI/TXDIS pin of the
// interface whose node the operator is in, and the debug switch.
//
// Failure policy: a CPLD that cannot be opened ends a display silently.  An identification says that a module
// is absent which is not there, or whose channel cannot be selected; the other displays show modules that
// cannot be read as module_listing.hpp says.  The pin's commands succeed whatever the module does.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/module_listing.hpp"
#include "diagd/transceiver/memory/rssi_txdis.hpp"
#include "diagd/transceiver/show/idprom_text.hpp"
#include "diagd/transceiver/show/json.hpp"
#include "diagd/transceiver/show/text.hpp"

#include <string_view>

using namespace diagd;

// --- identification of one module

namespace {

constexpr int kind_at = 3, position_at = 4, scope_at = 5;

IdpromScope scope_of(int argc, struct cmd_token *argv[])
{
    int index = scope_at;
    if (argv_find(argv, argc, "vendor", &index))
        return IdpromScope::vendor;
    return argv_find(argv, argc, "manufacture", &index) ? IdpromScope::manufacture : IdpromScope::all;
}

const char *reason(IdpromScope scope)
{
    switch (scope) {
    case IdpromScope::vendor:
        return "transceiver_vendor_information_show";
    case IdpromScope::manufacture:
        return "transceiver_manue_show";
    case IdpromScope::all:
        break;
    }
    return "transceiver_idprom_show";
}

struct Reading {
    bool is_absent = false;
    std::optional<Idprom> idprom; // of a family that is decoded
};

// Empty when the CPLD cannot be opened.  The board is free again when this returns.
std::optional<Reading> read_port(const Interface &interface, IdpromScope scope)
{
    const BoardSession board{reason(scope), SessionPolicy::lower_then_release};
    if (!board)
        return std::nullopt;
    const ModuleSession module{board, interface.kind, interface.port};
    if (!module)
        return Reading{.is_absent = true, .idprom = {}};
    return Reading{.is_absent = false, .idprom = read_idprom(module.handle(), scope)};
}

void show_idprom(struct vty *vty, const Interface &interface, const char *kind_word, IdpromScope scope)
{
    const std::optional<Reading> reading = read_port(interface, scope);
    if (!reading)
        return;
    if (reading->is_absent)
        vty_out(vty, "Interface %s %d/%d transceiver is absent.%s", kind_word, interface.slot, interface.port,
                line_end);
    else if (reading->idprom)
        vty_out(vty, "%s", idprom_text(*reading->idprom, scope).c_str());
}

} // namespace

#define SHOW_IDPROM_STR                                                                                      \
    SHOW_STR "show IDPROMs for interfaces.\n"                                                                \
             "Specify an interface for idprom display.\n"
#define IDPROM_SCOPE_STR                                                                                     \
    "Vendor information\n"                                                                                   \
    "Manufacture information\n"

DEFUN(interface_idprom_show, interface_idprom_show_cmd,
      "show idprom interface <gigabitEthernet|gpon> <S/P> [<vendor|manufacture>]",
      SHOW_IDPROM_STR "GigabitEthernet IEEE 802.3z\n"
                      "GPON information\n" SLOT_PORT_STR IDPROM_SCOPE_STR)
{
    const char *kind_word = argv[kind_at]->text;
    if (const auto interface = find_interface(vty, kind_word, argv[position_at]->arg))
        show_idprom(vty, *interface, kind_word, scope_of(argc, argv));
    return CMD_SUCCESS;
}

ALIAS(interface_idprom_show, interface_xgpon_idprom_show_cmd,
      "show idprom interface xgpon <S/P> [<vendor|manufacture>]",
      SHOW_IDPROM_STR "XGPON information\n" SLOT_PORT_STR IDPROM_SCOPE_STR)

// --- displays of all modules

namespace {

void print(struct vty *vty, const std::string &text)
{
    vty_out(vty, "%s", text.c_str());
}

void show_diagnosis(struct vty *vty)
{
    print(vty, legend_text());
    const auto listing = read_module_listing("transceiver_diag_monitor_show", ReadScope::values);
    if (!listing)
        return;
    print(vty, diagnosis_text(*listing));
    print(vty, line_end);
}

void show_thresholds(struct vty *vty)
{
    print(vty, legend_text());
    const auto listing = read_module_listing("transceiver_diag_monitor_detail_show", ReadScope::family);
    if (listing)
        print(vty, threshold_text(*listing));
}

void show_json(struct vty *vty)
{
    const auto listing =
        read_module_listing("transceiver_diag_monitor_show_json", ReadScope::values_and_identity);
    json_print(vty, module_listing_json(listing.value_or(std::vector<InterfaceReading>{})));
}

} // namespace

DEFUN(transceiver_show, transceiver_show_cmd, "show transceiver [json]",
      SHOW_STR "Transceiver information.\n" JSON_STR)
{
    if (use_json(argc, argv))
        show_json(vty);
    else
        show_diagnosis(vty);
    return CMD_SUCCESS;
}

DEFUN(transceiver_detail_show, transceiver_detail_show_cmd, "show transceiver <detail|diagnosis>",
      SHOW_STR "Transceiver information.\n"
               "Show interface transceiver detail\n"
               "Show interface transceiver diagnosis\n")
{
    int index = 0;
    if (argv_find(argv, argc, "detail", &index))
        show_thresholds(vty);
    else if (argv_find(argv, argc, "diagnosis", &index))
        show_diagnosis(vty);
    return CMD_SUCCESS;
}

// --- the shared pin

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
