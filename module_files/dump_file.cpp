// SPDX-License-Identifier: GPL-2.0-or-later
#include "module_files/dump_file.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "module_files/module_image.hpp"

namespace module_files {

namespace {

constexpr std::size_t max_size = 1U << 18; // of a dump with all pages, as text

} // namespace

std::string read_dump_file(const std::string &file)
{
    std::ifstream opened;
    if (file != "-") {
        opened.open(file, std::ios::binary);
        if (!opened)
            throw ModuleError(file + ": " + std::strerror(errno));
    }
    std::istream &in = file == "-" ? std::cin : opened;
    std::string content(max_size + 1, '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (in.bad() || (in.gcount() == 0 && !in.eof()))
        throw ModuleError(file + ": cannot be read");
    content.resize(static_cast<std::size_t>(in.gcount()));
    if (content.size() > max_size)
        throw ModuleError(file + ": too large for a module");
    return content;
}

} // namespace module_files
