// SPDX-License-Identifier: GPL-2.0-or-later
#include "module_files/module_image.hpp"

#include <charconv>
#include <cstdio>
#include <span>
#include <sstream>
#include <stdexcept>

#include "module_files/text.hpp"

namespace module_files {

namespace {

constexpr std::uint8_t page_select = 127;

void append_half(std::string &text, const Half &half)
{
    text += hex_text(half) + '\n';
}

Half half_from(const std::string &digits, const std::string &where)
{
    Half half{};
    if (digits.size() != 2 * half.size())
        throw ModuleError(where + ": not 128 bytes");
    for (std::size_t i = 0; i < half.size(); ++i) {
        const int value = hex_byte(std::string_view(digits).substr(2 * i, 2));
        if (value < 0)
            throw ModuleError(where + ": bad hexadecimal digit");
        half[i] = static_cast<std::uint8_t>(value);
    }
    return half;
}

} // namespace

std::uint8_t ModuleDevice::read(std::uint8_t reg) const
{
    if (reg < lower.size())
        return lower[reg];
    const auto page = paged ? pages.find(lower[page_select]) : pages.find(0);
    return (page != pages.end() ? page->second : pages.at(0))[reg - lower.size()];
}

void ModuleDevice::write(std::uint8_t reg, std::uint8_t value)
{
    if (paged && reg == page_select && !pages.contains(value))
        value = 0;
    if (reg < lower.size()) {
        lower[reg] = value;
        return;
    }
    const auto page = paged ? pages.find(lower[page_select]) : pages.find(0);
    (page != pages.end() ? page->second : pages.at(0))[reg - lower.size()] = value;
}

bool is_qsfp_identifier(std::uint8_t identifier)
{
    return identifier == 0x0c || identifier == 0x0d || identifier == 0x11;
}

int hex_byte(std::string_view two_digits)
{
    unsigned value = 0;
    const char *end = two_digits.data() + two_digits.size();
    const auto [at, error] = std::from_chars(two_digits.data(), end, value, 16);
    return two_digits.size() == 2 && error == std::errc() && at == end ? static_cast<int>(value) : -1;
}

std::vector<std::uint8_t> parse_bytes(const std::string &digits)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int value = hex_byte(std::string_view(digits).substr(i, 2));
        if (value < 0)
            throw std::invalid_argument("\"" + digits + "\" is not a list of hexadecimal bytes");
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

std::string to_text(const ModuleImage &image)
{
    std::string text = "module " + image.name + "\n";
    char head[32];
    for (const auto &[address, device] : image.devices) {
        std::snprintf(head, sizeof head, "device %02x %s\nlower ", address, device.paged ? "paged" : "flat");
        text += head;
        append_half(text, device.lower);
        for (const auto &[number, page] : device.pages) {
            std::snprintf(head, sizeof head, "page %02x ", number);
            text += head;
            append_half(text, page);
        }
    }
    return text + "end\n";
}

ModuleImage image_from_text(std::string_view text)
{
    std::istringstream lines{std::string(text)};
    ModuleImage image;
    ModuleDevice *device = nullptr;
    std::string line;
    for (unsigned number = 1; std::getline(lines, line); ++number) {
        const std::string where = "module image line " + std::to_string(number);
        std::istringstream words(line);
        std::string key, first, second;
        words >> key >> first >> second;
        if (key == "end" && !image.devices.empty())
            return image;
        if (key == "module" && line.size() > 7) {
            image.name = line.substr(7);
        } else if (key == "device" && hex_byte(first) >= 0 && (second == "paged" || second == "flat")) {
            device = &image.devices[static_cast<std::uint8_t>(hex_byte(first))];
            device->paged = second == "paged";
        } else if (key == "lower" && device != nullptr) {
            device->lower = half_from(first, where);
        } else if (key == "page" && device != nullptr && hex_byte(first) >= 0) {
            device->pages[static_cast<std::uint8_t>(hex_byte(first))] = half_from(second, where);
        } else {
            throw ModuleError(where + ": not understood");
        }
    }
    throw ModuleError("module image: ends too early");
}

} // namespace module_files
