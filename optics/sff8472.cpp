// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/sff8472.hpp"

#include "optics/calibration.hpp"
#include "optics/identity.hpp"
#include "optics/judgement.hpp"
#include "optics/quirks.hpp"
#include "optics/sff8472_fields.hpp"

namespace optics::sff8472 {

namespace {

constexpr std::uint8_t copper_pigtail = 0x21; // SFF-8024 table 4-3
constexpr std::uint8_t rj45 = 0x22;

Medium medium_of(const Page &a0)
{
    if (a0.bit(id::cable_technology, 2))
        return Medium::passive_copper;
    if (a0.bit(id::cable_technology, 3))
        return a0.u8(id::connector) == copper_pigtail ? Medium::active_copper : Medium::active_cable;
    if (a0.bit(id::ethernet, 3) || a0.u8(id::connector) == rj45)
        return Medium::base_t;
    if (a0.u8(id::connector) == copper_pigtail)
        return Medium::passive_copper;
    return a0.u16(id::wavelength_nm) != 0 ? Medium::optical : Medium::unknown;
}

bool is_cable(Medium medium)
{
    return medium == Medium::passive_copper || medium == Medium::active_copper ||
           medium == Medium::active_cable;
}

bool is_copper(Medium medium)
{
    return medium == Medium::passive_copper || medium == Medium::active_copper || medium == Medium::base_t;
}

void read_lengths(const Page &a0, Identity &identity)
{
    Lengths &lengths = identity.lengths;
    // The finer one counts as far as it reaches.
    lengths.smf = read_length(a0, id::smf_100m, 100);
    if (const Length km = read_length(a0, id::smf_km, 1000); lengths.smf.more || lengths.smf.metres == 0)
        lengths.smf = km.metres != 0 ? km : lengths.smf;
    lengths.om3 = read_length(a0, id::om3_10m, 10);
    lengths.om2 = read_length(a0, id::om2_10m, 10);
    lengths.om1 = read_length(a0, id::om1_10m, 10);
    if (is_cable(identity.medium) || is_copper(identity.medium))
        lengths.cable = read_length(a0, id::om4_10m_or_cable_m, 1);
    else
        lengths.om4 = read_length(a0, id::om4_10m_or_cable_m, 10);
}

void read_identity(const Page &a0, Identity &identity)
{
    identity.identifier = a0.u8(id::identifier);
    identity.ext_identifier = a0.u8(id::ext_identifier);
    identity.connector = a0.u8(id::connector);
    identity.encoding = a0.u8(id::encoding);
    read_bytes(a0, id::compliance, identity.compliance);
    identity.ext_compliance = a0.u8(id::ext_compliance);
    identity.rate_id = a0.u8(id::rate_id);
    identity.rate_mbd = read_rate(a0, id::rate, id::rate_250);
    identity.medium = medium_of(a0);
    if (is_cable(identity.medium))
        identity.cable_compliance = a0.u16(id::wavelength_nm);
    else if (const unsigned nm = a0.u16(id::wavelength_nm); nm != 0 && identity.medium != Medium::base_t)
        identity.wavelength_nm = nm;
    read_lengths(a0, identity);
    identity.vendor = read_text(a0, id::vendor, 16);
    read_bytes(a0, id::oui, identity.oui);
    identity.part = read_text(a0, id::part, 16);
    identity.revision = read_text(a0, id::revision, 4);
    identity.serial = read_text(a0, id::serial, 16);
    identity.date = read_text(a0, id::date, 8);
    identity.options = {a0.u8(id::options), a0.u8(id::options + 1), 0};
    identity.revision_compliance = a0.u8(id::revision_compliance);
}

Calibration calibration_of(const Page &a0)
{
    if (!a0.has(id::diagnostic_type))
        return Calibration::unknown;
    const bool internal = a0.bit(id::diagnostic_type, internally_calibrated);
    const bool external = a0.bit(id::diagnostic_type, externally_calibrated);
    if (internal == external)
        return Calibration::unknown;
    return internal ? Calibration::internal : Calibration::external;
}

// Whether, and why not, this module measures; `none` when it does.
Reason silence(const Page &a0, const Page &a2, const Diagnostics &diagnostics)
{
    // An A2h that answers proves diagnostics where the byte that says so was not read.
    if (a0.has(id::diagnostic_type) && !diagnostics.implemented)
        return Reason::no_diagnostics;
    if (diagnostics.address_change)
        return Reason::address_change;
    return a2.empty() ? Reason::not_read : Reason::none;
}

void read_diagnostics(const Page &a0, const Page &a2, Module &module)
{
    Diagnostics &diagnostics = module.diagnostics;
    diagnostics.type = a0.u8(id::diagnostic_type);
    diagnostics.enhanced_options = a0.u8(id::enhanced_options);
    diagnostics.implemented = a0.bit(id::diagnostic_type, diagnostics_implemented);
    diagnostics.address_change = diagnostics.implemented && a0.bit(id::diagnostic_type, address_change);
    if (diagnostics.implemented)
        diagnostics.average_power = a0.bit(id::diagnostic_type, average_power);
    if (diagnostics.implemented || (!a0.has(id::diagnostic_type) && !a2.empty()))
        diagnostics.calibration = calibration_of(a0);
}

// Makes values of the words of one quantity.
struct Conversion {
    bool known = true;  // all constants were read, or none are needed
    bool usable = true; // they are constants that a measuring module can have
    bool external_rx = false;
    Linear linear;
    Polynomial polynomial;
    double unit = 1;

