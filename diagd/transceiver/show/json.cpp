// SPDX-License-Identifier: GPL-2.0-or-later
// JSON display of the module listing (see json.hpp).
#include "diagd/transceiver/show/json.hpp"

#include "diagd/transceiver/memory/access.hpp"

#include <array>
#include <cstdio>

namespace diagd {

namespace {

// Keys of one optical path.  PON ports can hold a GPON and an XG-PON path side by side, hence two sets.
struct PathKeys {
    const char *temperature, *voltage;
    std::array<const char *, sff8636_lanes> bias, tx_power, rx_power;
    const char *wavelength;
    const char *sfp_bias; // SFP-class modules give their bias under this key, too
};

constexpr PathKeys plain_keys{
    "temperature",
    "voltage",
    {"biasCurrentTx1", "biasCurrentTx2", "biasCurrentTx3", "biasCurrentTx4"},
    {"transmitPowerTx1", "transmitPowerTx2", "transmitPowerTx3", "transmitPowerTx4"},
    {"receivePowerRx1", "receivePowerRx2", "receivePowerRx3", "receivePowerRx4"},
    "wavelength",
    "biasCurrent",
};
constexpr PathKeys xg_keys{
    "xgTemperature",
    "xgVoltage",
    {"xgBiasCurrentTx1", "xgBiasCurrentTx2", "xgBiasCurrentTx3", "xgBiasCurrentTx4"},
    {"xgTransmitPowerTx1", "xgTransmitPowerTx2", "xgTransmitPowerTx3", "xgTransmitPowerTx4"},
    {"xgReceivePowerRx1", "xgReceivePowerRx2", "xgReceivePowerRx3", "xgReceivePowerRx4"},
    "xgWavelength",
    "xgBiasCurrent",
};
constexpr std::array vendor_keys{"vendorName", "vendorRevision", "vendorSerialNumber"};

void add_text(struct json_object *object, const char *key, const std::string &text)
{
    json_object_string_add(object, key, text.c_str());
}

void add_value(struct json_object *object, const char *key, float value)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(value));
    json_object_string_add(object, key, text.data());
}

void add_lanes(struct json_object *object, const std::array<const char *, sff8636_lanes> &keys,
               const Lanes &lanes)
{
    for (std::size_t i = 0; i < lanes.size(); ++i)
        add_value(object, keys[i], lanes[i]);
}

void add_empty(struct json_object *object, const PathKeys &keys)
{
    const auto add = [object](const char *key) { json_object_string_add(object, key, ""); };
    add(keys.temperature);
    add(keys.voltage);
    for (const auto &lanes : {keys.bias, keys.tx_power, keys.rx_power})
        for (const char *key : lanes)
            add(key);
    add(keys.wavelength);
}

// Every key in its place from the start, so that all objects read alike; adding a key again replaces its
// value where it stands.
void add_all_keys(struct json_object *object, const Interface &interface, const std::string &name)
{
    add_text(object, "interfaceName", name);
    add_text(object, "interfaceType", interface.kind == PortKind::gigabit_ethernet ? "uplink" : "pon");
    add_empty(object, plain_keys);
    for (const char *key : vendor_keys)
        json_object_string_add(object, key, "");
    add_empty(object, xg_keys);
}

void add_identity(struct json_object *object, const ModuleIdentity &identity)
{
    add_text(object, vendor_keys[0], identity.vendor_name);
    add_text(object, vendor_keys[1], identity.vendor_revision);
    add_text(object, vendor_keys[2], identity.vendor_serial_number);
}

void add_path(struct json_object *object, const PathReading &path)
{
    const PortKind kind = transceiver_type_by_wavelength(path.wavelength_nm);
    const bool plain = kind == PortKind::gigabit_ethernet || kind == PortKind::gpon;
    const PathKeys &keys = plain ? plain_keys : xg_keys;
    if (path.values) {
        add_value(object, keys.temperature, path.values->temperature_c);
        add_value(object, keys.voltage, path.values->voltage_v);
        add_value(object, keys.sfp_bias, path.values->bias_ma);
        add_value(object, keys.bias[0], path.values->bias_ma);
        add_value(object, keys.tx_power[0], path.values->tx_power_dbm);
        add_value(object, keys.rx_power[0], path.values->rx_power_dbm);
    }
    if (kind != PortKind::none)
        json_object_int_add(object, keys.wavelength, path.wavelength_nm);
}

struct AddModule {
    struct json_object *object;

    void operator()(std::monostate) const {}

    void operator()(const SfpReading &module) const
    {
        add_identity(object, module.identity);
        add_path(object, module.first);
        if (module.second)
            add_path(object, *module.second);
    }

    void operator()(const QsfpReading &module) const
    {
        add_identity(object, module.identity);
        add_value(object, plain_keys.temperature, module.temperature_c);
        add_value(object, plain_keys.voltage, module.voltage_v);
        add_lanes(object, plain_keys.bias, module.bias_ma);
        add_lanes(object, plain_keys.tx_power, module.tx_power_dbm);
        add_lanes(object, plain_keys.rx_power, module.rx_power_dbm);
        // Counted in 0.05 nm.  The bytes stay in the order they were read in, lower one first: the consumers
        // of this document know the number in this form.
        if (module.wavelength_word != 0)
            json_object_int_add(object, plain_keys.wavelength, module.wavelength_word / 20);
    }
};

} // namespace

Json module_listing_json(std::span<const InterfaceReading> listing)
{
    Json top = json_new_object();
    for (const auto &[interface, module] : listing) {
        const std::string name = interface_name(interface, "PON");
        Json object = json_new_object();
        add_all_keys(object.get(), interface, name);
        std::visit(AddModule{object.get()}, module);

        Json modules = json_new_array();
        json_object_array_add(modules.get(), object.release());
        json_object_object_add(top.get(), name.c_str(), modules.release());
    }
    return top;
}

} // namespace diagd
