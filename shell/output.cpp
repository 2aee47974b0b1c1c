// SPDX-License-Identifier: GPL-2.0-or-later
// Output by the page.
#include "shell/output.hpp"

#include "shell/layout.hpp"
#include "shell/text_lines.hpp"
#include "shell/viewer.hpp"

#include <algorithm>

namespace diagsh {

namespace {

constexpr std::string_view more = " --More-- ";

std::size_t rows_of(std::string_view line, std::size_t columns)
{
    return std::max<std::size_t>((columns_of(line) + columns - 1) / columns, 1);
}

} // namespace

Output::Output(Terminal &terminal, int lines, Wide wide) : m_terminal(terminal), m_lines(lines), m_wide(wide)
{
}

bool Output::add(std::string_view text)
{
    m_rest += text;
    const std::size_t end = m_rest.rfind('\n');
    if (end == std::string::npos)
        return !m_stopped;
    for (std::string &line : split_lines(std::string_view(m_rest).substr(0, end + 1))) {
        const bool between = trimmed(line).empty();
        m_block.push_back(std::move(line));
        if (m_wide == Wide::as_is || (m_wide == Wide::fold && between))
            show_block();
    }
    m_rest.erase(0, end + 1);
    return !m_stopped;
}

void Output::end()
{
    if (!m_rest.empty())
        add("\n");
    if (m_wide != Wide::scroll || m_stopped)
        return show_block();
    const WindowSize window = terminal_size();
    const bool fits =
        m_block.size() < window.rows && std::ranges::all_of(m_block, [&](const std::string &line) {
            return columns_of(line) <= window.columns;
        });
    if (fits)
        return show_block();
    m_left = view(m_terminal, m_block) == ViewEnd::leave;
}

void Output::show_block()
{
    const std::vector<std::string> block = std::exchange(m_block, {});
    for (const std::string &line : m_wide == Wide::fold ? fold(block, terminal_size().columns) : block) {
        if (m_stopped)
            return;
        show_line(line);
    }
}

void Output::show_line(std::string_view line)
{
    const WindowSize window = terminal_size();
    const std::size_t page = m_lines < 0 ? window.rows - 1U : static_cast<std::size_t>(m_lines);
    const std::size_t rows = rows_of(line, window.columns);
    if (page != 0 && m_used != 0 && m_used + rows > page)
        ask_for_more();
    if (m_stopped)
        return;
    m_used += rows;
    m_broken += m_wide == Wide::as_is && rows > 1 ? 1 : 0;
    m_stopped = !write_all(STDOUT_FILENO, std::string(line) + "\n");
}

void Output::ask_for_more()
{
    write_all(STDOUT_FILENO, more);
    const char answer = m_terminal.read_key().value_or(key::leave);
    write_all(STDOUT_FILENO, "\r" + std::string(more.size(), ' ') + "\r");
    if (answer == key::leave)
        m_left = true;
    if (answer == 'q' || answer == 'Q' || answer == key::interrupt || m_left)
        m_stopped = true;
    else if (answer != '\r' && answer != '\n') // those give one more line
        m_used = 0;
}

} // namespace diagsh
