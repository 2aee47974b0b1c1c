// SPDX-License-Identifier: GPL-2.0-or-later
// The displays of all modules.
//
// Failure policy: a CPLD that cannot be opened ends a display silently; modules that cannot be read show as
// the displays of module_listing.hpp say.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/transceiver/memory/module_listing.hpp"
#include "diagd/transceiver/show/json.hpp"
#include "diagd/transceiver/show/text.hpp"

using namespace diagd;

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
