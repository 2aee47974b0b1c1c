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

std::string base_name(const std::string &file)
{
    return file.substr(file.rfind('/') + 1);
}

bool named(const Dump &dump, const std::string &part)
{
    return base_name(dump.name).find("." + part) != std::string::npos;
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

class Assembly {
public:
    explicit Assembly(bool pad) : pad_(pad) {}

    ModuleFile build(std::vector<Dump> dumps)
    {
        if (dumps.size() == 1)
            split(dumps);
        const bool by_pages = std::any_of(dumps.begin(), dumps.end(), [](const Dump &dump) {
            return named(dump, "lower") || named(dump, "page");
        });
        if (by_pages || is_qsfp(dumps))
            build_qsfp(dumps);
        else
            build_sfp(dumps);
        return std::move(result_);
    }

private:
    static bool is_qsfp(const std::vector<Dump> &dumps)
    {
        const Bytes &first = dumps.front().bytes;
        // Parts of 128 bytes under an identifier that nobody knows can only be SFF-8636 pages.
        return is_qsfp_identifier(first.front()) ||
               (!is_sfp_identifier(first.front()) && first.size() == half && dumps.size() > 1);
    }

    // One dump of everything becomes its parts.
    static void split(std::vector<Dump> &dumps)
    {
        const Dump all = std::move(dumps.front());
        if (named(all, "a2") || named(all, "b2") || named(all, "page"))
            throw ModuleError(all.name +
                              ": this part alone is no module; give the dump of its identification first");
        dumps.clear();
        const std::size_t part = is_qsfp_identifier(all.bytes.front()) ? half : whole;
        for (std::size_t at = 0; at < all.bytes.size(); at += part) {
            const std::size_t end = std::min(at + part, all.bytes.size());
            Dump piece{all.name, Bytes(all.bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                       all.bytes.begin() + static_cast<std::ptrdiff_t>(end))};
            dumps.push_back(std::move(piece));
        }
    }

    void fit(const Dump &dump, const char *what, std::size_t size)
    {
        const std::size_t have = dump.bytes.size();
        if (have > size)
            throw ModuleError(dump.name + format(": %zu bytes, but %s has %zu", have, what, size));
        if (have < size && !pad_)
            throw ModuleError(dump.name + format(": %s is truncated at offset %zu of %zu (--pad fills it up)",
                                                 what, have, size));
        if (have < size)
            note(dump.name + format(": %s is truncated at offset %zu, the rest reads 0", what, have));
    }

    Half take(const Dump &dump, std::size_t from) const
    {
        Half part{};
        for (std::size_t i = 0; i < half && from + i < dump.bytes.size(); ++i)
            part[i] = dump.bytes[from + i];
        return part;
    }

    // 256 bytes, or the 128 that hold all defined fields.
    void flat_device(std::uint8_t address, const Dump &dump, const char *what, bool paged)
    {
        fit(dump, what, dump.bytes.size() <= half ? half : whole);
        if (dump.bytes.size() <= half)
            note(dump.name +
                 format(": %s ends at offset %zu, bytes 128-255 read 0", what, dump.bytes.size()));
        ModuleDevice device;
        device.paged = paged;
        device.lower = take(dump, 0);
        device.pages[0] = take(dump, half);
        result_.image.devices[address] = std::move(device);
    }

    void build_sfp(const std::vector<Dump> &dumps)
    {
        static constexpr std::uint8_t addresses[] = {address_a0, address_a2, address_b0, address_b2};
        static constexpr const char *parts[] = {"a0", "a2", "b0", "b2"};
        static constexpr const char *names[] = {"A0h", "A2h", "B0h", "B2h"};
        if (dumps.size() > 4)
            throw ModuleError(dumps[4].name + ": more than the four memories of an SFP");
        for (std::size_t i = 0; i < dumps.size(); ++i) {
            std::size_t place = i;
            for (std::size_t k = 0; k < 4; ++k)
                if (named(dumps[i], parts[k]) && dumps.size() > 1)
                    place = k;
            if (result_.image.devices.contains(addresses[place]))
                throw ModuleError(dumps[i].name + ": a second " + names[place]);
            flat_device(addresses[place], dumps[i], names[place], place % 2 == 1);
        }
        const auto identity = result_.image.devices.find(address_a0);
        if (identity == result_.image.devices.end())
            throw ModuleError(dumps.front().name + ": the dump of A0h is missing");
        const std::uint8_t identifier = identity->second.lower[0];
        if (!is_sfp_identifier(identifier))
            note(dumps.front().name +
                 format(": identifier 0x%02x is no SFP; taken as flat memory", identifier));
        checksum(identity->second.lower, checksum_base, dumps.front().name);
        checksum(identity->second.lower, checksum_extended, dumps.front().name);
        if (const auto diagnostics = result_.image.devices.find(address_a2);
            diagnostics != result_.image.devices.end())
            checksum(diagnostics->second.lower, checksum_diagnostics, dumps.back().name);
    }

    void build_qsfp(const std::vector<Dump> &dumps)
    {
        ModuleDevice device;
        device.paged = true;
        bool have_lower = false;
        std::uint8_t next = 0;
        std::vector<std::uint8_t> seen;
        for (const Dump &dump : dumps) {
            std::optional<std::uint8_t> page = page_named(dump);
            if (named(dump, "lower") || (!page && !have_lower)) {
                fit(dump, "lower memory", half);
                if (have_lower)
                    throw ModuleError(dump.name + ": a second lower memory");
                device.lower = take(dump, 0);
                have_lower = true;
                continue;
            }
            if (!page)
                page = next;
            fit(dump, format("page %02xh", *page).c_str(), half);
            if (std::find(seen.begin(), seen.end(), *page) != seen.end())
                throw ModuleError(dump.name + format(": a second page %02xh", *page));
            seen.push_back(*page);
            device.pages[*page] = take(dump, 0);
            next = static_cast<std::uint8_t>(*page + 1);
        }
        if (!have_lower)
            throw ModuleError(dumps.front().name + ": the dump of lower memory is missing");
        if (std::find(seen.begin(), seen.end(), 0) == seen.end() && !pad_)
            throw ModuleError(dumps.front().name + ": truncated at offset 128: page 00h is missing");
        // Byte 127 of a dump tells which page was read last; a module powers up with page 00h.
        device.lower[127] = 0;
        if (!is_qsfp_identifier(device.lower[0]))
            note(dumps.front().name +
                 format(": identifier 0x%02x is no QSFP; taken as paged memory", device.lower[0]));
        checksum(device.pages.at(0), checksum_qsfp_base, dumps.front().name);
        checksum(device.pages.at(0), checksum_qsfp_extended, dumps.front().name);
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

ModuleFile assemble_module(std::vector<Dump> dumps, bool pad)
{
    for (const Dump &dump : dumps)
        if (dump.bytes.empty())
            throw ModuleError(dump.name + ": empty");
    if (dumps.empty())
        throw ModuleError("no dump given");
    std::string name = base_name(dumps.front().name);
    name = name.substr(0, name.find('.'));
    ModuleFile module = Assembly(pad).build(std::move(dumps));
    module.image.name = name.empty() ? "module" : name;
    return module;
}

} // namespace module_files
