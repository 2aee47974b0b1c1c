// SPDX-License-Identifier: GPL-2.0-or-later
// What a module says of itself, in natural units, each value with whether it means anything.
//
// The model owns what it holds, without an allocation: a decode of a module is a copy of some hundred bytes
// and a few sums.  Nothing in it is rounded, and names of codes are looked up where they are shown.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace optics {

enum class Family : std::uint8_t {
    unknown, // a memory whose layout is none of these
    sff8472, // SFP and its kin
    sff8636, // QSFP, QSFP+, QSFP28
    cmis,    // QSFP-DD, OSFP and others with CMIS
};

enum class State : std::uint8_t {
    ok,
    unsupported, // the module does not measure it, or this part of its memory was not read
    no_light,    // a power below what the module can measure
    failed,      // there should be a value, but what the memory holds is none
};

// Why a value is not ok.
enum class Reason : std::uint8_t {
    none,
    not_read,        // the part that holds it does not answer, or a dump does not contain it
    no_diagnostics,  // the module says that it measures nothing
    address_change,  // SFF-8472: the diagnostics only answer after an address change sequence
    flat_copper,     // SFF-8636: a cable without anything that measures
    copper,          // neither light nor laser
    not_measured,    // the module measures others, but not this one
    no_light,        // power word 0
    data_not_ready,  // the module is still starting
    bad_calibration, // external calibration with constants that are none
    implausible,     // what the constants make of it is beyond what any module can be at
};

// A value against the module's own thresholds.
enum class Judgement : std::uint8_t {
    none, // not judged: no value, no usable thresholds, or a memory that is not to be trusted
    normal,
    high_alarm,
    high_warning,
    low_warning,
    low_alarm,
};

// The module's own flags of one value; `known` is false where the module keeps none.
struct Flags {
    bool known : 1 = false;
    bool high_alarm : 1 = false;
    bool low_alarm : 1 = false;
    bool high_warning : 1 = false;
    bool low_warning : 1 = false;
};

struct Value {
    double value = 0; // only meaningful when ok, in the unit of its quantity
    State state = State::unsupported;
    Reason reason = Reason::not_read;
    Judgement judgement = Judgement::none;
    Flags flags;
};

enum class Quantity : std::uint8_t { temperature_c, voltage_v, bias_ma, tx_power_mw, rx_power_mw };
inline constexpr std::size_t quantities = 5;

// In the unit of the quantity.  In the order that all three standards store them in.
struct Thresholds {
    State state = State::unsupported;
    Reason reason = Reason::not_read;
    double high_alarm = 0;
    double low_alarm = 0;
    double high_warning = 0;
    double low_warning = 0;
};

// A status bit; none where the module does not say.
using Status = std::optional<bool>;

struct Lane {
    Value bias, tx_power, rx_power;
    Status tx_disabled, tx_fault, tx_los, rx_los;
};

inline constexpr std::size_t max_lanes = 8;

// A sum over a range of memory and the code stored for it.
struct Check {
    enum class Result : std::uint8_t { not_read, good, bad };
    std::string_view name; // as the standard calls it
    Result result = Result::not_read;
    std::uint8_t computed = 0;
    std::uint8_t stored = 0;
};

// A text field without the blanks and zeros that fill it up; any byte may stand in it, so it reaches a
// terminal or a file through escaped() only.
struct Text {
    std::array<char, 16> bytes{};
    std::uint8_t size = 0;
    [[nodiscard]] std::string_view view() const { return {bytes.data(), size}; }
};

enum class Medium : std::uint8_t {
    unknown,
    optical,
    passive_copper,
    active_copper,
    active_cable, // SFF-8472 does not tell whether there is copper or fibre in it
    base_t,       // a socket for a twisted pair
};

enum class Calibration : std::uint8_t { none, internal, external, unknown };

// Reach or length; 0 where the module says nothing.  A field at its largest means that or more.
struct Length {
    double metres = 0;
    bool more = false;
};

struct Lengths {
    Length smf, om5, om4, om3, om2, om1, cable;
};

