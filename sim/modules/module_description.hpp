// SPDX-License-Identifier: GPL-2.0-or-later
// What a module is, in natural units, and the encoders that make its memory.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/modules/module_image.hpp"

namespace sim {

// High alarm, low alarm, high warning, low warning.
using Limits = std::array<double, 4>;

struct Thresholds {
    Limits temperature_c{95, -10, 90, -5};
    Limits vcc_v{3.6, 3.0, 3.5, 3.1};
    Limits bias_ma{120, 1, 110, 2};
    Limits tx_dbm{8, 0, 7, 1};
    Limits rx_dbm{-5, -33, -6, -32};
};

// Fixed point 8.8, in least significant bits of the field it corrects; multiples of 1/16, as readers of
// these modules drop the lower bits.
struct Correction {
    double slope = 1;
    double offset = 0;
};

struct Constants {
    Correction temperature, vcc, bias, tx, rx;
};

enum class Calibration { internal, external };

// What one bit of transmit power and bias is worth: 0.1 uW and 2 uA (SFF-8472 9.4), or twice that, as some
// makers have it for the range that their lasers need.
enum class Units { standard, doubled };

struct Lane {
    double bias_ma = 0;
    double tx_dbm = 0;
    std::optional<double> rx_dbm; // none: no light
};

struct Diagnostics {
    Calibration calibration = Calibration::internal;
    Units units = Units::standard; // SFP only
    double temperature_c = 0;      // signed
    double vcc_v = 0;
    std::vector<Lane> lanes; // one for SFP, four for QSFP
    Thresholds thresholds;
    Constants constants; // external calibration only
};

// Identification and readings of one optical path.
struct PathDescription {
    std::uint8_t identifier = 0x03; // SFF-8024 table 4-1
    std::uint8_t extended_identifier = 0x04;
    std::uint8_t connector = 0x07; // SFF-8024 table 4-3
    std::array<std::uint8_t, 8> compliance{};
    std::uint8_t extended_compliance = 0; // SFF-8024 table 4-4
    std::uint8_t encoding = 0;            // SFF-8024 table 4-2
    unsigned bit_rate_mbd = 0;
    unsigned length_smf_km = 0;
    unsigned length_om3_m = 0;
    unsigned length_om2_m = 0;
    unsigned length_om1_m = 0;
    unsigned length_cable_m = 0;
    std::string vendor, part_number, revision, serial_number, date_code; // date: YYMMDD, two of the lot
    std::uint32_t oui = 0;
    double wavelength_nm = 0;
    std::array<std::uint8_t, 3> options{}; // SFP: 64-65; QSFP: 193-195
    std::uint8_t device_technology = 0;    // QSFP byte 147
    std::optional<Diagnostics> diagnostics;
};

// Both memories of an SFP path at `a0` and `a0` + 1; the second is only there with diagnostics.  Nothing but
// the description decides on units: a reader that derives them from wavelength or address is put to the test.
// Throws ModuleError when a value does not fit its field.
void encode_sff8472(const PathDescription &path, std::uint8_t a0, ModuleImage &image);

// Memory of a QSFP module: lower memory, pages 00h and, with diagnostics, 03h.  Throws ModuleError.
void encode_sff8636(const PathDescription &module, ModuleImage &image);

} // namespace sim
