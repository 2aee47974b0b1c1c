// SPDX-License-Identifier: GPL-2.0-or-later
// Warmth of the board: a heater warms it, the fans and the air around cool it.  Pure: no clock, no I/O.
#pragma once

namespace sim {

// How much air the fans move.
enum class Airflow { none, low, medium, high };

// Register 4 is the power of the fans, register 5 their speed; a value that is no speed turns them slowly.
Airflow airflow_of(unsigned power_register, unsigned speed_register);

// One lump of heat (Newton's law of cooling).  It settles at ambient + watts * resistance of the airflow.
class Thermal {
public:
    static constexpr double ambient_celsius = 25.0;

    explicit Thermal(double celsius = ambient_celsius) : celsius_(celsius) {}

    void heat(double watts) { watts_ = watts; }
    [[nodiscard]] double watts() const { return watts_; }
    [[nodiscard]] double celsius() const { return celsius_; }
    void step(double seconds, Airflow airflow);

    // Kelvin per watt between board and air.
    static double resistance(Airflow airflow);

private:
    double celsius_;
    double watts_ = 0;
};

} // namespace sim
