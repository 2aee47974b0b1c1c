// SPDX-License-Identifier: GPL-2.0-or-later
#include "base/json_writer.hpp"
#include "optics/escape.hpp"
#include "optics/judgement.hpp"
#include "optics/memory.hpp"
#include "optics/render.hpp"
#include "optics/sff8024.hpp"
#include "optics/words.hpp"

namespace optics {

namespace {

using base::JsonWriter;

std::string hex(Bytes bytes, std::string_view between = "")
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (!text.empty())
            text += between;
        text += digits[byte >> 4U];
        text += digits[byte & 0x0fU];
    }
    return text;
}

template <class T>
void member(JsonWriter &json, std::string_view key, const T &value)
{
    json.key(key).value(value);
}

void member(JsonWriter &json, std::string_view key, const Text &text)
{
    json.key(key).value(escaped(text.view()));
}

template <class T>
void member(JsonWriter &json, std::string_view key, const std::optional<T> &value)
{
    json.key(key);
    if (value)
        json.value(*value);
    else
        json.null();
}

void power(JsonWriter &json, std::string_view key, double mw)
{
    json.key(key);
    if (mw > 0)
        json.value(dbm(mw));
    else
        json.null();
}

void render_checks(const Module &module, JsonWriter &json)
{
    json.key("checks").begin_array();
    for (std::size_t i = 0; i < module.check_count; ++i) {
        const Check &check = module.checks[i];
        json.begin_object();
        member(json, "name", check.name);
        member(json, "result", name_of(check.result));
        if (check.result != Check::Result::not_read) {
            member(json, "computed", check.computed);
            member(json, "stored", check.stored);
        }
        json.end_object();
    }
    json.end_array();
}

void render_length(JsonWriter &json, std::string_view key, const Length &length)
{
    json.key(key);
    if (length.metres != 0)
        json.value(length.metres);
    else
        json.null();
}

void render_lengths(const Lengths &lengths, JsonWriter &json)
{
    json.key("lengths_m").begin_object();
    render_length(json, "smf", lengths.smf);
    render_length(json, "om5", lengths.om5);
    render_length(json, "om4", lengths.om4);
    render_length(json, "om3", lengths.om3);
    render_length(json, "om2", lengths.om2);
    render_length(json, "om1", lengths.om1);
    render_length(json, "cable", lengths.cable);
    json.end_object();
}

void render_cable(const Module &module, JsonWriter &json)
{
    const Identity &identity = module.identity;
    json.key("cable_compliance");
    if (identity.cable_compliance) {
        const std::array<std::uint8_t, 2> bytes{
            static_cast<std::uint8_t>(*identity.cable_compliance >> 8U),
            static_cast<std::uint8_t>(*identity.cable_compliance & 0xffU)};
        json.value(hex(bytes));
    } else {
        json.null();
    }
    json.key("attenuation").begin_array();
    for (std::size_t i = 0; identity.attenuation_db && i < identity.attenuation_db->size(); ++i) {
        json.begin_object();
        member(json, "ghz", attenuation_ghz(module.family)[i]);
        member(json, "db", (*identity.attenuation_db)[i]);
        json.end_object();
    }
    json.end_array();
}

void render_identity(const Module &module, JsonWriter &json)
{
    const Identity &identity = module.identity;
    json.key("identity");
    if (module.family == Family::sff8472 && module.doubts.identity_missing) {
        json.null();
        return;
    }
    json.begin_object();
    member(json, "identifier", identity.identifier);
    member(json, "identifier_name", identifier_name(identity.identifier));
    if (module.family == Family::unknown) {
        json.end_object();
        return;
    }
    member(json, "ext_identifier", identity.ext_identifier);
    member(json, "connector", identity.connector);
    member(json, "connector_name", connector_name(identity.connector));
    member(json, "medium", name_of(identity.medium));
    member(json, "vendor", identity.vendor);
    member(json, "oui", hex(identity.oui, ":"));
    member(json, "part", identity.part);
    member(json, "revision", identity.revision);
    member(json, "serial", identity.serial);
    member(json, "date", identity.date);
    member(json, "standard_revision", identity.revision_compliance);
    if (module.family != Family::cmis) {
        member(json, "compliance", hex(identity.compliance));
        member(json, "ext_compliance", identity.ext_compliance);
        member(json, "ext_compliance_name", ext_compliance_name(identity.ext_compliance));
        member(json, "encoding", identity.encoding);
        member(json, "encoding_name", encoding_name(identity.encoding, module.family));
        member(json, "rate_mbd", identity.rate_mbd);
        member(json, "rate_id", identity.rate_id);
        const Bytes options(identity.options);
        member(json, "options", hex(module.family == Family::sff8472 ? options.first(2) : options));
    }
    member(json, "device_technology", identity.device_technology);
    member(json, "wavelength_nm", identity.wavelength_nm);
    member(json, "wavelength_tolerance_nm", identity.wavelength_tolerance_nm);
    render_lengths(identity.lengths, json);
    render_cable(module, json);
    json.end_object();
}

