// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/judgement.hpp"

#include <cmath>

namespace optics {

double dbm(double mw)
{
    return 10 * std::log10(mw);
}

namespace {

class Judge {
public:
    explicit Judge(const Thresholds &thresholds) : limits_(thresholds), usable_(usable(thresholds)) {}

    // No light is a power of 0.
    void judge(Value &value) const
    {
        if (!usable_ || (value.state != State::ok && value.state != State::no_light))
            return;
        const double at = value.state == State::ok ? value.value : 0;
        value.judgement = at > limits_.high_alarm     ? Judgement::high_alarm
                          : at < limits_.low_alarm    ? Judgement::low_alarm
                          : at > limits_.high_warning ? Judgement::high_warning
                          : at < limits_.low_warning  ? Judgement::low_warning
                                                      : Judgement::normal;
    }

private:
    const Thresholds &limits_;
    bool usable_;
};

} // namespace

void judge_all(Module &module)
{
    const auto judge_of = [&](Quantity quantity) { return Judge(module.thresholds_of(quantity)); };
    judge_of(Quantity::temperature_c).judge(module.temperature);
    judge_of(Quantity::voltage_v).judge(module.voltage);
    const Judge bias = judge_of(Quantity::bias_ma);
    const Judge tx_power = judge_of(Quantity::tx_power_mw);
    const Judge rx_power = judge_of(Quantity::rx_power_mw);
    for (std::size_t i = 0; i < module.lane_count; ++i) {
        Lane &lane = module.lanes[i];
        bias.judge(lane.bias);
        tx_power.judge(lane.tx_power);
        rx_power.judge(lane.rx_power);
    }
}

} // namespace optics
