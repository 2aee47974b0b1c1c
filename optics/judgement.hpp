// SPDX-License-Identifier: GPL-2.0-or-later
// Values: whether there is one, and how it stands to the module's own thresholds.
#pragma once

#include "optics/model.hpp"

namespace optics {

// The highest and lowest that a module can be at; external calibration makes anything of a raw number.
struct Plausible {
    double low, high;
};
inline constexpr std::array<Plausible, quantities> plausible{{
    {-128, 128}, // degrees: what the signed word holds
    {0, 10},     // V
    {0, 1000},   // mA
    {0, 100},    // mW: 20 dBm
    {0, 100},
}};

inline bool is_power(Quantity quantity)
{
    return quantity == Quantity::tx_power_mw || quantity == Quantity::rx_power_mw;
}

inline Value no_value(State state, Reason reason)
{
    return {.state = state, .reason = reason};
}

// What a word as it is stands for: it cannot leave the range of its unit.  Member by member, as a value that
// is copied right after its parts were written makes the processor wait.
inline void set_measured(Value &value, bool power, double number, Flags flags)
{
    const bool dark = power && number == 0;
    value.value = number;
    value.state = dark ? State::no_light : State::ok;
    value.reason = dark ? Reason::no_light : Reason::none;
    value.flags = flags;
}

// A calibrated value: ok, no light for a power of nothing, or implausible.
inline Value measured(Quantity quantity, double value)
{
    const Plausible &limits = plausible[static_cast<std::size_t>(quantity)];
    if (is_power(quantity) && value <= 0)
        return no_value(State::no_light, Reason::no_light);
    if (!(value >= limits.low && value <= limits.high))
        return no_value(State::failed, Reason::implausible);
    return {.value = value, .state = State::ok, .reason = Reason::none};
}

// Thresholds that something can be judged by: they are there, and in order.  Unset ones (all 0) and confused
// ones would raise alarms that are none.
inline bool usable(const Thresholds &t)
{
    return t.state == State::ok && t.high_alarm > t.low_alarm && t.high_alarm >= t.high_warning &&
           t.high_warning >= t.low_warning && t.low_warning >= t.low_alarm;
}

// Judges every value of a module that is to be trusted.
void judge_all(Module &module);

} // namespace optics