void render_diagnostics(const Module &module, JsonWriter &json)
{
    const Diagnostics &diagnostics = module.diagnostics;
    json.key("diagnostics").begin_object();
    member(json, "implemented", diagnostics.implemented);
    member(json, "type", diagnostics.type);
    member(json, "calibration", name_of(diagnostics.calibration));
    json.key("rx_power_kind");
    if (diagnostics.average_power)
        json.value(*diagnostics.average_power ? "average" : "modulation-amplitude");
    else
        json.null();
    member(json, "data_not_ready", diagnostics.data_not_ready);
    if (module.family == Family::sff8472) {
        member(json, "address_change", diagnostics.address_change);
        member(json, "enhanced_options", diagnostics.enhanced_options);
        member(json, "status", diagnostics.status);
    } else {
        member(json, "flat_memory", diagnostics.flat_memory);
    }
    if (diagnostics.module_state)
        member(json, "module_state", module_state_name(*diagnostics.module_state));
    member(json, "quirk", module.quirk);
    json.end_object();
}

void render_value(JsonWriter &json, Quantity quantity, const Value &value)
{
    json.key(words_of(quantity).key).begin_object();
    json.key("value");
    if (value.state != State::ok)
        json.null();
    else
        json.value(is_power(quantity) ? dbm(value.value) : value.value);
    member(json, "unit", words_of(quantity).unit);
    member(json, "state", name_of(value.state));
    if (value.state != State::ok)
        member(json, "reason", name_of(value.reason));
    if (value.state == State::ok && is_power(quantity))
        member(json, "mw", value.value);
    member(json, "judgement", name_of(value.judgement));
    json.key("flags");
    if (value.flags.known) {
        json.begin_array();
        for (const std::string_view flag : names_of(value.flags))
            json.value(flag);
        json.end_array();
    } else {
        json.null();
    }
    json.end_object();
}

void render_lanes(const Module &module, JsonWriter &json)
{
    json.key("lanes").begin_array();
    for (std::size_t i = 0; i < module.lane_count; ++i) {
        const Lane &lane = module.lanes[i];
        json.begin_object();
        member(json, "lane", i + 1);
        render_value(json, Quantity::bias_ma, lane.bias);
        render_value(json, Quantity::tx_power_mw, lane.tx_power);
        render_value(json, Quantity::rx_power_mw, lane.rx_power);
        member(json, "tx_disabled", lane.tx_disabled);
        member(json, "tx_fault", lane.tx_fault);
        member(json, "tx_los", lane.tx_los);
        member(json, "rx_los", lane.rx_los);
        json.end_object();
    }
    json.end_array();
}

void render_thresholds(const Module &module, JsonWriter &json)
{
    json.key("thresholds").begin_object();
    for (std::size_t i = 0; i < quantities; ++i) {
        const auto quantity = static_cast<Quantity>(i);
        const Thresholds &thresholds = module.thresholds[i];
        json.key(words_of(quantity).key).begin_object();
        member(json, "state", name_of(thresholds.state));
        if (thresholds.state != State::ok) {
            member(json, "reason", name_of(thresholds.reason));
            json.end_object();
            continue;
        }
        member(json, "unit", words_of(quantity).unit);
        member(json, "usable", usable(thresholds));
        const std::pair<std::string_view, double> limits[] = {{"high_alarm", thresholds.high_alarm},
                                                              {"low_alarm", thresholds.low_alarm},
                                                              {"high_warning", thresholds.high_warning},
                                                              {"low_warning", thresholds.low_warning}};
        for (const auto &[key, limit] : limits) {
            if (!is_power(quantity)) {
                member(json, key, limit);
                continue;
            }
            power(json, key, limit);
            member(json, std::string(key) + "_mw", limit);
        }
        json.end_object();
    }
    json.end_object();
}

} // namespace

void render_json_members(const Module &module, JsonWriter &json)
{
    member(json, "family", name_of(module.family));
    member(json, "verdict", name_of(verdict_of(module)));
    member(json, "trusted", module.family != Family::unknown && module.trusted());
    json.key("doubts").begin_array();
    for (const std::string &doubt : doubts_of(module))
        json.value(doubt);
    json.end_array();
    render_checks(module, json);
    render_identity(module, json);
    if (module.family == Family::unknown)
        return;
    render_diagnostics(module, json);
    render_value(json, Quantity::temperature_c, module.temperature);
    render_value(json, Quantity::voltage_v, module.voltage);
    render_lanes(module, json);
    render_thresholds(module, json);
}

void render_json(const Module &module, JsonWriter &json)
{
    json.begin_object();
    render_json_members(module, json);
    json.end_object();
}

} // namespace optics
