// SPDX-License-Identifier: GPL-2.0-or-later
// The memory of a module from the files that hold its dumps.
#pragma once

#include <string>
#include <vector>

#include "module_files/dump_reader.hpp"
#include "optics/memory.hpp"

namespace optics {

class ModuleDump {
public:
    // One file holds everything, several hold parts; "-" is standard input.  Throws module_files::ModuleError
    // with one line that names the file.
    explicit ModuleDump(const std::vector<std::string> &files);

    // Valid as long as the dump lives.
    [[nodiscard]] Memory first_path() const;
    // Of a combo module: a second A0h and A2h, at 0x58 and 0x59.
    [[nodiscard]] bool has_second_path() const;
    [[nodiscard]] Memory second_path() const;

private:
    [[nodiscard]] Bytes part(std::uint8_t address, module_files::Part::Kind kind,
                             std::uint8_t page = 0) const;

    std::vector<module_files::Part> parts_;
};

} // namespace optics
