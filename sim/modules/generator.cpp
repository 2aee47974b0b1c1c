// SPDX-License-Identifier: GPL-2.0-or-later
// Module descriptions in JSON.  Failure policy: a description with any mistake is refused as a whole.
#include "sim/modules/generator.hpp"

#include "platform/description/json_fields.hpp"
#include "sim/modules/module_description.hpp"

namespace sim {

namespace {

using json::Fields;

std::uint8_t byte_or(Fields &fields, const char *name, std::uint8_t fallback)
{
    return static_cast<std::uint8_t>(fields.number_or(name, 0, 255, fallback));
}

unsigned count_or_zero(Fields &fields, const char *name, long max)
{
    return static_cast<unsigned>(fields.number_or(name, 0, max, 0));
}

void read_limits(Fields &fields, const char *name, double min, double max, Limits &limits)
{
    if (!fields.has(name))
        return;
    const auto values = fields.reals(name, limits.size(), min, max);
    std::copy(values.begin(), values.end(), limits.begin());
}

Thresholds read_thresholds(Fields fields)
{
    Thresholds thresholds;
    read_limits(fields, "temperature_c", -128, 127.9, thresholds.temperature_c);
    read_limits(fields, "vcc_v", 0, 6.5, thresholds.vcc_v);
    read_limits(fields, "bias_ma", 0, 262, thresholds.bias_ma);
    read_limits(fields, "tx_dbm", -50, 11, thresholds.tx_dbm);
    read_limits(fields, "rx_dbm", -50, 8, thresholds.rx_dbm);
    fields.done();
    return thresholds;
}

void read_correction(Fields &fields, const char *name, Correction &correction)
{
    if (!fields.has(name))
        return;
    Fields entry = fields.object(name);
    correction.slope = entry.real_or("slope", 0.0625, 7.9375, 1);
    correction.offset = entry.real_or("offset", -128, 127.9375, 0);
    entry.done();
}

Constants read_constants(Fields fields)
{
    Constants constants;
    read_correction(fields, "temperature", constants.temperature);
    read_correction(fields, "vcc", constants.vcc);
    read_correction(fields, "bias", constants.bias);
    read_correction(fields, "tx", constants.tx);
    read_correction(fields, "rx", constants.rx);
    fields.done();
    return constants;
}

Lane read_lane(Fields &fields)
{
    Lane lane;
    lane.bias_ma = fields.real("bias_ma", 0, 262);
    lane.tx_dbm = fields.real("tx_dbm", -50, 11);
    if (fields.has("rx_dbm"))
        lane.rx_dbm = fields.real("rx_dbm", -50, 8);
    return lane;
}

Diagnostics read_diagnostics(Fields fields, bool qsfp)
{
    Diagnostics diagnostics;
    const std::string calibration = qsfp ? "internal" : fields.text_or("calibration", 8, "internal");
    if (calibration != "internal" && calibration != "external")
        fields.fail("calibration", "neither \"internal\" nor \"external\"");
    diagnostics.calibration = calibration == "external" ? Calibration::external : Calibration::internal;
    if (!qsfp) {
        const std::string units = fields.text_or("units", 8, "standard");
        if (units != "standard" && units != "double")
            fields.fail("units", "neither \"standard\" nor \"double\"");
        diagnostics.units = units == "double" ? Units::doubled : Units::standard;
    }
    diagnostics.temperature_c = fields.real("temperature_c", -128, 127.9);
    diagnostics.vcc_v = fields.real("vcc_v", 0, 6.5);
    if (qsfp) {
        for (Fields &entry : fields.objects("lanes")) {
            diagnostics.lanes.push_back(read_lane(entry));
            entry.done();
        }
        if (diagnostics.lanes.size() != 4)
            fields.fail("lanes", "not four");
    } else {
        diagnostics.lanes.push_back(read_lane(fields));
    }
    if (fields.has("thresholds"))
        diagnostics.thresholds = read_thresholds(fields.object("thresholds"));
    if (diagnostics.calibration == Calibration::external && fields.has("constants"))
        diagnostics.constants = read_constants(fields.object("constants"));
    fields.done();
    return diagnostics;
}

template <std::size_t N>
void read_bytes(Fields &fields, const char *name, std::size_t count, std::array<std::uint8_t, N> &bytes)
{
    if (!fields.has(name))
        return;
    const auto values = fields.numbers(name, count, 0, 255);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(values[i]);
}

// What `base` says holds unless `fields` say otherwise: a combo module's second path shares the label.
PathDescription read_path(Fields &fields, PathDescription path, bool qsfp)
{
    path.identifier = byte_or(fields, "identifier", path.identifier);
    path.extended_identifier = byte_or(fields, "extended_identifier", path.extended_identifier);
    path.connector = byte_or(fields, "connector", path.connector);
    read_bytes(fields, "compliance", 8, path.compliance);
    path.extended_compliance = byte_or(fields, "extended_compliance", path.extended_compliance);
    path.encoding = byte_or(fields, "encoding", path.encoding);
    path.bit_rate_mbd = static_cast<unsigned>(fields.number_or("bit_rate_mbd", 0, 63'500, path.bit_rate_mbd));
    path.length_smf_km = static_cast<unsigned>(fields.number_or("length_smf_km", 0, 254, path.length_smf_km));
    path.length_om3_m = count_or_zero(fields, "length_om3_m", 2540);
    path.length_om2_m = count_or_zero(fields, "length_om2_m", 2540);
    path.length_om1_m = count_or_zero(fields, "length_om1_m", 2540);
    path.length_cable_m = count_or_zero(fields, "length_cable_m", 254);
    path.vendor = fields.text_or("vendor", 16, path.vendor);
    path.part_number = fields.text_or("part_number", 16, path.part_number);
    path.revision = fields.text_or("revision", qsfp ? 2 : 4, path.revision);
    path.serial_number = fields.text_or("serial_number", 16, path.serial_number);
    path.date_code = fields.text_or("date_code", 8, path.date_code);
    path.oui = static_cast<std::uint32_t>(fields.number_or("oui", 0, 0xffffff, path.oui));
    path.wavelength_nm = fields.real_or("wavelength_nm", 0, qsfp ? 3276 : 65535, path.wavelength_nm);
    read_bytes(fields, "options", qsfp ? 3 : 2, path.options);
    if (qsfp)
        path.device_technology = byte_or(fields, "device_technology", 0);
    path.diagnostics.reset();
    if (fields.has("diagnostics"))
        path.diagnostics = read_diagnostics(fields.object("diagnostics"), qsfp);
    return path;
}

} // namespace

ModuleImage generate_module(std::string_view text, const std::string &file)
{
    const json::Owner root = json::parse(text, file);
    Fields fields(root.get(), file);
    ModuleImage image;
    image.name = fields.text("name", 63);
    const std::string kind = fields.text("class", 8);
    if (kind != "sfp" && kind != "qsfp")
        fields.fail("class", "neither \"sfp\" nor \"qsfp\"");
    const bool qsfp = kind == "qsfp";
    PathDescription defaults;
    if (qsfp) {
        defaults.identifier = 0x11;
        defaults.extended_identifier = 0xcc;
    }
    const PathDescription path = read_path(fields, defaults, qsfp);
    try {
        if (qsfp)
            encode_sff8636(path, image);
        else
            encode_sff8472(path, address_a0, image);
        if (!qsfp && fields.has("second_path")) {
            Fields second = fields.object("second_path");
            encode_sff8472(read_path(second, path, false), address_b0, image);
            second.done();
        }
    } catch (const ModuleError &error) {
        throw ModuleError(file + ": " + error.what());
    }
    fields.done();
    return image;
}

} // namespace sim
