// SPDX-License-Identifier: GPL-2.0-or-later
// SFF-8636 encoder: lower memory (table 6-1), pages 00h (table 6-15) and 03h (table 6-29).  Offsets of upper
// pages are given as in the document, 128 and up.
#include "module_files/checksums.hpp"
#include "sim/modules/encode_fields.hpp"

namespace sim {

namespace {

constexpr std::size_t upper = 128;
constexpr double power_unit_uw = 0.1;
constexpr double bias_unit_ua = 2;
constexpr std::uint8_t revision_compliance = 0x08; // 2.8 and later
constexpr std::uint8_t flat_memory = 1 << 2;
constexpr std::uint8_t monitoring_average_power =
    0x0c; // byte 220: receive power is the average, transmit power is there

std::uint16_t power_word(double dbm, const char *what)
{
    return to_unsigned_word(microwatts(dbm) / power_unit_uw, what);
}

Half lower_memory(const PathDescription &module)
{
    Half lower{};
    lower[0] = module.identifier;
    lower[1] = revision_compliance;
    if (!module.diagnostics) {
        lower[2] = flat_memory;
        return lower;
    }
    const Diagnostics &d = *module.diagnostics;
    put_word(lower, 22, to_signed_word(d.temperature_c * 256, "temperature_c"));
    put_word(lower, 26, to_unsigned_word(d.vcc_v * 10000, "vcc_v"));
    for (std::size_t lane = 0; lane < d.lanes.size(); ++lane) {
        const Lane &values = d.lanes[lane];
        put_word(lower, 34 + 2 * lane,
                 values.rx_dbm ? power_word(*values.rx_dbm, "rx_dbm") : std::uint16_t{0});
        put_word(lower, 42 + 2 * lane, to_unsigned_word(values.bias_ma * 1000 / bias_unit_ua, "bias_ma"));
        put_word(lower, 50 + 2 * lane, power_word(values.tx_dbm, "tx_dbm"));
    }
    return lower;
}

Half identification(const PathDescription &module)
{
    Half page{};
    const auto at = [&page](std::size_t byte) -> std::uint8_t & { return page.at(byte - upper); };
    at(128) = module.identifier;
    at(129) = module.extended_identifier;
    at(130) = module.connector;
    std::copy(module.compliance.begin(), module.compliance.end(), page.begin() + 131 - upper);
    at(139) = module.encoding;
    const unsigned hundreds = (module.bit_rate_mbd + 50) / 100;
    at(140) = static_cast<std::uint8_t>(hundreds < 255 ? hundreds : 255);
    at(142) = static_cast<std::uint8_t>(std::min(module.length_smf_km, 255U));
    at(143) = static_cast<std::uint8_t>(std::min(module.length_om3_m / 2, 255U));
    at(144) = static_cast<std::uint8_t>(std::min(module.length_om2_m, 255U));
    at(145) = static_cast<std::uint8_t>(std::min(module.length_om1_m, 255U));
    at(146) = static_cast<std::uint8_t>(std::min(module.length_cable_m, 255U));
    at(147) = module.device_technology;
    put_text(page, 148 - upper, 16, module.vendor);
    put_oui(page, 165 - upper, module.oui);
    put_text(page, 168 - upper, 16, module.part_number);
    put_text(page, 184 - upper, 2, module.revision);
    put_word(page, 186 - upper, to_unsigned_word(module.wavelength_nm * 20, "wavelength_nm"));
    at(192) = module.extended_compliance;
    std::copy(module.options.begin(), module.options.end(), page.begin() + 193 - upper);
    put_text(page, 196 - upper, 16, module.serial_number);
    put_text(page, 212 - upper, 8, module.date_code);
    if (module.diagnostics)
        at(220) = monitoring_average_power;
    if (hundreds >= 255)
        at(222) = static_cast<std::uint8_t>((module.bit_rate_mbd + 125) / 250);
    page[module_files::checksum_qsfp_base.place] = compute(page, module_files::checksum_qsfp_base);
    page[module_files::checksum_qsfp_extended.place] = compute(page, module_files::checksum_qsfp_extended);
    return page;
}

Half thresholds_page(const Thresholds &t)
{
    Half page{};
    put_limits(page, 128 - upper, t.temperature_c,
               [](double c) { return to_signed_word(c * 256, "temperature threshold"); });
    put_limits(page, 144 - upper, t.vcc_v,
               [](double v) { return to_unsigned_word(v * 10000, "vcc threshold"); });
    put_limits(page, 176 - upper, t.rx_dbm, [](double dbm) { return power_word(dbm, "rx threshold"); });
    put_limits(page, 184 - upper, t.bias_ma,
               [](double ma) { return to_unsigned_word(ma * 1000 / bias_unit_ua, "bias threshold"); });
    put_limits(page, 192 - upper, t.tx_dbm, [](double dbm) { return power_word(dbm, "tx threshold"); });
    return page;
}

} // namespace

void encode_sff8636(const PathDescription &module, ModuleImage &image)
{
    ModuleDevice device;
    device.paged = true;
    device.lower = lower_memory(module);
    device.pages[0x00] = identification(module);
    if (module.diagnostics)
        device.pages[0x03] = thresholds_page(module.diagnostics->thresholds);
    image.devices[address_a0] = std::move(device);
}

} // namespace sim
