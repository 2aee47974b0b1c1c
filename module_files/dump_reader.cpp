// SPDX-License-Identifier: GPL-2.0-or-later
// Text and raw forms of a memory dump.  Failure policy: what cannot be read without guessing is refused,
// with the line and what is wrong in it.
#include "module_files/dump_reader.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "module_files/text.hpp"

namespace module_files {

namespace {

constexpr std::size_t bytes_per_line = 16;

bool is_text(std::string_view content)
{
    return !content.empty() && std::all_of(content.begin(), content.end(), [](char c) {
        return std::isprint(static_cast<unsigned char>(c)) != 0 || c == '\t' || c == '\r' || c == '\n';
    });
}

// Nothing but digits, as `xxd -p` writes them.
bool is_plain_hex(std::string_view content)
{
    return std::any_of(content.begin(), content.end(),
                       [](unsigned char c) { return std::isxdigit(c) != 0; }) &&
           std::all_of(content.begin(), content.end(),
                       [](unsigned char c) { return std::isxdigit(c) != 0 || std::isspace(c) != 0; });
}

Bytes plain_hex(std::string_view content, const std::string &name)
{
    Bytes bytes;
    std::string digits;
    for (const char c : content) {
        if (std::isspace(static_cast<unsigned char>(c)) != 0)
            continue;
        digits += c;
        if (digits.size() < 2)
            continue;
        bytes.push_back(static_cast<std::uint8_t>(hex_byte(digits)));
        digits.clear();
    }
    if (!digits.empty())
        throw ModuleError(name + ": an odd number of hexadecimal digits");
    return bytes;
}

// One line of hexadecimal text: "0x0010:\t\t03 04 .." or "10: 03 04 ..    ascii".
class HexLines {
public:
    explicit HexLines(std::string name) : name_(std::move(name)) {}

    void take(std::string_view line)
    {
        ++number_;
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0)
            line.remove_suffix(1);
        std::string_view rest = line;
        std::size_t offset = 0;
        if (!take_offset(rest, offset)) {
            if (!is_heading(line))
                fail("no dump line");
            return;
        }
        if (offset != bytes_.size())
            fail(format("offset 0x%zx where 0x%zx is expected: lines are missing or out of order", offset,
                        bytes_.size()));
        for (std::size_t i = 0; i < bytes_per_line; ++i) {
            const std::string_view digits = take_word(rest, i == 0);
            if (digits.empty())
                break;
            bytes_.push_back(byte(digits));
        }
        if (bytes_.size() == offset)
            fail("no bytes after the offset");
    }

    Bytes finish()
    {
        if (bytes_.empty())
            throw ModuleError(name_ + ": neither a raw dump nor hexadecimal text");
        return std::move(bytes_);
    }

private:
    [[noreturn]] void fail(const std::string &what) const
    {
        throw ModuleError(name_ + ": line " + std::to_string(number_) + ": " + what);
    }

    static bool take_offset(std::string_view &line, std::size_t &offset)
    {
        const std::size_t start = line.find_first_not_of(" \t");
        const std::size_t colon = line.find(':');
        if (start == std::string_view::npos || colon == std::string_view::npos || colon <= start)
            return false;
        std::string_view digits = line.substr(start, colon - start);
        if (digits.starts_with("0x"))
            digits.remove_prefix(2);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), offset, 16);
        if (error != std::errc() || end != digits.data() + digits.size())
            return false;
        line.remove_prefix(colon + 1);
        return true;
    }

    // The next word; the wide gap before the column of characters ends a short line.
    static std::string_view take_word(std::string_view &rest, bool first)
    {
        const std::size_t start = rest.find_first_not_of(" \t");
        if (start == std::string_view::npos || (!first && start >= 4))
            return {};
        const std::size_t end = std::min(rest.find_first_of(" \t", start), rest.size());
        const std::string_view word = rest.substr(start, end - start);
        rest.remove_prefix(end);
        return word;
    }

    [[nodiscard]] std::uint8_t byte(std::string_view digits) const
    {
        const int value = hex_byte(digits);
        if (value >= 0)
            return static_cast<std::uint8_t>(value);
        if (digits == "XX")
            fail(format("byte 0x%zx was not readable when the dump was made (XX)", bytes_.size()));
        fail("\"" + std::string(digits) + "\" is not a hexadecimal byte");
    }

    static bool is_heading(std::string_view line)
    {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos)
            return true;
        const std::string_view text = line.substr(start);
        return text.starts_with("#") || text.starts_with("Offset") || text.starts_with("---") ||
               text.starts_with("0  1  2") || text.starts_with("No size specified");
    }

    std::string name_;
    std::size_t number_ = 0;
    Bytes bytes_;
};

} // namespace

Bytes parse_dump(std::string_view content, const std::string &name)
{
    if (content.empty())
        throw ModuleError(name + ": empty");
    if (!is_text(content))
        return {content.begin(), content.end()};
    if (is_plain_hex(content))
        return plain_hex(content, name);
    HexLines lines(name);
    while (!content.empty()) {
        const std::size_t end = std::min(content.find('\n'), content.size());
        lines.take(content.substr(0, end));
        content.remove_prefix(std::min(end + 1, content.size()));
    }
    return lines.finish();
}

} // namespace module_files
