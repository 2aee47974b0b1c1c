// SPDX-License-Identifier: GPL-2.0-or-later
// SFF-8472 encoder: A0h identification (tables 4-1 and on), A2h diagnostics (tables 9-1 and on).
#include "module_files/checksums.hpp"
#include "sim/modules/encode_fields.hpp"

namespace sim {

namespace {

constexpr double rx_unit_uw = 0.1;

// Byte 92: diagnostics are there, calibrated by the module or by the reader, power is the average.
constexpr std::uint8_t monitoring_internal = 0x68;
constexpr std::uint8_t monitoring_external = 0x58;
constexpr std::uint8_t enhanced_options_flags = 0x80; // alarm and warning flags are kept
constexpr std::uint8_t sff8472_revision = 0x08;       // 12.3

// What one bit is worth.
struct BitWorth {
    double tx_uw;
    double bias_ua;
};

BitWorth worth_of(Units units)
{
    return units == Units::doubled ? BitWorth{0.2, 4} : BitWorth{0.1, 2};
}

std::uint8_t length_field(unsigned metres, unsigned unit, const char *what)
{
    if (metres / unit > 254)
        throw ModuleError(format("%s of %u m does not fit its field", what, metres));
    return static_cast<std::uint8_t>(metres / unit);
}

Half identification(const PathDescription &path)
{
    Half a0{};
    a0[0] = path.identifier;
    a0[1] = path.extended_identifier;
    a0[2] = path.connector;
    std::copy(path.compliance.begin(), path.compliance.end(), a0.begin() + 3);
    a0[11] = path.encoding;
    const unsigned hundreds = (path.bit_rate_mbd + 50) / 100;
    a0[12] = static_cast<std::uint8_t>(hundreds < 255 ? hundreds : 255);
    a0[14] = static_cast<std::uint8_t>(std::min(path.length_smf_km, 254U));
    a0[15] = static_cast<std::uint8_t>(std::min(path.length_smf_km * 10, 255U));
    a0[16] = length_field(path.length_om2_m, 10, "length_om2_m");
    a0[17] = length_field(path.length_om1_m, 10, "length_om1_m");
    a0[18] = length_field(path.length_cable_m, 1, "length_cable_m");
    a0[19] = length_field(path.length_om3_m, 10, "length_om3_m");
    put_text(a0, 20, 16, path.vendor);
    a0[36] = path.extended_compliance;
    put_oui(a0, 37, path.oui);
    put_text(a0, 40, 16, path.part_number);
    put_text(a0, 56, 4, path.revision);
    put_word(a0, 60, to_unsigned_word(path.wavelength_nm, "wavelength_nm"));
    a0[64] = path.options[0];
    a0[65] = path.options[1];
    if (hundreds >= 255)
        a0[66] = static_cast<std::uint8_t>((path.bit_rate_mbd + 125) / 250);
    put_text(a0, 68, 16, path.serial_number);
    put_text(a0, 84, 8, path.date_code);
    if (path.diagnostics) {
        a0[92] = path.diagnostics->calibration == Calibration::external ? monitoring_external
                                                                        : monitoring_internal;
        a0[93] = enhanced_options_flags;
        a0[94] = sff8472_revision;
    }
    a0[module_files::checksum_base.place] = compute(a0, module_files::checksum_base);
    a0[module_files::checksum_extended.place] = compute(a0, module_files::checksum_extended);
    return a0;
}

std::uint16_t fixed_point(double value, const char *what)
{
    if (std::fmod(value * 16, 1) != 0)
        throw ModuleError(format("%s: %g is not a multiple of 1/16", what, value));
    return to_signed_word(value * 256, what);
}

void put_correction(Half &a2, std::size_t reg, const Correction &correction, const char *what)
{
    put_word(a2, reg, fixed_point(correction.slope, what));
    put_word(a2, reg + 2, fixed_point(correction.offset, what));
}

// IEEE 754 single precision, big-endian.
void put_float(Half &a2, std::size_t reg, float value)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    put_word(a2, reg, static_cast<std::uint16_t>(bits >> 16));
    put_word(a2, reg + 2, static_cast<std::uint16_t>(bits));
}

// Receive power has two sets of constants: the polynomial of bytes 56-75, and slope and offset in bytes
// 92-94, from which readers of PON modules take them.  Byte 95, the lower half of that offset, is the check
// code, worth less than one least significant bit there.
void put_constants(Half &a2, const Constants &constants)
{
    put_float(a2, 56, 0);
    put_float(a2, 60, 0);
    put_float(a2, 64, 0);
    put_float(a2, 68, static_cast<float>(constants.rx.slope));
    put_float(a2, 72, static_cast<float>(constants.rx.offset));
    put_correction(a2, 76, constants.bias, "bias");
    put_correction(a2, 80, constants.tx, "tx");
    put_correction(a2, 84, constants.temperature, "temperature");
    put_correction(a2, 88, constants.vcc, "vcc");
    put_word(a2, 92, fixed_point(constants.rx.slope, "rx"));
    if (std::fmod(constants.rx.offset, 1) != 0)
        throw ModuleError("rx: the offset has no fraction");
    a2[94] = static_cast<std::uint8_t>(to_word(constants.rx.offset, -128, 127, "rx"));
}

// The alarm or warning flags (bytes 112-113, 116-117): a high and a low bit for each of five values.
void put_flags(Half &a2, std::size_t reg, const Diagnostics &diagnostics, std::size_t high)
{
    const Lane &lane = diagnostics.lanes.front();
    const Thresholds &t = diagnostics.thresholds;
    const double rx = lane.rx_dbm.value_or(-40);
    const struct {
        double value;
        const Limits &limits;
    } fields[] = {{diagnostics.temperature_c, t.temperature_c},
                  {diagnostics.vcc_v, t.vcc_v},
                  {lane.bias_ma, t.bias_ma},
                  {lane.tx_dbm, t.tx_dbm},
                  {rx, t.rx_dbm}};
    unsigned bits = 0;
    unsigned bit = 1U << 15;
    for (const auto &[value, limits] : fields) {
        bits |= value > limits[high] ? bit : 0;
        bits |= value < limits[high + 1] ? bit >> 1 : 0;
        bit >>= 2;
    }
    put_word(a2, reg, static_cast<std::uint16_t>(bits));
}

Half diagnostics_page(const Diagnostics &diagnostics)
{
    Half a2{};
    const BitWorth bit = worth_of(diagnostics.units);
    const Thresholds &t = diagnostics.thresholds;
    put_limits(a2, 0, t.temperature_c,
               [](double c) { return to_signed_word(c * 256, "temperature threshold"); });
    put_limits(a2, 8, t.vcc_v, [](double v) { return to_unsigned_word(v * 10000, "vcc threshold"); });
    put_limits(a2, 16, t.bias_ma,
               [&](double ma) { return to_unsigned_word(ma * 1000 / bit.bias_ua, "bias threshold"); });
    put_limits(a2, 24, t.tx_dbm,
               [&](double dbm) { return to_unsigned_word(microwatts(dbm) / bit.tx_uw, "tx threshold"); });
    put_limits(a2, 32, t.rx_dbm,
               [](double dbm) { return to_unsigned_word(microwatts(dbm) / rx_unit_uw, "rx threshold"); });

    const bool external = diagnostics.calibration == Calibration::external;
    const Constants constants = external ? diagnostics.constants : Constants{};
    put_constants(a2, constants);
    // What the converter delivers, so that the correction gives the described value.
    const auto raw = [](double value, const Correction &c) { return (value - c.offset) / c.slope; };
    const Lane &lane = diagnostics.lanes.front();
    put_word(a2, 96,
             to_signed_word(raw(diagnostics.temperature_c * 256, constants.temperature), "temperature_c"));
    put_word(a2, 98, to_unsigned_word(raw(diagnostics.vcc_v * 10000, constants.vcc), "vcc_v"));
    put_word(a2, 100, to_unsigned_word(raw(lane.bias_ma * 1000 / bit.bias_ua, constants.bias), "bias_ma"));
    put_word(a2, 102, to_unsigned_word(raw(microwatts(lane.tx_dbm) / bit.tx_uw, constants.tx), "tx_dbm"));
    const double rx = lane.rx_dbm ? raw(microwatts(*lane.rx_dbm) / rx_unit_uw, constants.rx) : 0;
    put_word(a2, 104, to_unsigned_word(rx, "rx_dbm"));
    put_flags(a2, 112, diagnostics, 0);
    put_flags(a2, 116, diagnostics, 2);
    a2[module_files::checksum_diagnostics.place] = compute(a2, module_files::checksum_diagnostics);
    return a2;
}

} // namespace

void encode_sff8472(const PathDescription &path, std::uint8_t a0, ModuleImage &image)
{
    ModuleDevice identity;
    identity.lower = identification(path);
    image.devices[a0] = std::move(identity);
    if (!path.diagnostics)
        return;
    ModuleDevice diagnostics;
    diagnostics.paged = true;
    diagnostics.lower = diagnostics_page(*path.diagnostics);
    image.devices[static_cast<std::uint8_t>(a0 + 1)] = std::move(diagnostics);
}

} // namespace sim
