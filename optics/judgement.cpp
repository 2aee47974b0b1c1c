// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/judgement.hpp"

#include <cmath>

namespace optics {

double dbm(double mw)
{
    return 10 * std::log10(mw);
}

void judge_all(Module &module)
{
    const auto judge_one = [&](Value &value, Quantity quantity) {
        value.judgement = judge(value, module.thresholds_of(quantity));
    };
    judge_one(module.temperature, Quantity::temperature_c);
    judge_one(module.voltage, Quantity::voltage_v);
    for (std::size_t i = 0; i < module.lane_count; ++i) {
        Lane &lane = module.lanes[i];
        judge_one(lane.bias, Quantity::bias_ma);
        judge_one(lane.tx_power, Quantity::tx_power_mw);
        judge_one(lane.rx_power, Quantity::rx_power_mw);
    }
}

} // namespace optics
