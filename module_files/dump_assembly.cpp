// SPDX-License-Identifier: GPL-2.0-or-later
// From dumps to a module: which bytes are which memory.
#include <algorithm>
#include <numeric>
#include <optional>

#include "module_files/checksums.hpp"
#include "module_files/dump_reader.hpp"
#include "module_files/text.hpp"

namespace module_files {

namespace {

constexpr std::size_t half = 128;
constexpr std::size_t whole = 256;

// Identifiers of modules with an SFF-8472 memory: not known, soldered, SFP.
bool is_sfp_identifier(std::uint8_t identifier)
{
    return identifier == 0x00 || identifier == 0x02 || identifier == 0x03;
}

// QSFP-DD, OSFP and a QSFP+ with CMIS: their memory has the pages of SFF-8636, but other contents.
bool is_cmis_identifier(std::uint8_t identifier)
{
    return identifier == 0x18 || identifier == 0x19 || identifier == 0x1e;
}

bool is_paged_identifier(std::uint8_t identifier)
{
    return is_qsfp_identifier(identifier) || is_cmis_identifier(identifier);
}

std::string base_name(const std::string &file)
{
    return file.substr(file.rfind('/') + 1);
}

bool named(const Dump &dump, const std::string &part)
{
    return base_name(dump.name).find("." + part) != std::string::npos;
}

// A part that alone is no module.
bool is_later_part(const Dump &dump)
{
    return named(dump, "a2") || named(dump, "b2") || named(dump, "page");
}

// Number in ".pageNN".
std::optional<std::uint8_t> page_named(const Dump &dump)
{
    const std::string name = base_name(dump.name);
    const std::size_t at = name.find(".page");
    if (at == std::string::npos)
        return std::nullopt;
    const int number = hex_byte(std::string_view(name).substr(at + 5, 2));
    if (number < 0)
        throw ModuleError(dump.name + ": no page number after .page");
    return static_cast<std::uint8_t>(number);
}

bool is_qsfp(const std::vector<Dump> &dumps)
{
    const Bytes &first = dumps.front().bytes;
    // Parts of 128 bytes under an identifier that nobody knows can only be SFF-8636 pages.
    return is_paged_identifier(first.front()) ||
           (!is_sfp_identifier(first.front()) && first.size() == half && dumps.size() > 1);
}

// One dump of everything becomes its parts.
void split(std::vector<Dump> &dumps)
{
    const Dump all = std::move(dumps.front());
    dumps.clear();
    const std::size_t part = is_paged_identifier(all.bytes.front()) ? half : whole;
    for (std::size_t at = 0; at < all.bytes.size(); at += part) {
        const std::size_t end = std::min(at + part, all.bytes.size());
        Dump piece{all.name, Bytes(all.bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                   all.bytes.begin() + static_cast<std::ptrdiff_t>(end))};
        dumps.push_back(std::move(piece));
    }
}

constexpr std::uint8_t sfp_addresses[] = {address_a0, address_a2, address_b0, address_b2};
constexpr const char *sfp_parts[] = {"a0", "a2", "b0", "b2"};
constexpr const char *sfp_names[] = {"A0h", "A2h", "B0h", "B2h"};

const char *sfp_name(std::uint8_t address)
{
    const auto *found = std::find(std::begin(sfp_addresses), std::end(sfp_addresses), address);
    return sfp_names[found - std::begin(sfp_addresses)];
}

std::string what_is(const Part &part)
{
    switch (part.kind) {
    case Part::Kind::lower:
        return "lower memory";
    case Part::Kind::page:
        return format("page %02xh", part.page);
    case Part::Kind::flat:
        break;
    }
    return sfp_name(part.address);
}

void add(std::vector<Part> &parts, Part part)
{
    const std::size_t size = part.kind == Part::Kind::flat ? whole : half;
    if (part.bytes.size() > size)
        throw ModuleError(part.name + format(": %zu bytes, but %s has %zu", part.bytes.size(),
                                             what_is(part).c_str(), size));
    for (const Part &other : parts)
        if (other.address == part.address && other.kind == part.kind && other.page == part.page)
            throw ModuleError(part.name + ": a second " + what_is(part));
    parts.push_back(std::move(part));
}

std::vector<Part> sort_sfp(std::vector<Dump> dumps, bool by_name)
{
    std::vector<Part> parts;
    if (dumps.size() > std::size(sfp_parts))
        throw ModuleError(dumps[std::size(sfp_parts)].name + ": more than the four memories of an SFP");
    for (std::size_t i = 0; i < dumps.size(); ++i) {
        std::size_t place = i;
        for (std::size_t k = 0; k < std::size(sfp_parts); ++k)
            if (by_name && named(dumps[i], sfp_parts[k]))
                place = k;
        add(parts, {dumps[i].name, sfp_addresses[place], Part::Kind::flat, 0, std::move(dumps[i].bytes)});
    }
    return parts;
}

std::vector<Part> sort_qsfp(std::vector<Dump> dumps)
{
    std::vector<Part> parts;
    bool have_lower = false;
    std::uint8_t next = 0;
    for (Dump &dump : dumps) {
        const std::optional<std::uint8_t> page = page_named(dump);
        if (named(dump, "lower") || (!page && !have_lower)) {
            have_lower = true;
            add(parts, {dump.name, address_a0, Part::Kind::lower, 0, std::move(dump.bytes)});
            continue;
        }
        const std::uint8_t number = page.value_or(next);
        next = static_cast<std::uint8_t>(number + 1);
        add(parts, {dump.name, address_a0, Part::Kind::page, number, std::move(dump.bytes)});
    }
    return parts;
}

class Assembly {
public:
    explicit Assembly(bool pad) : pad_(pad) {}

