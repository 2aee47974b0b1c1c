// SPDX-License-Identifier: GPL-2.0-or-later
// The display of one module's identification.
//
// Failure policy: a CPLD that cannot be opened ends it silently; a module that is not there, or whose channel
// cannot be selected, is said to be absent; bytes that cannot be read are 0.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/core/text.hpp"
#include "diagd/transceiver/show/idprom_text.hpp"

using namespace diagd;

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
