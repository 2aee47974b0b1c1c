// SPDX-License-Identifier: GPL-2.0-or-later
// The words of a syntax.
#include "shell/syntax_words.hpp"

#include <cctype>

namespace diagsh {

bool SyntaxWord::is_keyword() const
{
    return !text.empty() && (std::islower(static_cast<unsigned char>(text[0])) != 0 ||
                             std::isdigit(static_cast<unsigned char>(text[0])) != 0);
}

std::vector<SyntaxWord> words_of(std::string_view syntax, const std::vector<std::string> &help)
{
    constexpr std::string_view opening = "<[{", closing = ">]}", ends = " |<>[]{}";
    std::vector<SyntaxWord> words;
    std::size_t depth = 0;
    std::size_t element = 0;
    for (std::size_t at = 0; at < syntax.size();) {
        const char c = syntax[at];
        if (opening.find(c) != std::string_view::npos) {
            ++depth;
        } else if (closing.find(c) != std::string_view::npos && depth > 0) {
            --depth;
        } else if (c == ' ' && depth == 0) {
            ++element;
        } else if (ends.find(c) == std::string_view::npos && c != '!') {
            const std::string_view rest = syntax.substr(at);
            const std::string_view text = rest.substr(0, rest.find_first_of(ends));
            // Behind a "$" stands a name for the program, which has no help.
            if (const std::string_view word = text.substr(0, text.find('$')); !word.empty())
                words.push_back({std::string(word),
                                 words.size() < help.size() ? help[words.size()] : std::string(), depth,
                                 element});
            at += text.size();
            continue;
        }
        ++at;
    }
    return words;
}

} // namespace diagsh
