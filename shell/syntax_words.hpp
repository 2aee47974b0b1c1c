// SPDX-License-Identifier: GPL-2.0-or-later
// The words of a command's syntax, as "list" shows it, with the help of each.  Pure.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

struct SyntaxWord {
    std::string text; // a keyword, or what stands for a value: WORD, (1-10), A.B.C.D
    std::string help;
    std::size_t depth = 0;   // of the brackets that it stands in
    std::size_t element = 0; // which part of the syntax, outermost brackets and all in them being one
    bool is_keyword() const;
};

// The words of `syntax` with `help`, one line for each; words without a line have none.
std::vector<SyntaxWord> words_of(std::string_view syntax, const std::vector<std::string> &help);

} // namespace diagsh
