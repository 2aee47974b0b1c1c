// SPDX-License-Identifier: GPL-2.0-or-later
// Output wider than the terminal.
#include "shell/layout.hpp"

#include "base/utf8.hpp"

#include <algorithm>
#include <optional>

namespace diagsh {

namespace {

constexpr std::size_t continuation_indent = 4;

std::size_t next_character(std::string_view text, std::size_t at)
{
    return at + std::max<std::size_t>(base::utf8_length(text.substr(at)), 1);
}

bool blank_at(std::string_view line, std::size_t column)
{
    const std::string_view at = columns_in(line, column, 1);
    return at.empty() || at == " ";
}

bool is_blank(const std::string &line)
{
    return line.find_first_not_of(' ') == std::string::npos;
}

std::string without_trailing_blanks(std::string_view line)
{
    const std::size_t last = line.find_last_not_of(' ');
    return std::string(line.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

class Table {
public:
    explicit Table(const std::vector<std::string> &lines) : m_lines(lines)
    {
        for (const std::string &line : lines)
            m_width = std::max(m_width, columns_of(line));
    }

    std::size_t width() const { return m_width; }

    // The last column of the table that begins after `after` and before which all text ends at `until` or
    // earlier.
    std::optional<std::size_t> last_start(std::size_t after, std::size_t until) const
    {
        for (std::size_t column = m_width; column > after; --column) {
            if (!starts(column))
                continue;
            std::size_t end = column;
            while (end > 0 && is_gap(end - 1))
                --end;
            if (end <= until)
                return column;
        }
        return std::nullopt;
    }

    std::optional<std::size_t> first_start() const
    {
        std::size_t text = 0;
        while (text < m_width && is_gap(text))
            ++text;
        for (std::size_t column = text + 2; column < m_width; ++column)
            if (starts(column))
                return column;
        return std::nullopt;
    }

    void append_part(std::vector<std::string> &to, std::size_t label, std::size_t first,
                     std::size_t end) const
    {
        for (const std::string &line : m_lines) {
            std::string part;
            if (first != 0) {
                part = columns_in(line, 0, label);
                part.append(label - columns_of(part), ' ');
            }
            part += columns_in(line, first, end - first);
            to.push_back(without_trailing_blanks(part));
        }
    }

private:
    // Behind two blanks at least, in every line.
    bool starts(std::size_t column) const
    {
        return column >= 2 && is_gap(column - 1) && is_gap(column - 2) && !is_gap(column);
    }

    bool is_gap(std::size_t column) const
    {
        return std::ranges::all_of(m_lines, [&](const std::string &line) { return blank_at(line, column); });
    }

    const std::vector<std::string> &m_lines;
    std::size_t m_width = 0;
};

// Of a table that is shown in parts: its first column, unless that leaves too little for the others.
std::optional<std::size_t> label_of(const Table &table, std::size_t width)
{
    const std::optional<std::size_t> label = table.first_start();
    return label && *label <= width / 3 ? label : std::nullopt;
}

bool append_in_parts(std::vector<std::string> &to, const Table &table, std::size_t width)
{
    const std::optional<std::size_t> label = label_of(table, width);
    if (!label)
        return false;
    std::vector<std::pair<std::size_t, std::size_t>> parts;
    for (std::size_t first = 0; first < table.width();) {
        const std::size_t room = first == 0 ? width : width - *label;
        if (table.width() - first <= room) {
            parts.emplace_back(first, table.width());
            break;
        }
        const auto next = table.last_start(std::max(first, *label - 1) + 1, first + room);
        if (!next)
            return false;
        parts.emplace_back(first, *next);
        first = *next;
    }
    for (const auto &[first, end] : parts)
        table.append_part(to, *label, first, end);
    return true;
}

} // namespace

std::size_t columns_of(std::string_view text)
{
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size(); at = next_character(text, at))
        ++columns;
    return columns;
}

std::string_view columns_in(std::string_view text, std::size_t first, std::size_t count)
{
    std::size_t begin = 0;
    for (; first > 0 && begin < text.size(); --first)
        begin = next_character(text, begin);
    std::size_t end = begin;
    for (; count > 0 && end < text.size(); --count)
        end = next_character(text, end);
    return text.substr(begin, end - begin);
}

std::vector<std::string> fold_line(std::string_view line, std::size_t width, std::size_t indent)
{
    std::vector<std::string> folded;
    std::string begin;
    for (;;) {
        const std::size_t room = std::max<std::size_t>(width, begin.size() + 1) - begin.size();
        if (columns_of(line) <= room) {
            folded.push_back(begin + std::string(line));
            return folded;
        }
        const std::string_view head = columns_in(line, 0, room + 1);
        std::size_t end = head.rfind(' ');
        if (end == std::string_view::npos || head.find_first_not_of(' ') > end)
            end = columns_in(line, 0, room).size(); // one long word
        folded.push_back(begin + without_trailing_blanks(line.substr(0, end)));
        line.remove_prefix(std::min(line.find_first_not_of(' ', end), line.size()));
        begin.assign(std::min(indent, width * 2 / 3), ' ');
        if (line.empty())
            return folded;
    }
}

std::vector<std::string> fold(const std::vector<std::string> &lines, std::size_t width)
{
    std::vector<std::string> folded;
    for (auto begin = lines.begin(); begin != lines.end();) {
        if (is_blank(*begin)) {
            folded.emplace_back();
            ++begin;
            continue;
        }
        const auto end = std::find_if(begin, lines.end(), is_blank);
        const std::vector<std::string> block(begin, end);
        const Table table(block);
        if (table.width() <= width)
            folded.insert(folded.end(), block.begin(), block.end());
        else if (block.size() < 2 || !append_in_parts(folded, table, width))
            for (const std::string &line : block)
                std::ranges::move(fold_line(line, width, continuation_indent), std::back_inserter(folded));
        begin = end;
    }
    return folded;
}

std::vector<std::size_t> label_columns(const std::vector<std::string> &lines, std::size_t width)
{
    std::vector<std::size_t> labels(lines.size(), 0);
    for (auto begin = lines.begin(); begin != lines.end();) {
        begin = std::find_if_not(begin, lines.end(), is_blank);
        const auto end = std::find_if(begin, lines.end(), is_blank);
        const std::vector<std::string> block(begin, end);
        const Table table(block);
        if (block.size() > 1 && table.width() > width)
            std::fill_n(labels.begin() + (begin - lines.begin()), end - begin,
                        label_of(table, width).value_or(0));
        begin = end;
    }
    return labels;
}

} // namespace diagsh
