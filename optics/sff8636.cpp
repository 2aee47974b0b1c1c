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

// Whether, and why not, a quantity is measured; `none` when it is.  Byte 220 is silent in many modules that
// do measure, so a number that is not 0 proves it as well.
class Monitors {
public:
    Monitors(const Page &lower, const Page &page00, const Module &module)
        : lower_(lower), type_(page00.u8(id::diagnostic_type)), medium_(module.identity.medium),
          told_(module.identity.revision_compliance >= monitors_told_from),
          any_(any_byte(lower, low::temperature, low::live_end - low::temperature)),
          flat_(module.diagnostics.flat_memory)
    {
    }

    [[nodiscard]] Reason silence(Quantity quantity) const
    {
        if (!lower_.has(low::temperature, low::live_end - low::temperature))
            return Reason::not_read;
        if (flat_ && is_copper(medium_))
            return Reason::flat_copper;
        switch (quantity) {
        case Quantity::temperature_c:
            return measured_if((told_ && claims(temperature_monitored)) ||
                               any_byte(lower_, low::temperature, 2));
        case Quantity::voltage_v:
            return measured_if((told_ && claims(voltage_monitored)) || any_byte(lower_, low::voltage, 2));
        case Quantity::tx_power_mw:
            if (is_copper(medium_))
                return Reason::copper;
            return measured_if(claims(tx_power_monitored) || any_byte(lower_, low::tx_power, 2 * lanes));
        case Quantity::bias_ma:
        case Quantity::rx_power_mw:
            break;
        }
        // Every module that measures anything measures these; nothing claims them.
        return is_copper(medium_) ? Reason::copper : measured_if(any_);
    }

    [[nodiscard]] bool any() const { return any_; }

private:
    [[nodiscard]] bool claims(unsigned bit) const { return (type_ >> bit & 1U) != 0; }
    [[nodiscard]] Reason measured_if(bool measured) const
    {
        return measured ? Reason::none : any_ ? Reason::not_measured : Reason::no_diagnostics;
    }

    const Page &lower_;
    unsigned type_;
    Medium medium_;
    bool told_, any_, flat_;
};

Flags read_flags(unsigned nibble)
{
    return {true, (nibble & 8U) != 0, (nibble & 4U) != 0, (nibble & 2U) != 0, (nibble & 1U) != 0};
}

// Lane 1 in the high nibble of the first byte.
unsigned flag_nibble(const Page &lower, std::size_t flags, std::size_t lane)
{
    const unsigned byte = lower.u8(flags + lane / 2);
    return lane % 2 == 0 ? byte >> 4U : byte & 0x0fU;
}

Value read_value(const Page &lower, Quantity quantity, std::size_t lane, Reason silence, bool ready)
{
    if (silence != Reason::none)
        return no_value(State::unsupported, silence);
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    const std::size_t at = row.live + 2 * lane;
    Value value = !ready ? no_value(State::failed, Reason::data_not_ready)
                         : measured(quantity, (row.is_signed ? lower.s16(at) : lower.u16(at)) * row.unit);
    value.flags = read_flags(flag_nibble(lower, row.flags, lane));
    return value;
}

void read_values(const Page &lower, const Page &page00, Module &module)
{
    const Monitors monitors(lower, page00, module);
    const bool ready = !module.diagnostics.data_not_ready;
    const auto silence = [&](Quantity quantity) { return monitors.silence(quantity); };
    module.temperature =
        read_value(lower, Quantity::temperature_c, 0, silence(Quantity::temperature_c), ready);
    module.voltage = read_value(lower, Quantity::voltage_v, 0, silence(Quantity::voltage_v), ready);
    module.diagnostics.implemented = module.temperature.state != State::unsupported ||
                                     module.voltage.state != State::unsupported ||
                                     silence(Quantity::rx_power_mw) == Reason::none;
    const Reason no_bias = silence(Quantity::bias_ma);
    const Reason no_tx = silence(Quantity::tx_power_mw);
    const Reason no_rx = silence(Quantity::rx_power_mw);
    for (std::size_t i = 0; i < lanes; ++i) {
        Lane &lane = module.lanes[i];
        lane.bias = read_value(lower, Quantity::bias_ma, i, no_bias, ready);
        lane.tx_power = read_value(lower, Quantity::tx_power_mw, i, no_tx, ready);
        lane.rx_power = read_value(lower, Quantity::rx_power_mw, i, no_rx, ready);
    }
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
    add_check(module, check(page00, cc_base));
    add_check(module, check(page00, cc_ext));
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
