// SPDX-License-Identifier: GPL-2.0-or-later
// Text displays of a module's identification (see idprom_text.hpp).
#include "diagd/transceiver/show/idprom_text.hpp"

#include "base/printable.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/show/text_rows.hpp"

#include <algorithm>
#include <string_view>

namespace diagd {

namespace {

constexpr std::string_view block_rule = "-----------------------------------------------------";
constexpr std::string_view dump_rule = "===========================================";
constexpr std::size_t dump_line_bytes = 10;

void append_row(std::string &out, const char *label, std::string_view value)
{
    append(out, "%-31s:    ", label);
    append_line(out, value);
}

// A text that the module's maker has chosen.
void append_module_text(std::string &out, const char *label, std::string_view text)
{
    append_row(out, label, base::printable(text));
}

std::string hex_list(std::span<const std::uint8_t> bytes, const char *prefix)
{
    std::string list;
    for (const std::uint8_t byte : bytes)
        append(list, "%s%s%.2x", list.empty() ? "" : " ", prefix, byte);
    return list;
}

std::string hex(std::uint8_t byte)
{
    return hex_list({&byte, 1}, "0x");
}

const char *type_text(const Idprom &idprom)
{
    const GeneralInformation &general = idprom.general;
    if (idprom.family == ModuleFamily::sff8636)
        return ethernet_compliance_str(general.compliance[0], general.extended_compliance);
    return sff_8472_ethernet_compliance_str(general.compliance.data(),
                                            static_cast<std::uint8_t>(general.extended_compliance));
}

const char *encoding_text(const Idprom &idprom)
{
    const std::uint8_t code = idprom.general.encoding;
    return idprom.family == ModuleFamily::sff8636 ? sff_8636_encoding_str(code) : sff_8472_encoding_str(code);
}

void append_general(std::string &out, const Idprom &idprom)
{
    const GeneralInformation &general = idprom.general;
    append_line(out, "General Information");
    append_line(out, block_rule);
    append_row(out, "Identifier", transceiver_identifier_str(general.identifier));
    append_row(out, "Connector", connector_str(general.connector));
    append_row(out, "Wavelength(nm)", std::to_string(general.wavelength_nm));
    append_row(out, "Transceiver Type", type_text(idprom));
    append_row(out, "Transfer Distance(m)", hex_list(general.distance, "0x"));
    append_row(out, "Digital Diagnostic Monitoring", hex(general.monitoring));
    append_row(out, "Transceiver", hex_list(general.compliance, "0x"));
    append_row(out, "Encoding", encoding_text(idprom));
    append_row(out, "BR_Norminal", hex(general.bit_rate));
}

void append_vendor(std::string &out, const Idprom &idprom)
{
    append_module_text(out, "Vendor Name", idprom.vendor_name);
    append_row(out, "Vendor OUI", hex_list(idprom.vendor_oui, ""));
    append_module_text(out, "Vendor Part Number", idprom.part_number);
    append_module_text(out, "Vendor Revision", idprom.revision);
    append_module_text(out, "Vendor Serial Number", idprom.serial_number);
}

void append_manufacture(std::string &out, const Idprom &idprom)
{
    append_line(out, "Manufacture Information");
    append_line(out, block_rule);
    append_module_text(out, "Manufacture Serial Number", idprom.serial_number);
    append_module_text(out, "Manufacture Date", "20" + idprom.date_code);
    append_module_text(out, "Vendor Name", idprom.vendor_name);
}

void append_dump(std::string &out, const Idprom &idprom)
{
    const bool sff8636 = idprom.family == ModuleFamily::sff8636;
    append_line(out, sff8636 ? "SFF-8636 MSA EEPROM Data" : "SFF-8472 MSA EEPROM Data");
    append_line(out, dump_rule);
    out += dump_text(idprom.dump);
    if (sff8636)
        return;
    // Nothing stands under it: diagnostic values have displays of their own.
    append_line(out, "");
    append_line(out, "SFF-8472 Digital Diagnostic Monitoring Data");
    append_line(out, dump_rule);
    append_line(out, "");
}

} // namespace

std::string idprom_text(const Idprom &idprom, IdpromScope scope)
{
    std::string out;
    if (scope == IdpromScope::all)
        append_general(out, idprom);
    if (scope != IdpromScope::manufacture)
        append_vendor(out, idprom);
    if (scope != IdpromScope::vendor)
        append_manufacture(out, idprom);
    if (scope == IdpromScope::all)
        append_dump(out, idprom);
    return out;
}

std::string dump_text(std::span<const std::uint8_t> bytes)
{
    std::string out;
    for (unsigned line = 0; line * dump_line_bytes < bytes.size(); ++line) {
        const auto rest = bytes.subspan(line * dump_line_bytes);
        const auto shown = rest.first(std::min(rest.size(), dump_line_bytes));
        append(out, "%03x :  ", line);
        for (const std::uint8_t byte : shown)
            append(out, "%02x ", byte);
        out.append(3 * (dump_line_bytes - shown.size()), ' ');
        append_line(out, "");
    }
    return out;
}

} // namespace diagd