    ModuleFile build(const std::vector<Part> &parts)
    {
        if (parts.front().kind == Part::Kind::flat)
            build_sfp(parts);
        else
            build_qsfp(parts);
        return std::move(result_);
    }

private:
    void fit(const Part &part, std::size_t size)
    {
        const std::size_t have = part.bytes.size();
        const std::string what = what_is(part);
        if (have < size && !pad_)
            throw ModuleError(part.name + format(": %s is truncated at offset %zu of %zu (--pad fills it up)",
                                                 what.c_str(), have, size));
        if (have < size)
            note(part.name + format(": %s is truncated at offset %zu, the rest reads 0", what.c_str(), have));
    }

    static Half take(const Part &part, std::size_t from)
    {
        Half bytes{};
        for (std::size_t i = 0; i < half && from + i < part.bytes.size(); ++i)
            bytes[i] = part.bytes[from + i];
        return bytes;
    }

    // 256 bytes, or the 128 that hold all defined fields.
    void flat_device(const Part &part)
    {
        const std::size_t have = part.bytes.size();
        fit(part, have <= half ? half : whole);
        if (have <= half)
            note(part.name +
                 format(": %s ends at offset %zu, bytes 128-255 read 0", what_is(part).c_str(), have));
        ModuleDevice device;
        device.paged = part.address == address_a2 || part.address == address_b2;
        device.lower = take(part, 0);
        device.pages[0] = take(part, half);
        result_.image.devices[part.address] = std::move(device);
    }

    void build_sfp(const std::vector<Part> &parts)
    {
        for (const Part &part : parts)
            flat_device(part);
        const auto identity = result_.image.devices.find(address_a0);
        if (identity == result_.image.devices.end())
            throw ModuleError(parts.front().name + ": the dump of A0h is missing");
        const std::uint8_t identifier = identity->second.lower[0];
        if (!is_sfp_identifier(identifier))
            note(parts.front().name +
                 format(": identifier 0x%02x is no SFP; taken as flat memory", identifier));
        checksum(identity->second.lower, checksum_base, parts.front().name);
        checksum(identity->second.lower, checksum_extended, parts.front().name);
        if (const auto diagnostics = result_.image.devices.find(address_a2);
            diagnostics != result_.image.devices.end())
            checksum(diagnostics->second.lower, checksum_diagnostics, parts.back().name);
    }

    void build_qsfp(const std::vector<Part> &parts)
    {
        ModuleDevice device;
        device.paged = true;
        bool have_lower = false;
        bool have_page00 = false;
        for (const Part &part : parts) {
            fit(part, half);
            if (part.kind == Part::Kind::lower) {
                device.lower = take(part, 0);
                have_lower = true;
            } else {
                device.pages[part.page] = take(part, 0);
                have_page00 |= part.page == 0;
            }
        }
        if (!have_lower)
            throw ModuleError(parts.front().name + ": the dump of lower memory is missing");
        if (!have_page00 && !pad_)
            throw ModuleError(parts.front().name + ": truncated at offset 128: page 00h is missing");
        // Byte 127 of a dump tells which page was read last; a module powers up with page 00h.
        device.lower[127] = 0;
        if (!is_paged_identifier(device.lower[0]))
            note(parts.front().name +
                 format(": identifier 0x%02x is no QSFP; taken as paged memory", device.lower[0]));
        if (!is_cmis_identifier(device.lower[0])) {
            checksum(device.pages.at(0), checksum_qsfp_base, parts.front().name);
            checksum(device.pages.at(0), checksum_qsfp_extended, parts.front().name);
        }
        result_.image.devices[address_a0] = std::move(device);
    }

    void checksum(const Half &memory, const Checksum &sum, const std::string &name)
    {
        const std::uint8_t computed = compute(memory, sum);
        const std::uint8_t stored = memory[sum.place];
        if (computed != stored)
            note(name + format(": checksum %s is 0x%02x, should be 0x%02x", sum.name, stored, computed));
    }

    void note(std::string text) { result_.notes.push_back(std::move(text)); }

    bool pad_;
    ModuleFile result_;
};

} // namespace

std::vector<Part> sort_dumps(std::vector<Dump> dumps)
{
    for (const Dump &dump : dumps)
        if (dump.bytes.empty())
            throw ModuleError(dump.name + ": empty");
    if (dumps.empty())
        throw ModuleError("no dump given");
    const bool one = dumps.size() == 1;
    const bool is_part = one && is_later_part(dumps.front());
    if (one && !is_part)
        split(dumps);
    const bool by_pages = std::any_of(dumps.begin(), dumps.end(), [](const Dump &dump) {
        return named(dump, "lower") || named(dump, "page");
    });
    // The first byte of A2h is no identifier.
    const bool have_a2 = (!one || is_part) && std::any_of(dumps.begin(), dumps.end(),
                                                          [](const Dump &dump) { return named(dump, "a2"); });
    // The pieces of one dump bear its name, which says nothing of a single piece.
    return by_pages || (!have_a2 && is_qsfp(dumps)) ? sort_qsfp(std::move(dumps))
                                                    : sort_sfp(std::move(dumps), !one || is_part);
}

ModuleFile assemble_module(std::vector<Dump> dumps, bool pad)
{
    if (dumps.size() == 1 && is_later_part(dumps.front()))
        throw ModuleError(dumps.front().name +
                          ": this part alone is no module; give the dump of its identification first");
    const std::vector<Part> parts = sort_dumps(std::move(dumps));
    std::string name = base_name(parts.front().name);
    name = name.substr(0, name.find('.'));
    ModuleFile module = Assembly(pad).build(parts);
    module.image.name = name.empty() ? "module" : name;
    return module;
}

} // namespace module_files
