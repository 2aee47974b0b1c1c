// SPDX-License-Identifier: GPL-2.0-or-later
// The modules of the PON ports.
#include "shell/port_modules.hpp"

#include "base/json.hpp"

#include <string_view>

namespace diagsh {

namespace {

// Values are texts, empty where there is none.
bool has(json_object *module, const char *key)
{
    json_object *value = json_object_object_get(module, key);
    if (!value)
        return false;
    const std::string_view text = json_object_get_string(value);
    return text.find_first_not_of(' ') != std::string_view::npos;
}

} // namespace

std::vector<PortModule> parse_port_modules(const std::string &json)
{
    constexpr std::string_view prefix = "PON ";
    std::vector<PortModule> modules;
    const base::Json root(json_tokener_parse(json.c_str()));
    if (!json_object_is_type(root.get(), json_type_object))
        return modules;
    json_object_object_foreach(root.get(), name, list)
    {
        if (!std::string_view(name).starts_with(prefix) || !json_object_is_type(list, json_type_array))
            continue;
        json_object *module = json_object_array_get_idx(list, 0);
        PortModule port{name + prefix.size()};
        // Supply and temperature are measured by every module that measures anything.
        port.gpon = has(module, "temperature") && has(module, "voltage");
        port.xgpon = has(module, "xgTemperature") && has(module, "xgVoltage");
        port.plugged = port.gpon || port.xgpon || has(module, "vendorName") || has(module, "wavelength");
        modules.push_back(port);
    }
    return modules;
}

} // namespace diagsh
