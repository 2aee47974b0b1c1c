// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/physics/thermal.hpp"

#include <cmath>

namespace sim {

namespace {
constexpr double capacity = 300.0; // joules per kelvin: some minutes to settle
} // namespace

Airflow airflow_of(unsigned power_register, unsigned speed_register)
{
    if ((power_register & 1) == 0)
        return Airflow::none;
    switch (speed_register) {
    case 1:
        return Airflow::medium;
    case 2:
    case 3: // the older fan commands of the diagnostics count from 1
        return Airflow::high;
    default:
        return Airflow::low;
    }
}

double Thermal::resistance(Airflow airflow)
{
    switch (airflow) {
    case Airflow::low:
        return 1.0;
    case Airflow::medium:
        return 0.7;
    case Airflow::high:
        return 0.5;
    case Airflow::none:
        break;
    }
    return 2.0;
}

// Exact for a step of any length, as long as nothing changes in it.
void Thermal::step(double seconds, Airflow airflow)
{
    const double settled = ambient_celsius + watts_ * resistance(airflow);
    celsius_ = settled + (celsius_ - settled) * std::exp(-seconds / (capacity * resistance(airflow)));
}

} // namespace sim
