// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/sff8636.hpp"

#include "optics/identity.hpp"
#include "optics/judgement.hpp"
#include "optics/sff8636_fields.hpp"

namespace optics::sff8636 {

namespace {

constexpr std::uint8_t no_separable_connector = 0x23; // SFF-8024 table 4-3

Medium medium_of(const Page &page00)
{
    const unsigned technology = page00.u8(id::device_technology) >> 4U;
    if (technology >= copper_linear)
        return Medium::active_copper;
    if (technology >= copper_unequalized)
        return Medium::passive_copper;
    return page00.u8(id::connector) == no_separable_connector ? Medium::active_cable : Medium::optical;
}

bool is_copper(Medium medium)
{
    return medium == Medium::passive_copper || medium == Medium::active_copper;
}

void read_wavelength(const Page &page00, Identity &identity)
{
    if (is_copper(identity.medium)) {
        read_bytes(page00, id::wavelength, identity.attenuation_db.emplace());
        return;
    }
    if (const unsigned word = page00.u16(id::wavelength); word != 0) {
        identity.wavelength_nm = word / 20.0;
        identity.wavelength_tolerance_nm = page00.u16(id::tolerance) / 200.0;
    }
}

void read_identity(const Page &lower, const Page &page00, Module &module)
{
    Identity &identity = module.identity;
    const std::uint8_t below = lower.u8(low::identifier);
    const std::uint8_t above = page00.u8(id::identifier);
    // Some leave the one in lower memory unwritten.
    identity.identifier = below != 0 ? below : above;
    module.doubts.identifier_differs = !page00.empty() && below != 0 && below != above;
    identity.revision_compliance = lower.u8(low::revision_compliance);
    identity.ext_identifier = page00.u8(id::ext_identifier);
    identity.connector = page00.u8(id::connector);
    read_bytes(page00, id::compliance, identity.compliance);
    identity.encoding = page00.u8(id::encoding);
    identity.rate_mbd = read_rate(page00, id::rate, id::rate_250);
    identity.rate_id = page00.u8(id::rate_id);
    identity.device_technology = page00.u8(id::device_technology);
    identity.medium = page00.empty() ? Medium::unknown : medium_of(page00);
    Lengths &lengths = identity.lengths;
    lengths.smf = read_length(page00, id::smf_km, 1000);
    lengths.om3 = read_length(page00, id::om3_2m, 2);
    lengths.om2 = read_length(page00, id::om2_m, 1);
    lengths.om1 = read_length(page00, id::om1_m, 1);
    if (identity.medium == Medium::optical)
        lengths.om4 = read_length(page00, id::om4_2m_or_cable_m, 2);
    else
        lengths.cable = read_length(page00, id::om4_2m_or_cable_m, 1);
    identity.vendor = read_text(page00, id::vendor, 16);
    read_bytes(page00, id::oui, identity.oui);
    identity.part = read_text(page00, id::part, 16);
    identity.revision = read_text(page00, id::revision, 2);
    read_wavelength(page00, identity);
    identity.ext_compliance = page00.u8(id::ext_compliance);
    read_bytes(page00, id::options, identity.options);
    identity.serial = read_text(page00, id::serial, 16);
    identity.date = read_text(page00, id::date, 8);
}

bool any_byte(const Page &page, std::size_t first, std::size_t count)
{
    return !sum_of(page.range(first, count)).all_zero;
}

// Whether, and why not, each quantity is measured; `none` when it is.
using Silences = std::array<Reason, quantities>;

// Byte 220 is silent in many modules that do measure, so a number that is not 0 proves it as well.
Silences silences_of(const Page &lower, const Page &page00, const Module &module)
{
    Silences result;
    if (!lower.has(low::temperature, low::live_end - low::temperature)) {
        result.fill(Reason::not_read);
        return result;
    }
    const bool copper = is_copper(module.identity.medium);
    if (module.diagnostics.flat_memory && copper) {
        result.fill(Reason::flat_copper);
        return result;
    }
    const bool told = module.identity.revision_compliance >= monitors_told_from;
    const auto claims = [&](unsigned bit) { return page00.bit(id::diagnostic_type, bit); };
    const bool temperature = lower.u16(low::temperature) != 0;
    const bool voltage = lower.u16(low::voltage) != 0;
    const bool tx_power = any_byte(lower, low::tx_power, 2 * lanes);
    const bool any = temperature || voltage || tx_power || any_byte(lower, low::rx_power, 4 * lanes);
    const auto measured_if = [&](bool measured) {
        return measured ? Reason::none : any ? Reason::not_measured : Reason::no_diagnostics;
    };
    const auto of_light = [&](bool measured) { return copper ? Reason::copper : measured_if(measured); };
    result[0] = measured_if(temperature || (told && claims(temperature_monitored)));
    result[1] = measured_if(voltage || (told && claims(voltage_monitored)));
    // Nothing claims bias and received power: every module that measures anything measures them.
    result[2] = of_light(any);
    result[3] = of_light(tx_power || claims(tx_power_monitored));
    result[4] = of_light(any);
    return result;
}

// High alarm, low alarm, high warning, low warning from the highest bit down.
constexpr std::array<Flags, 16> flags_of_nibble = [] {
    std::array<Flags, 16> result{};
    for (unsigned i = 0; i < result.size(); ++i)
        result[i] = {true, (i & 8U) != 0, (i & 4U) != 0, (i & 2U) != 0, (i & 1U) != 0};
    return result;
}();

void read_value(const Page &lower, Quantity quantity, Reason silence, Value &value)
{
    value.reason = silence;
    if (silence != Reason::none)
        return;
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    set_measured(value, false, (row.is_signed ? lower.s16(row.live) : lower.u16(row.live)) * row.unit,
                 flags_of_nibble[lower.u8(row.flags) >> 4U]);
}

void read_lanes(const Page &lower, Quantity quantity, Reason silence, Value Lane::*member, Module &module)
{
    if (silence != Reason::none) {
        for (std::size_t i = 0; i < lanes; ++i)
            (module.lanes[i].*member).reason = silence;
        return;
    }
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    const Bytes words = lower.range(row.live, 2 * lanes);
    // Lane 1 in the high nibble of the first byte.
    const unsigned nibbles = lower.u16(row.flags);
    for (std::size_t i = 0; i < lanes; ++i) {
        const int word = words[2 * i] << 8 | words[2 * i + 1];
        set_measured(module.lanes[i].*member, is_power(quantity), word * row.unit,
                     flags_of_nibble[nibbles >> (12 - 4 * i) & 0x0fU]);
    }
}

void set_not_ready(Value &value)
{
    if (value.state != State::unsupported)
        value = {.state = State::failed, .reason = Reason::data_not_ready, .flags = value.flags};
}

void read_values(const Page &lower, const Page &page00, Module &module)
{
    const Silences silences = silences_of(lower, page00, module);
    module.diagnostics.implemented = std::ranges::count(silences, Reason::none) != 0;
    read_value(lower, Quantity::temperature_c, silences[0], module.temperature);
    read_value(lower, Quantity::voltage_v, silences[1], module.voltage);
    read_lanes(lower, Quantity::bias_ma, silences[2], &Lane::bias, module);
    read_lanes(lower, Quantity::tx_power_mw, silences[3], &Lane::tx_power, module);
    read_lanes(lower, Quantity::rx_power_mw, silences[4], &Lane::rx_power, module);
    if (!module.diagnostics.data_not_ready)
        return;
    set_not_ready(module.temperature);
    set_not_ready(module.voltage);
    for (Lane &lane : module.lanes)
        for (Value *value : {&lane.bias, &lane.tx_power, &lane.rx_power})
            set_not_ready(*value);
}

void read_status(const Page &lower, Module &module)
{
    if (!lower.has(low::tx_disable))
        return;
    for (unsigned i = 0; i < lanes; ++i) {
        Lane &lane = module.lanes[i];
        lane.rx_los = lower.bit(low::los, i);
        lane.tx_los = lower.bit(low::los, lanes + i);
        lane.tx_fault = lower.bit(low::fault, i);
        lane.tx_disabled = lower.bit(low::tx_disable, i);
    }
}

void read_thresholds(const Page &page03, Module &module)
{
    for (std::size_t i = 0; i < quantities; ++i) {
        const Row &row = rows[i];
        if (!page03.has(row.thresholds, 8))
            continue;
        const auto at = [&](std::size_t word) {
            const std::size_t byte = row.thresholds + 2 * word;
            return (row.is_signed ? page03.s16(byte) : page03.u16(byte)) * row.unit;
        };
        module.thresholds[i] = {State::ok, Reason::none, at(0), at(1), at(2), at(3)};
    }
}

} // namespace

Module decode(const Memory &memory)
{
    Module module;
    module.family = Family::sff8636;
    module.lane_count = lanes;
    const Page lower(memory.lower);
    const Page page00(memory.page00, upper);
    const Page page03(memory.page03, upper);
    add_check(page00, cc_base, module);
    add_check(page00, cc_ext, module);
    read_identity(lower, page00, module);
    Diagnostics &diagnostics = module.diagnostics;
    diagnostics.type = page00.u8(id::diagnostic_type);
    diagnostics.flat_memory = lower.bit(low::status, flat_memory);
    diagnostics.data_not_ready = lower.bit(low::status, data_not_ready);
    read_values(lower, page00, module);
    if (diagnostics.implemented) {
        diagnostics.calibration = Calibration::internal;
        diagnostics.average_power = page00.bit(id::diagnostic_type, average_power);
        module.doubts.data_not_ready = diagnostics.data_not_ready;
    }
    if (!diagnostics.flat_memory) {
        read_status(lower, module);
        read_thresholds(page03, module);
    }
    module.doubts.identity_missing = page00.empty();
    if (module.trusted())
        judge_all(module);
    return module;
}

} // namespace optics::sff8636
