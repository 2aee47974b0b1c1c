// SPDX-License-Identifier: GPL-2.0-or-later
// The verbs of diagsh.
#include "shell/verbs.hpp"

#include "shell/failure.hpp"

#include <algorithm>
#include <array>

namespace diagsh {

namespace {

struct Verb {
    std::string_view name;
    int (*run)(const OltPaths &, const Words &);
};
constexpr std::array<Verb, 4> verbs{{
    {"fans", explain_fans},
    {"logic", replace_logic},
    {"threshold", set_port_thresholds},
    {"traps", tell_receivers},
}};

} // namespace

int run_verb(const OltPaths &olt, const Words &words)
{
    const auto *const verb = std::ranges::find(verbs, words.front(), &Verb::name);
    if (verb == verbs.end())
        throw Failure(EX_USAGE, "unexpected argument \"" + words.front() +
                                    "\"; commands are given with -c, try diagsh --help");
    return verb->run(olt, {words.begin() + 1, words.end()});
}

} // namespace diagsh
