// SPDX-License-Identifier: GPL-2.0-or-later
// Reading a module's identification (see idprom.hpp): byte by byte, each field once, in the order of the
// display; the wavelength of an SFF-8472 module is one word.  The dump of an SFF-8636 module reads the page
// of its fields again.
#include "diagd/transceiver/memory/idprom.hpp"

#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/diagnostics.hpp"
#include "diagd/transceiver/memory/memory_map.hpp"

#include <span>

namespace diagd {

namespace {

class IdpromReader {
public:
    IdpromReader(std::uint32_t handle, ModuleFamily family) noexcept
        : handle_(handle), family_(family),
          layout_(family == ModuleFamily::sff8636 ? sff8636::idprom : sff8472::idprom)
    {
    }

    Idprom read(std::uint8_t identifier, IdpromScope scope)
    {
        Idprom idprom{};
        idprom.family = family_;
        if (family_ == ModuleFamily::sff8636)
            sff_8636_page_select(handle_, 0);
        switch (scope) {
        case IdpromScope::all:
            idprom.general = general(identifier);
            read_vendor(idprom);
            idprom.date_code = text(layout_.date_code);
            block(dump_address(), upper_half, idprom.dump);
            break;
        case IdpromScope::vendor:
            read_vendor(idprom);
            break;
        case IdpromScope::manufacture:
            idprom.serial_number = text(layout_.serial_number);
            idprom.date_code = text(layout_.date_code);
            idprom.vendor_name = text(layout_.vendor_name);
            break;
        }
        return idprom;
    }

private:
    std::uint8_t byte(std::uint8_t reg) const noexcept
    {
        return transceiver_read_byte(handle_, first_path.id, reg);
    }

    void block(std::uint8_t address, std::uint8_t first, std::span<std::uint8_t> bytes) const noexcept
    {
        transceiver_read_block(handle_, address, first, bytes.data(),
                               static_cast<std::int32_t>(bytes.size()));
    }

    std::string text(MemoryField field) const
    {
        std::string bytes;
        for (unsigned i = 0; i < field.length; ++i)
            bytes += static_cast<char>(byte(static_cast<std::uint8_t>(field.first + i)));
        return bytes.substr(0, bytes.find('\0'));
    }

    std::uint8_t dump_address() const noexcept
    {
        return family_ == ModuleFamily::sff8636 ? first_path.id : first_path.diagnostics;
    }

    std::uint16_t wavelength_nm() const noexcept
    {
        if (family_ == ModuleFamily::sff8636)
            return read_sff8636_wavelength_nm(handle_);
        return read_wavelength_nm(handle_, first_path.id);
    }

    std::int32_t extended_compliance(std::uint8_t code) const noexcept
    {
        const bool refers = family_ == ModuleFamily::sff8472 || code == sff8636::see_extended_compliance;
        return refers ? byte(layout_.extended_compliance) : -1;
    }

    GeneralInformation general(std::uint8_t identifier) const
    {
        GeneralInformation general{};
        // An SFF-8636 module has its identifier in both halves of the map.
        general.identifier = layout_.identifier == identifier_byte ? identifier : byte(layout_.identifier);
        general.connector = byte(layout_.connector);
        general.wavelength_nm = wavelength_nm();
        block(first_path.id, layout_.compliance.first, general.compliance);
        general.extended_compliance = extended_compliance(general.compliance[0]);
        general.distance.resize(layout_.distance.length);
        block(first_path.id, layout_.distance.first, general.distance);
        general.monitoring = byte(monitoring_type); // in the lower memory of SFF-8636
        general.encoding = byte(layout_.encoding);
        general.bit_rate = byte(layout_.bit_rate);
        return general;
    }

    void read_vendor(Idprom &idprom) const
    {
        idprom.vendor_name = text(layout_.vendor_name);
        block(first_path.id, layout_.vendor_oui.first, idprom.vendor_oui);
        idprom.part_number = text(layout_.part_number);
        idprom.revision = text(layout_.revision);
        idprom.serial_number = text(layout_.serial_number);
    }

    std::uint32_t handle_;
    ModuleFamily family_;
    const IdpromLayout &layout_;
};

static_assert(sff8472::idprom.compliance.length == idprom_compliance_bytes);
static_assert(sff8636::idprom.compliance.length == idprom_compliance_bytes);

} // namespace

std::optional<Idprom> read_idprom(std::uint32_t handle, IdpromScope scope)
{
    const std::uint8_t identifier = transceiver_read_byte(handle, first_path.id, identifier_byte);
    const ModuleFamily family = module_family(identifier);
    if (family == ModuleFamily::unsupported)
        return std::nullopt;
    return IdpromReader{handle, family}.read(identifier, scope);
}

} // namespace diagd