struct Identity {
    std::uint8_t identifier = 0; // SFF-8024 table 4-1
    std::uint8_t ext_identifier = 0;
    std::uint8_t connector = 0; // SFF-8024 table 4-3
    std::uint8_t encoding = 0;  // SFF-8024 table 4-2
    std::array<std::uint8_t, 8> compliance{};
    std::uint8_t ext_compliance = 0;     // SFF-8024 table 4-4
    std::uint8_t rate_id = 0;            // SFF-8024 table 4-5
    std::optional<unsigned> rate_mbd;    // nominal
    std::optional<double> wavelength_nm; // none for copper and cables, and where the field is 0
    std::optional<double> wavelength_tolerance_nm;
    std::optional<std::uint16_t> cable_compliance;             // SFF-8472 bytes 60-61 of a cable
    std::optional<std::array<std::uint8_t, 4>> attenuation_db; // copper: see attenuation_ghz()
    std::optional<std::uint8_t> device_technology;             // SFF-8636 byte 147, CMIS byte 212
    Medium medium = Medium::unknown;
    Lengths lengths;
    Text vendor, part, revision, serial, date;
    std::array<std::uint8_t, 3> oui{};
    std::array<std::uint8_t, 3> options{};
    std::uint8_t revision_compliance = 0; // of the standard: SFF-8472 byte 94, SFF-8636 and CMIS byte 1
};

struct Diagnostics {
    std::uint8_t type = 0;             // SFF-8472 byte 92, SFF-8636 byte 220
    std::uint8_t enhanced_options = 0; // SFF-8472 byte 93
    bool implemented = false;
    bool address_change = false;
    Status average_power;     // of received power; else it is the modulation amplitude
    bool flat_memory = false; // SFF-8636 and CMIS: no pages above 0
    bool data_not_ready = false;
    Calibration calibration = Calibration::none;
    std::optional<std::uint8_t> status;       // SFF-8472 byte 110
    std::optional<std::uint8_t> module_state; // CMIS byte 3, bits 3-1
};

// What makes a memory doubtful.
struct Doubts {
    bool check_failed = false;        // a check code is wrong, or nothing was ever written
    bool check_missing = false;       // a check code was not read
    bool calibration_unknown = false; // values are shown as if calibrated by the module
    bool calibration_bad = false;     // constants of external calibration that are none
    bool data_not_ready = false;      // the module is still starting
    bool identifier_differs = false;  // lower memory and page 00h name two kinds of module
    bool identifier_reserved = false; // no module is known by it; decoded by the shape of its memory
    bool identity_missing = false;    // diagnostics without an identification

    [[nodiscard]] bool any() const
    {
        return check_failed || check_missing || calibration_unknown || calibration_bad || data_not_ready ||
               identifier_differs || identifier_reserved || identity_missing;
    }
};

struct Module {
    Family family = Family::unknown;
    Doubts doubts;
    std::array<Check, 3> checks{};
    std::uint8_t check_count = 0;
    Identity identity;
    Diagnostics diagnostics;
    Value temperature, voltage;
    std::array<Lane, max_lanes> lanes{};
    std::uint8_t lane_count = 0;
    std::array<Thresholds, quantities> thresholds{};
    bool quirk = false; // powers and currents were scaled by the table of quirks

    // Identity and values are what the module's maker wrote: check codes are there and right.
    [[nodiscard]] bool trusted() const
    {
        return !doubts.check_failed && !doubts.check_missing && !doubts.identity_missing;
    }
    [[nodiscard]] const Thresholds &thresholds_of(Quantity quantity) const
    {
        return thresholds[static_cast<std::size_t>(quantity)];
    }
};

// Power as people read it.  `mw` is above 0.
double dbm(double mw);

// Frequencies of the attenuations of a copper cable: SFF-8636 page 00h bytes 186-189, CMIS bytes 204-207.
constexpr std::array<double, 4> attenuation_ghz(Family family)
{
    return family == Family::cmis ? std::array{5.0, 7.0, 12.9, 25.8} : std::array{2.5, 5.0, 7.0, 12.9};
}

} // namespace optics
