// SPDX-License-Identifier: GPL-2.0-or-later
// Words for what the model holds: keys of JSON, and what people read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "optics/model.hpp"

namespace optics {

std::string_view name_of(Family family);
std::string_view name_of(State state);
std::string_view name_of(Reason reason); // empty for none
std::string_view name_of(Judgement judgement);
std::string_view name_of(Medium medium);
std::string_view name_of(Calibration calibration);
std::string_view name_of(Check::Result result);
// CMIS byte 3.
std::string_view module_state_name(std::uint8_t state);

// The same as a sentence would have it.
std::string_view explain(Reason reason);

// The flags that are set, as judgements are called.
std::vector<std::string_view> names_of(const Flags &flags);

struct QuantityWords {
    std::string_view key, title, unit;
};
const QuantityWords &words_of(Quantity quantity);

// What makes the memory doubtful, one line each; empty for a good one.
std::vector<std::string> doubts_of(const Module &module);

enum class Verdict { good, doubtful, not_decoded };
Verdict verdict_of(const Module &module);
std::string_view name_of(Verdict verdict);

} // namespace optics
