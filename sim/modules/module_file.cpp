// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/modules/module_file.hpp"

#include "module_files/dump_file.hpp"
#include "sim/modules/generator.hpp"

namespace sim {

namespace {

bool is_description(const std::string &content)
{
    const std::size_t start = content.find_first_not_of(" \t\r\n");
    return start != std::string::npos && content[start] == '{';
}

} // namespace

ModuleFile read_module(const std::vector<std::string> &files, bool pad)
{
    std::vector<module_files::Dump> dumps;
    for (const std::string &file : files) {
        const std::string content = module_files::read_dump_file(file);
        if (files.size() == 1 && is_description(content))
            return {generate_module(content, file), {}};
        dumps.push_back({file, module_files::parse_dump(content, file)});
    }
    return module_files::assemble_module(std::move(dumps), pad);
}

} // namespace sim
