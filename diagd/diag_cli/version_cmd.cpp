// SPDX-License-Identifier: GPL-2.0-or-later
// "show version": base information of the device.  What the database does not give is shown empty.
#include "diagd/diag_cli/basic_cmd.hpp"

#include "diagd/core/command.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <string>

using diagd::line_end;

DEFUN(show_version, show_version_cmd, "show version [json]",
      "Show running system information\n"
      "show version information\n"
      "JavaScript Object Notation\n")
{
    tq_base_info_t info{};
    database_dev_get_base_info(&g_diagd_db, &info);

    // Fields run at most to the next one, so each is cut to its own size.
    const auto text = [](std::span<const char> field) { return std::string{diagd::field_text(field)}; };

    if (use_json(argc, argv)) {
        const diagd::Json json = diagd::json_new_object();
        json_object_string_add(json.get(), "deviceMacAddress", text(info.device_mac).c_str());
        json_object_string_add(json.get(), "deviceModel", text(info.device_model).c_str());
        json_object_string_add(json.get(), "serialNumber", text(info.serial_number).c_str());
        json_object_string_add(json.get(), "hardwareVersion", text(info.hardware_version).c_str());
        json_object_string_add(json.get(), "softwareVersion", text(info.software_version).c_str());
        json_object_string_add(json.get(), "softwareCreatedTime", text(info.software_created).c_str());
        json_object_string_add(json.get(), "copyright", text(info.copyright).c_str());
        diagd::json_print(vty, json);
        return CMD_SUCCESS;
    }

    vty_out(vty, "  OLT Serial Number     : %s%s", text(info.serial_number).c_str(), line_end);
    vty_out(vty, "  Device Model          : %s%s", text(info.device_model).c_str(), line_end);
    vty_out(vty, "  Hardware Version      : %s%s", text(info.hardware_version).c_str(), line_end);
    vty_out(vty, "  Software Version      : %s%s", text(info.software_version).c_str(), line_end);
    vty_out(vty, "  Software Created Time : %s%s", text(info.software_created).c_str(), line_end);
    vty_out(vty, "  Copyright: %s%s", text(info.copyright).c_str(), line_end);
    return CMD_SUCCESS;
}
