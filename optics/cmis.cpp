// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/cmis.hpp"

#include "optics/cmis_fields.hpp"
#include "optics/identity.hpp"
#include "optics/judgement.hpp"

namespace optics::cmis {

namespace {

struct Pages {
    Page lower, page00, page01, page02, page11;
};

Medium medium_of(const Pages &pages)
{
    const std::uint8_t technology = pages.page00.u8(id::technology);
    if (technology >= copper_unequalized && technology <= copper_last)
        return technology < copper_limiting ? Medium::passive_copper : Medium::active_copper;
    switch (pages.lower.u8(low::media_type)) {
    case media_passive_copper:
        return Medium::passive_copper;
    case media_active_cable:
        return Medium::active_cable;
    case media_base_t:
        return Medium::base_t;
    default:
        return Medium::optical;
    }
}

bool is_copper(Medium medium)
{
    return medium == Medium::passive_copper || medium == Medium::active_copper || medium == Medium::base_t;
}

// Bits 7-6 choose the unit of bits 5-0.
Length scaled_length(std::uint8_t byte, const std::array<double, 4> &units_m)
{
    return {(byte & 0x3fU) * units_m[byte >> 6U], (byte & 0x3fU) == 0x3fU && byte >> 6U == 3};
}

void read_lengths(const Pages &pages, Lengths &lengths)
{
    lengths.cable = scaled_length(pages.page00.u8(id::cable_length), {0.1, 1, 10, 100});
    lengths.smf = scaled_length(pages.page01.u8(advertised::smf_length), {100, 1000, 10000, 0});
    lengths.om5 = read_length(pages.page01, advertised::om5_2m, 2);
    lengths.om4 = read_length(pages.page01, advertised::om4_2m, 2);
    lengths.om3 = read_length(pages.page01, advertised::om3_2m, 2);
    lengths.om2 = read_length(pages.page01, advertised::om2_m, 1);
}

void read_identity(const Pages &pages, Module &module)
{
    Identity &identity = module.identity;
    const std::uint8_t below = pages.lower.u8(low::identifier);
    const std::uint8_t above = pages.page00.u8(id::identifier);
    identity.identifier = below != 0 ? below : above;
    module.doubts.identifier_differs = !pages.page00.empty() && below != 0 && below != above;
    identity.revision_compliance = pages.lower.u8(low::revision_compliance);
    identity.vendor = read_text(pages.page00, id::vendor, 16);
    read_bytes(pages.page00, id::oui, identity.oui);
    identity.part = read_text(pages.page00, id::part, 16);
    identity.revision = read_text(pages.page00, id::revision, 2);
    identity.serial = read_text(pages.page00, id::serial, 16);
    identity.date = read_text(pages.page00, id::date, 8);
    identity.connector = pages.page00.u8(id::connector);
    identity.device_technology = pages.page00.u8(id::technology);
    identity.medium = pages.page00.empty() ? Medium::unknown : medium_of(pages);
    if (is_copper(identity.medium)) {
        if (identity.medium != Medium::base_t)
            read_bytes(pages.page00, id::attenuation, identity.attenuation_db.emplace());
    } else if (const unsigned word = pages.page01.u16(advertised::wavelength); word != 0) {
        identity.wavelength_nm = word / 20.0;
        identity.wavelength_tolerance_nm = pages.page01.u16(advertised::tolerance) / 200.0;
    }
    read_lengths(pages, identity.lengths);
}

// Times the unit of 2 uA.
double bias_scale(const Page &page01)
{
    switch (page01.u8(advertised::lane_monitors) >> 3U & 3U) {
    case 1:
        return 2;
    case 2:
        return 4;
    default:
        return 1;
    }
}

double unit_of(const Pages &pages, Quantity quantity)
{
    const double unit = rows[static_cast<std::size_t>(quantity)].unit;
    return quantity == Quantity::bias_ma ? unit * bias_scale(pages.page01) : unit;
}

double word(const Page &page, const Row &row, std::size_t byte)
{
    return row.is_signed ? page.s16(byte) : page.u16(byte);
}

bool claims(const Page &page01, Quantity quantity)
{
    switch (quantity) {
    case Quantity::temperature_c:
        return page01.bit(advertised::module_monitors, 0);
    case Quantity::voltage_v:
        return page01.bit(advertised::module_monitors, 1);
    case Quantity::bias_ma:
        return page01.bit(advertised::lane_monitors, 0);
    case Quantity::tx_power_mw:
        return page01.bit(advertised::lane_monitors, 1);
    case Quantity::rx_power_mw:
        break;
    }
    return page01.bit(advertised::lane_monitors, 2);
}

bool any_byte(const Page &page, std::size_t first, std::size_t count)
{
    return !sum_of(page.range(first, count)).all_zero;
}

// Whether, and why not, a quantity is measured; `none` when it is.  Without page 01h, which claims it, a
// number that is not 0 proves it.
Reason silence(const Pages &pages, const Module &module, Quantity quantity)
{
    const bool of_lanes = quantity >= Quantity::bias_ma;
    const Page &page = of_lanes ? pages.page11 : pages.lower;
    const std::size_t live = rows[static_cast<std::size_t>(quantity)].live;
    const std::size_t size = of_lanes ? 2 * lanes : 2;
    if (of_lanes && is_copper(module.identity.medium))
        return Reason::copper;
    if (!page.has(live, size))
        return Reason::not_read;
    return claims(pages.page01, quantity) || any_byte(page, live, size) ? Reason::none : Reason::not_measured;
}

Value module_value(const Pages &pages, const Module &module, Quantity quantity, unsigned flags_shift)
{
    if (const Reason reason = silence(pages, module, quantity); reason != Reason::none)
        return no_value(State::unsupported, reason);
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    const unsigned bits = pages.lower.u8(low::module_flags) >> flags_shift;
    Value value;
    set_measured(value, false, word(pages.lower, row, row.live) * row.unit,
                 Flags{true, (bits & 1U) != 0, (bits & 2U) != 0, (bits & 4U) != 0, (bits & 8U) != 0});
    return value;
}

Value lane_value(const Pages &pages, const Module &module, Quantity quantity, unsigned lane)
{
    if (const Reason reason = silence(pages, module, quantity); reason != Reason::none)
        return no_value(State::unsupported, reason);
    const Row &row = rows[static_cast<std::size_t>(quantity)];
    const auto flag = [&](std::size_t i) { return pages.page11.bit(row.flags + i, lane); };
    Value value;
    set_measured(value, is_power(quantity),
                 word(pages.page11, row, row.live + 2 * lane) * unit_of(pages, quantity),
                 Flags{true, flag(0), flag(1), flag(2), flag(3)});
    return value;
}

// Those of the first application, and any further one that measures something.
std::uint8_t lane_count(const Pages &pages)
{
    std::size_t count = std::min<std::size_t>(pages.lower.u8(low::lane_counts) & 0x0fU, lanes);
    for (std::size_t lane = count; lane < lanes; ++lane)
        for (std::size_t i = static_cast<std::size_t>(Quantity::bias_ma); i < quantities; ++i)
            if (pages.page11.u16(rows[i].live + 2 * lane) != 0)
                count = lane + 1;
    return static_cast<std::uint8_t>(count);
}

void read_lanes(const Pages &pages, Module &module)
{
    module.lane_count = lane_count(pages);
    for (unsigned i = 0; i < module.lane_count; ++i) {
        Lane &lane = module.lanes[i];
        lane.bias = lane_value(pages, module, Quantity::bias_ma, i);
        lane.tx_power = lane_value(pages, module, Quantity::tx_power_mw, i);
        lane.rx_power = lane_value(pages, module, Quantity::rx_power_mw, i);
        if (!pages.page11.has(lane_flags::rx_los))
            continue;
        lane.tx_fault = pages.page11.bit(lane_flags::tx_fault, i);
        lane.tx_los = pages.page11.bit(lane_flags::tx_los, i);
        lane.rx_los = pages.page11.bit(lane_flags::rx_los, i);
    }
}

void read_thresholds(const Pages &pages, Module &module)
{
    for (std::size_t i = 0; i < quantities; ++i) {
        const Row &row = rows[i];
        if (!pages.page02.has(row.thresholds, 8))
            continue;
        const double unit = unit_of(pages, static_cast<Quantity>(i));
        const auto at = [&](std::size_t k) { return word(pages.page02, row, row.thresholds + 2 * k) * unit; };
        module.thresholds[i] = {State::ok, Reason::none, at(0), at(1), at(2), at(3)};
    }
}

void read_checks(const Pages &pages, Module &module)
{
    add_check(pages.page00, page00_check, module);
    if (!pages.page01.empty())
        add_check(pages.page01, page01_check, module);
    if (!pages.page02.empty())
        add_check(pages.page02, page02_check, module);
}

} // namespace

Module decode(const Memory &memory)
{
    Module module;
    module.family = Family::cmis;
    Diagnostics &diagnostics = module.diagnostics;
    diagnostics.flat_memory = Page(memory.lower).bit(low::status, flat_memory);
    // Pages above 0 of a flat memory are copies of page 00h.
    const auto above = [&](Bytes page) { return Page(diagnostics.flat_memory ? Bytes{} : page, upper); };
    const Pages pages{Page(memory.lower), Page(memory.page00, upper), above(memory.page01),
                      above(memory.page02), above(memory.page11)};
    read_checks(pages, module);
    read_identity(pages, module);
    diagnostics.module_state = pages.lower.u8(low::module_state) >> 1U & 7U;
    module.temperature = module_value(pages, module, Quantity::temperature_c, 0);
    module.voltage = module_value(pages, module, Quantity::voltage_v, 4);
    read_lanes(pages, module);
    diagnostics.implemented =
        module.temperature.state != State::unsupported || module.voltage.state != State::unsupported;
    diagnostics.calibration = diagnostics.implemented ? Calibration::internal : Calibration::none;
    read_thresholds(pages, module);
    module.doubts.identity_missing = pages.page00.empty();
    if (module.trusted())
        judge_all(module);
    return module;
}

} // namespace optics::cmis
