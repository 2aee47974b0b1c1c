// SPDX-License-Identifier: GPL-2.0-or-later
#include <array>
#include <cstdarg>
#include <cstdio>

#include "optics/escape.hpp"
#include "optics/judgement.hpp"
#include "optics/render.hpp"
#include "optics/sff8024.hpp"
#include "optics/words.hpp"

namespace optics {

namespace {

__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...)
{
    char text[160];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

int width(std::string_view text)
{
    return static_cast<int>(text.size());
}

// "name            value"
std::string line(std::string_view name, std::string_view value)
{
    std::string text = format("  %-18.*s", width(name), name.data());
    text += value;
    return text + '\n';
}

std::string code(std::string_view name, unsigned number)
{
    return std::string(name) + format(" (0x%02x)", number);
}

std::string text_of(const Text &text)
{
    return text.size != 0 ? escaped(text.view()) : "-";
}

// 10 km, 550 m, 0.5 m.
std::string metres(const Length &length)
{
    const bool km = length.metres >= 1000;
    return format("%g %s%s", km ? length.metres / 1000 : length.metres, km ? "km" : "m",
                  length.more ? " or more" : "");
}

std::string lengths_text(const Lengths &lengths)
{
    const std::pair<const char *, const Length &> kinds[] = {
        {"single mode", lengths.smf}, {"OM5", lengths.om5}, {"OM4", lengths.om4},    {"OM3", lengths.om3},
        {"OM2", lengths.om2},         {"OM1", lengths.om1}, {"cable", lengths.cable}};
    std::string text;
    for (const auto &[kind, length] : kinds)
        if (length.metres != 0)
            text += (text.empty() ? "" : ", ") + (std::string(kind) + " ") + metres(length);
    return text;
}

std::string medium_text(const Module &module)
{
    const Identity &identity = module.identity;
    std::string text(name_of(identity.medium));
    if (identity.cable_compliance)
        text += format(", compliance 0x%04x", *identity.cable_compliance);
    if (identity.wavelength_nm)
        text += format(", %g nm", *identity.wavelength_nm);
    if (identity.wavelength_tolerance_nm && *identity.wavelength_tolerance_nm != 0)
        text += format(" +/- %g nm", *identity.wavelength_tolerance_nm);
    return text;
}

std::string attenuation_text(const Module &module)
{
    std::string text;
    const auto ghz = attenuation_ghz(module.family);
    for (std::size_t i = 0; i < ghz.size(); ++i)
        text += format("%s%u dB at %g GHz", i == 0 ? "" : ", ", (*module.identity.attenuation_db)[i], ghz[i]);
    return text;
}

std::string identity_text(const Module &module)
{
    const Identity &identity = module.identity;
    if (module.family == Family::sff8472 && module.doubts.identity_missing)
        return line("identification", "not read");
    std::string text = line("identifier", code(identifier_name(identity.identifier), identity.identifier));
    if (module.family == Family::unknown)
        return text;
    const auto &oui = identity.oui;
    text += line("vendor", text_of(identity.vendor));
    text += line("OUI", format("%02x:%02x:%02x", oui[0], oui[1], oui[2]));
    text += line("part", text_of(identity.part) + "  revision " + text_of(identity.revision));
    text += line("serial", text_of(identity.serial) + "  date " + text_of(identity.date));
    text += line("connector", code(connector_name(identity.connector), identity.connector));
    text += line("medium", medium_text(module));
    if (identity.attenuation_db)
        text += line("attenuation", attenuation_text(module));
    if (const std::string lengths = lengths_text(identity.lengths); !lengths.empty())
        text += line("length", lengths);
    if (module.family == Family::cmis)
        return text;
    text += line("rate", (identity.rate_mbd ? format("%u MBd, ", *identity.rate_mbd) : "not told, ") +
                             code(encoding_name(identity.encoding, module.family), identity.encoding));
    if (identity.ext_compliance != 0)
        text +=
            line("compliance", code(ext_compliance_name(identity.ext_compliance), identity.ext_compliance));
    return text;
}

std::string checks_text(const Module &module)
{
    std::string text;
    for (std::size_t i = 0; i < module.check_count; ++i) {
        const Check &check = module.checks[i];
        text += (i == 0 ? "" : ", ") + std::string(check.name) + " " +
                (check.result == Check::Result::not_read ? "not read" : std::string(name_of(check.result)));
    }
    return line("check codes", text);
}

std::string diagnostics_text(const Module &module)
{
    const Diagnostics &diagnostics = module.diagnostics;
    if (diagnostics.address_change)
        return line("diagnostics", "after an address change only, which is not made");
    if (!diagnostics.implemented && diagnostics.calibration == Calibration::none)
        return line("diagnostics", "none");
    std::string text = std::string(name_of(diagnostics.calibration)) + " calibration";
    if (diagnostics.average_power)
        text += *diagnostics.average_power ? ", RX power is the average"
                                           : ", RX power is the modulation amplitude";
    if (module.quirk)
        text += ", units doubled";
    if (diagnostics.module_state)
        text += ", " + std::string(module_state_name(*diagnostics.module_state));
    return line("diagnostics", text);
}

int decimals(Quantity quantity)
{
    return quantity == Quantity::voltage_v || quantity == Quantity::bias_ma ? 3 : 2;
}

std::string number(Quantity quantity, double value)
{
    if (is_power(quantity))
        return value > 0 ? format("%.*f", decimals(quantity), dbm(value)) : "< -40";
    return format("%.*f", decimals(quantity), value);
}

std::string value_text(Quantity quantity, const Value &value)
{
    const std::string_view unit = words_of(quantity).unit;
    if (value.state == State::no_light)
        return "< -40 dBm";
    if (value.state != State::ok)
        return std::string(explain(value.reason));
    return number(quantity, value.value) + " " + std::string(unit);
}

// What thresholds and the module's own flags say, the former first; a flag that says the same is not
// repeated.
std::string opinions(const Value &value)
{
    std::string text = value.judgement != Judgement::none ? std::string(name_of(value.judgement)) : "";
    if (value.state == State::no_light)
        text = text.empty() || value.judgement == Judgement::normal ? "no light" : "no light, " + text;
    std::string flags;
    for (const std::string_view flag : names_of(value.flags))
        flags += (flags.empty() ? "" : ", ") + std::string(flag);
    if (!flags.empty())
        text += (text.empty() ? "" : "; ") + ("flags: " + flags);
    return text;
}

std::string value_line(Quantity quantity, std::string_view title, const Value &value)
{
    const std::string text = value_text(quantity, value);
    std::string result = format("  %-18.*s%-14s", width(title), title.data(), text.c_str());
    if (const std::string more = opinions(value); !more.empty())
        result += "  " + more;
    while (result.back() == ' ')
        result.pop_back();
    return result + '\n';
}

std::string status_text(const Lane &lane)
{
    std::string text;
    const std::pair<const char *, const Status &> bits[] = {{"TX disabled", lane.tx_disabled},
                                                            {"TX fault", lane.tx_fault},
                                                            {"TX loss of signal", lane.tx_los},
                                                            {"RX loss of signal", lane.rx_los}};
    for (const auto &[name, bit] : bits)
        if (bit.value_or(false))
            text += (text.empty() ? "" : ", ") + std::string(name);
    return text;
}

struct LaneValue {
    Quantity quantity;
    const Value &value;
};

std::array<LaneValue, 3> values_of(const Lane &lane)
{
    return {{{Quantity::bias_ma, lane.bias},
             {Quantity::tx_power_mw, lane.tx_power},
             {Quantity::rx_power_mw, lane.rx_power}}};
}

// What no lane measures is said once.
std::string lanes_text(const Module &module)
{
    std::string text;
    for (const auto &[quantity, value] : values_of(module.lanes[0]))
        if (value.state == State::unsupported)
            text += value_line(quantity, words_of(quantity).title, value);
    for (std::size_t i = 0; i < module.lane_count; ++i) {
        const Lane &lane = module.lanes[i];
        const std::string prefix = module.lane_count > 1 ? format("lane %zu ", i + 1) : "";
        for (const auto &[quantity, value] : values_of(lane)) {
            const bool short_title = quantity == Quantity::bias_ma && !prefix.empty();
            const std::string title(short_title ? "bias" : words_of(quantity).title);
            if (value.state != State::unsupported)
                text += value_line(quantity, prefix + title, value);
        }
        if (const std::string status = status_text(lane); !status.empty())
            text += line(prefix + "status", status);
    }
    return text;
}

std::string values_text(const Module &module)
{
    const auto silent = [](const Value &value) { return value.state == State::unsupported; };
    const Lane &lane = module.lanes[0];
    if (silent(module.temperature) && silent(module.voltage) && silent(lane.bias) && silent(lane.tx_power) &&
        silent(lane.rx_power))
        return line("values", explain(module.temperature.reason));
    return value_line(Quantity::temperature_c, "temperature", module.temperature) +
           value_line(Quantity::voltage_v, "supply voltage", module.voltage) + lanes_text(module);
}

bool is_unset(const Thresholds &t)
{
    return t.high_alarm == 0 && t.low_alarm == 0 && t.high_warning == 0 && t.low_warning == 0;
}

std::string thresholds_text(const Module &module)
{
    std::string text;
    for (std::size_t i = 0; i < quantities; ++i) {
        const auto quantity = static_cast<Quantity>(i);
        const Thresholds &t = module.thresholds[i];
        const QuantityWords &words = words_of(quantity);
        if (t.state == State::failed)
            text += line(words.title, explain(t.reason));
        if (t.state != State::ok)
            continue;
        const std::string title = std::string(words.title) + ", " + std::string(words.unit);
        if (is_unset(t)) {
            text += format("  %-20s %11s\n", title.c_str(), "not set");
            continue;
        }
        text += format("  %-20s %11s %11s %11s %11s", title.c_str(), number(quantity, t.low_alarm).c_str(),
                       number(quantity, t.low_warning).c_str(), number(quantity, t.high_warning).c_str(),
                       number(quantity, t.high_alarm).c_str());
        text += usable(t) ? "\n" : "\n    out of order, nothing is judged by them\n";
    }
    if (text.empty())
        return text;
    return format("  %-20s %11s %11s %11s %11s\n", "thresholds", "low alarm", "low warning", "high warn.",
                  "high alarm") +
           text;
}

std::string verdict_text(const Module &module)
{
    std::string text(name_of(verdict_of(module)));
    for (const std::string &doubt : doubts_of(module))
        text += "\n" + format("  %-18s", "") + doubt;
    return line("verdict", text);
}

} // namespace

std::string render_text(const Module &module)
{
    std::string text = std::string(name_of(module.family)) + " module\n" + identity_text(module);
    if (module.family == Family::unknown)
        return text + line("verdict", "the memory of this kind of module is not decoded");
    text += checks_text(module);
    text += diagnostics_text(module);
    text += values_text(module);
    return text + thresholds_text(module) + verdict_text(module);
}

} // namespace optics
