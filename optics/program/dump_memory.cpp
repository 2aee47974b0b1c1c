// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/program/dump_memory.hpp"

#include "module_files/dump_file.hpp"

namespace optics {

using module_files::Part;

ModuleDump::ModuleDump(const std::vector<std::string> &files)
{
    std::vector<module_files::Dump> dumps;
    for (const std::string &file : files) {
        const std::string content = module_files::read_dump_file(file);
        const std::string name = file == "-" ? "standard input" : file;
        if (content.find_first_not_of(" \t\r\n") == content.find('{') &&
            content.find('"') != std::string::npos)
            throw module_files::ModuleError(name + ": a description of a module, not a dump of its memory");
        dumps.push_back({name, module_files::parse_dump(content, name)});
    }
    parts_ = module_files::sort_dumps(std::move(dumps));
}

Bytes ModuleDump::part(std::uint8_t address, Part::Kind kind, std::uint8_t page) const
{
    for (const Part &part : parts_)
        if (part.address == address && part.kind == kind && part.page == page)
            return part.bytes;
    return {};
}

Memory ModuleDump::first_path() const
{
    return {.a0 = part(module_files::address_a0, Part::Kind::flat),
            .a2 = part(module_files::address_a2, Part::Kind::flat),
            .lower = part(module_files::address_a0, Part::Kind::lower),
            .page00 = part(module_files::address_a0, Part::Kind::page, 0x00),
            .page01 = part(module_files::address_a0, Part::Kind::page, 0x01),
            .page02 = part(module_files::address_a0, Part::Kind::page, 0x02),
            .page03 = part(module_files::address_a0, Part::Kind::page, 0x03),
            .page11 = part(module_files::address_a0, Part::Kind::page, 0x11)};
}

bool ModuleDump::has_second_path() const
{
    return !second_path().a0.empty();
}

Memory ModuleDump::second_path() const
{
    return {.a0 = part(module_files::address_b0, Part::Kind::flat),
            .a2 = part(module_files::address_b2, Part::Kind::flat)};
}

} // namespace optics