    [[nodiscard]] double apply(double raw) const
    {
        return (external_rx ? polynomial.apply(raw) : linear.apply(raw)) * unit;
    }
};

Conversion conversion_of(const Page &a2, const Row &row, bool external)
{
    Conversion result;
    result.unit = row.unit;
    if (!external)
        return result;
    if (row.slope == no_slope) {
        result.external_rx = true;
        result.known = a2.has(dd::rx_coefficients, 20);
        result.polynomial = read_polynomial(a2, dd::rx_coefficients);
        result.usable = result.polynomial.usable;
    } else {
        result.known = a2.has(row.slope, 2) && a2.has(row.offset, 2);
        result.linear = read_linear(a2, row.slope, row.offset);
        result.usable = result.linear.slope != 0;
    }
    return result;
}

double word(const Page &a2, const Row &row, std::size_t byte)
{
    return row.is_signed ? a2.s16(byte) : a2.u16(byte);
}

Thresholds read_thresholds(const Page &a2, const Row &row, const Conversion &conversion)
{
    if (!a2.has(row.thresholds, 8) || !conversion.known)
        return {};
    if (!conversion.usable)
        return {.state = State::failed, .reason = Reason::bad_calibration};
    const auto at = [&](std::size_t i) { return conversion.apply(word(a2, row, row.thresholds + 2 * i)); };
    return {State::ok, Reason::none, at(0), at(1), at(2), at(3)};
}

Value read_value(const Page &a2, Quantity quantity, const Conversion &conversion, const Module &module)
{
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    if (!a2.has(row.live, 2) || !conversion.known)
        return no_value(State::unsupported, Reason::not_read);
    if (is_copper(module.identity.medium) && quantity >= Quantity::bias_ma)
        return no_value(State::unsupported, Reason::copper);
    if (module.diagnostics.data_not_ready)
        return no_value(State::failed, Reason::data_not_ready);
    if (!conversion.usable)
        return no_value(State::failed, Reason::bad_calibration);
    return measured(quantity, conversion.apply(word(a2, row, row.live)));
}

Flags read_flags(const Page &a2, unsigned high)
{
    const unsigned alarms = a2.u16(dd::alarm_flags);
    const unsigned warnings = a2.u16(dd::warning_flags);
    const auto bit = [](unsigned word, unsigned number) { return (word >> number & 1U) != 0; };
    return {true, bit(alarms, high), bit(alarms, high - 1), bit(warnings, high), bit(warnings, high - 1)};
}

Value &value_of(Module &module, Quantity quantity)
{
    switch (quantity) {
    case Quantity::temperature_c:
        return module.temperature;
    case Quantity::voltage_v:
        return module.voltage;
    case Quantity::bias_ma:
        return module.lanes[0].bias;
    case Quantity::tx_power_mw:
        return module.lanes[0].tx_power;
    case Quantity::rx_power_mw:
        break;
    }
    return module.lanes[0].rx_power;
}

void read_status(const Page &a0, const Page &a2, Module &module)
{
    if (!a2.has(dd::status))
        return;
    module.diagnostics.status = a2.u8(dd::status);
    module.diagnostics.data_not_ready = a2.bit(dd::status, data_not_ready);
    Lane &lane = module.lanes[0];
    const auto kept = [&](unsigned number) { return a0.bit(id::enhanced_options, number); };
    if (kept(tx_disable_kept))
        lane.tx_disabled = a2.bit(dd::status, tx_disable_state);
    if (kept(tx_fault_kept))
        lane.tx_fault = a2.bit(dd::status, tx_fault_state);
    if (kept(rx_los_kept))
        lane.rx_los = a2.bit(dd::status, rx_los_state);
}

void read_values(const Page &a0, const Page &a2, Module &module)
{
    read_status(a0, a2, module);
    const Quirk *quirk = quirk_of(module.identity);
    module.quirk = quirk != nullptr;
    const bool external = module.diagnostics.calibration == Calibration::external;
    const bool flags = a0.bit(id::enhanced_options, flags_kept) && a2.has(dd::warning_flags, 2);
    for (std::size_t i = 0; i < quantities; ++i) {
        const auto quantity = static_cast<Quantity>(i);
        Conversion conversion = conversion_of(a2, rows[i], external);
        if (quirk != nullptr && quantity == Quantity::tx_power_mw)
            conversion.unit *= quirk->tx_power;
        if (quirk != nullptr && quantity == Quantity::bias_ma)
            conversion.unit *= quirk->bias;
        module.thresholds[i] = read_thresholds(a2, rows[i], conversion);
        Value &value = value_of(module, quantity);
        value = read_value(a2, quantity, conversion, module);
        if (flags && value.state != State::unsupported)
            value.flags = read_flags(a2, rows[i].flag);
        module.doubts.calibration_bad |= value.reason == Reason::bad_calibration;
    }
    // Sums of zeros are right, but a memory without a single number was never written.
    if (Check &dmi = module.checks[2]; dmi.computed == 0 && dmi.stored == 0 && a2.has(0, 118))
        dmi.result = sum_of(a2.range(0, 118)).all_zero ? Check::Result::bad : Check::Result::good;
    module.doubts.check_failed |= module.checks[2].result == Check::Result::bad;
    module.doubts.data_not_ready = module.diagnostics.data_not_ready;
    module.doubts.calibration_unknown = module.diagnostics.calibration == Calibration::unknown;
}

void set_unsupported(Module &module, Reason reason)
{
    for (std::size_t i = 0; i < quantities; ++i) {
        value_of(module, static_cast<Quantity>(i)) = no_value(State::unsupported, reason);
        module.thresholds[i].reason = reason;
    }
}

} // namespace

Module decode(const Memory &memory)
{
    Module module;
    module.family = Family::sff8472;
    module.lane_count = 1;
    const Page a0(memory.a0);
    const Page a2(memory.a2);
    add_check(a0, cc_base, module);
    add_check(a0, cc_ext, module);
    if (a0.empty())
        module.doubts.identity_missing = true;
    else
        read_identity(a0, module.identity);
    read_diagnostics(a0, a2, module);
    if (const Reason reason = silence(a0, a2, module.diagnostics); reason != Reason::none) {
        set_unsupported(module, reason);
        return module;
    }
    check(a2, cc_dmi, module.checks[2]);
    module.check_count = 3;
    module.doubts.check_missing |= module.checks[2].result == Check::Result::not_read;
    read_values(a0, a2, module);
    if (module.trusted())
        judge_all(module);
    return module;
}

} // namespace optics::sff8472
