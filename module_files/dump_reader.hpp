// SPDX-License-Identifier: GPL-2.0-or-later
// Reading memory dumps as people have them: raw bytes, `ethtool -m DEV hex on`, `i2cdump -y BUS ADDR`, or
// nothing but hexadecimal digits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "module_files/module_image.hpp"

namespace module_files {

using Bytes = std::vector<std::uint8_t>;

// The bytes of one dump, whichever form it has.  Text forms must start at offset 0 and have no gaps.  `name`
// is used in complaints.  Throws ModuleError.
Bytes parse_dump(std::string_view content, const std::string &name);

// One dump with its file name, which may say what it holds (".a0.", ".a2.", ".b0.", ".b2.", ".lower.",
// ".pageNN.").
struct Dump {
    std::string name;
    Bytes bytes;
};

// The bytes of one memory, as many as its dump had.
struct Part {
    std::string name;                                                       // of the dump it came from
    std::uint8_t address = 0;                                               // 7 bits
    enum class Kind : std::uint8_t { flat, lower, page } kind = Kind::flat; // A0h and the like, or SFF-8636
    std::uint8_t page = 0;
    Bytes bytes;
};

// Which bytes of the dumps of one module are which memory, by the rules of assemble_module(); parts may be
// missing or short.  Throws ModuleError when a part is there twice, too long or of no known kind.
std::vector<Part> sort_dumps(std::vector<Dump> dumps);

struct ModuleFile {
    ModuleImage image;
    std::vector<std::string> notes; // what is odd, but no reason to refuse the module
};

// A module from its dumps.  One dump holds everything: 256 bytes of A0h, 512 of A0h and A2h; of an SFF-8636
// module lower memory, page 00h and maybe further pages of 128 bytes each.  Several dumps are parts: A0h,
// A2h and a second pair, or lower memory and pages, in that order unless their names say what they are.
// A short dump is refused, or with `pad` filled up with zeros.  Throws ModuleError.
ModuleFile assemble_module(std::vector<Dump> dumps, bool pad);

} // namespace module_files
