// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/modules/module_file.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "sim/modules/generator.hpp"

namespace sim {

namespace {

constexpr std::size_t max_size = 1U << 18; // of a dump with all pages, as text

std::string content_of(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw ModuleError(file + ": " + std::strerror(errno));
    std::string content(max_size + 1, '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (in.bad() || (in.gcount() == 0 && !in.eof()))
        throw ModuleError(file + ": cannot be read");
    content.resize(static_cast<std::size_t>(in.gcount()));
    if (content.size() > max_size)
        throw ModuleError(file + ": too large for a module");
    return content;
}

bool is_description(const std::string &content)
{
    const std::size_t start = content.find_first_not_of(" \t\r\n");
    return start != std::string::npos && content[start] == '{';
}

} // namespace

ModuleFile read_module(const std::vector<std::string> &files, bool pad)
{
    std::vector<Dump> dumps;
    for (const std::string &file : files) {
        const std::string content = content_of(file);
        if (files.size() == 1 && is_description(content))
            return {generate_module(content, file), {}};
        dumps.push_back({file, parse_dump(content, file)});
    }
    return assemble_module(std::move(dumps), pad);
}

} // namespace sim
