// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/fru.hpp"

#include <algorithm>
#include <numeric>
#include <span>
#include <vector>

namespace sim {

namespace {

using std::chrono::minutes;
using std::chrono::sys_days;

constexpr std::size_t block = 8; // offsets and lengths are counted in blocks
constexpr std::uint8_t version = 1;
constexpr std::size_t board_area_offset = 3; // byte of the header
constexpr std::size_t area_length = 1;       // byte of the area, as the following
constexpr std::size_t area_minutes = 3;      // since 1996, three bytes, low byte first
constexpr std::size_t area_texts = 6;
constexpr std::uint8_t text_8_bit = 0xc0; // with the length in the low six bits
constexpr std::uint8_t length_bits = 0x3f;
constexpr std::uint8_t end_of_texts = 0xc1;
constexpr sys_days epoch = std::chrono::year(1996) / 1 / 1;

std::uint8_t sum(std::span<const std::uint8_t> bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0},
                           [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a + b); });
}

// What makes the sum of all zero.
std::uint8_t check_byte(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint8_t>(-sum(bytes));
}

// The area behind the header, empty when it is not sound.
std::span<const std::uint8_t> board_area(const Memory &memory)
{
    const std::size_t start = memory[board_area_offset] * block;
    if (memory[0] != version || sum(std::span(memory).first(block)) != 0 || start == 0 ||
        start + block > memory.size())
        return {};
    const std::size_t length = memory[start + area_length] * block;
    if (length < block || start + length > memory.size())
        return {};
    const auto area = std::span(memory).subspan(start, length);
    return area[0] == version && sum(area) == 0 ? area : std::span<const std::uint8_t>{};
}

} // namespace

Memory encode_fru(const board::Fru &fru)
{
    const auto made = static_cast<std::uint32_t>(minutes(sys_days(fru.made) - epoch).count());
    // English; the length comes last.
    std::vector<std::uint8_t> area = {version,
                                      0,
                                      0,
                                      static_cast<std::uint8_t>(made),
                                      static_cast<std::uint8_t>(made >> 8),
                                      static_cast<std::uint8_t>(made >> 16)};
    for (const std::string *text : {&fru.manufacturer, &fru.product, &fru.serial_number, &fru.part_number}) {
        area.push_back(static_cast<std::uint8_t>(text_8_bit | text->size()));
        area.insert(area.end(), text->begin(), text->end());
    }
    area.push_back(text_8_bit); // file of the area: none
    area.push_back(end_of_texts);
    area.resize((area.size() + 1 + block - 1) / block * block); // with the check byte
    area[area_length] = static_cast<std::uint8_t>(area.size() / block);
    area.back() = check_byte(area);

    Memory memory;
    memory.fill(0xff);
    std::array<std::uint8_t, block> header = {version, 0, 0, 1, 0, 0, 0, 0};
    header.back() = check_byte(header);
    std::ranges::copy(header, memory.begin());
    std::ranges::copy(area, memory.begin() + block);
    return memory;
}

std::optional<board::Fru> decode_fru(const Memory &memory)
{
    const auto area = board_area(memory);
    if (area.empty())
        return std::nullopt;
    board::Fru fru;
    const int made = area[area_minutes] | area[area_minutes + 1] << 8 | area[area_minutes + 2] << 16;
    fru.made = std::chrono::floor<std::chrono::days>(epoch + minutes(made));
    std::size_t at = area_texts;
    for (std::string *text : {&fru.manufacturer, &fru.product, &fru.serial_number, &fru.part_number}) {
        if (at >= area.size() || area[at] == end_of_texts)
            break;
        const std::size_t length = area[at] & length_bits;
        if (at + 1 + length > area.size())
            return std::nullopt;
        const auto bytes = area.subspan(at + 1, length);
        text->assign(bytes.begin(), bytes.end());
        at += 1 + length;
    }
    return fru;
}

} // namespace sim
