// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/words.hpp"

#include <array>

#include "optics/sff8024.hpp"

namespace optics {

namespace {

// Word of an enumerator, counted from 0.
template <std::size_t size, class Enum>
std::string_view pick(const std::array<std::string_view, size> &words, Enum which)
{
    const auto index = static_cast<std::size_t>(which);
    return index < size ? words[index] : std::string_view{};
}

std::string hex(std::uint8_t byte)
{
    constexpr char digits[] = "0123456789abcdef";
    return {'0', 'x', digits[byte >> 4U], digits[byte & 0x0fU]};
}

constexpr std::array<QuantityWords, quantities> quantity_words{{
    {"temperature", "temperature", "C"},
    {"voltage", "supply voltage", "V"},
    {"bias", "laser bias", "mA"},
    {"tx_power", "TX power", "dBm"},
    {"rx_power", "RX power", "dBm"},
}};

} // namespace

std::string_view name_of(Family family)
{
    return pick(std::array<std::string_view, 4>{"unknown", "SFF-8472", "SFF-8636", "CMIS"}, family);
}

std::string_view name_of(State state)
{
    return pick(std::array<std::string_view, 4>{"ok", "unsupported", "no-light", "failed"}, state);
}

std::string_view name_of(Reason reason)
{
    return pick(std::array<std::string_view, 11>{"", "not-read", "no-diagnostics", "address-change",
                                                 "flat-copper", "copper", "not-measured", "no-light",
                                                 "data-not-ready", "bad-calibration", "implausible"},
                reason);
}

std::string_view explain(Reason reason)
{
    return pick(std::array<std::string_view, 11>{"", "not read", "no diagnostics", "needs an address change",
                                                 "copper without diagnostics", "copper", "not measured",
                                                 "no light", "data not ready",
                                                 "calibration constants are none", "implausible"},
                reason);
}

std::string_view name_of(Judgement judgement)
{
    return pick(std::array<std::string_view, 6>{"not-judged", "normal", "high-alarm", "high-warning",
                                                "low-warning", "low-alarm"},
                judgement);
}

std::string_view name_of(Medium medium)
{
    return pick(std::array<std::string_view, 6>{"unknown", "optical", "passive-copper", "active-copper",
                                                "active-cable", "base-t"},
                medium);
}

std::string_view name_of(Calibration calibration)
{
    return pick(std::array<std::string_view, 4>{"none", "internal", "external", "unknown"}, calibration);
}

std::string_view name_of(Check::Result result)
{
    return pick(std::array<std::string_view, 3>{"not-read", "good", "bad"}, result);
}

std::string_view module_state_name(std::uint8_t state)
{
    return pick(std::array<std::string_view, 8>{"reserved", "low power", "powering up", "ready",
                                                "powering down", "fault", "reserved", "reserved"},
                state);
}

std::vector<std::string_view> names_of(const Flags &flags)
{
    std::vector<std::string_view> names;
    if (flags.high_alarm)
        names.emplace_back("high-alarm");
    if (flags.high_warning)
        names.emplace_back("high-warning");
    if (flags.low_warning)
        names.emplace_back("low-warning");
    if (flags.low_alarm)
        names.emplace_back("low-alarm");
    return names;
}

const QuantityWords &words_of(Quantity quantity)
{
    return quantity_words[static_cast<std::size_t>(quantity)];
}

std::vector<std::string> doubts_of(const Module &module)
{
    std::vector<std::string> lines;
    const Doubts &doubts = module.doubts;
    if (doubts.identity_missing)
        lines.emplace_back("the identification was not read");
    for (std::size_t i = 0; i < module.check_count; ++i) {
        const Check &check = module.checks[i];
        const std::string name = "check code " + std::string(check.name);
        if (check.result == Check::Result::not_read)
            lines.push_back(name + " was not read");
        else if (check.result == Check::Result::bad && check.computed == check.stored)
            lines.push_back(name + ": nothing but zeros is summed up");
        else if (check.result == Check::Result::bad)
            lines.push_back(name + " is " + hex(check.stored) + ", should be " + hex(check.computed));
    }
    if (doubts.identifier_reserved)
        lines.push_back("identifier " + hex(module.identity.identifier) + " is no known kind of module");
    if (doubts.identifier_differs)
        lines.emplace_back("lower memory and page 00h have different identifiers");
    if (doubts.calibration_unknown)
        lines.emplace_back("calibration is not told, internal is assumed");
    if (doubts.calibration_bad)
        lines.emplace_back("constants of external calibration are not trustworthy");
    if (doubts.data_not_ready)
        lines.emplace_back("data not ready");
    return lines;
}

Verdict verdict_of(const Module &module)
{
    if (module.family == Family::unknown)
        return Verdict::not_decoded;
    return module.doubts.any() ? Verdict::doubtful : Verdict::good;
}

std::string_view name_of(Verdict verdict)
{
    return pick(std::array<std::string_view, 3>{"good", "doubtful", "not-decoded"}, verdict);
}

} // namespace optics
