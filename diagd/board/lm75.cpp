// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the board's temperature sensor; the failure policy stands in lm75.hpp.
#include "diagd/board/lm75.hpp"

#include "util_i2c.h"

#include <array>
#include <atomic>
#include <chrono>
#include <thread>

namespace {

constexpr int sensor_bus = 2;
constexpr std::uint8_t sensor_address = 0x48;
constexpr std::uint8_t temperature_register = 0;
constexpr int attempts = 3;

int sensor_handle = -1; // set once, before any thread reads

// Tenths of a degree; read and written from several threads.
std::atomic<int> last_good = diagd::lm75_never_read_tenths_c;

} // namespace

bool diagd::open_board_sensor() noexcept
{
    sensor_handle = misc_i2c_device_init(sensor_bus);
    return sensor_handle >= 0;
}

int lm75_temperature_get() noexcept
{
    using namespace std::chrono_literals;

    std::array<std::uint8_t, 2> reg{};
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (misc_i2c_read(sensor_handle, sensor_address, temperature_register, reg.data(), reg.size(), 0) >=
            0) {
            const int temperature = diagd::lm75_tenths_c(reg);
            last_good.store(temperature, std::memory_order_relaxed);
            return temperature;
        }
        std::this_thread::sleep_for(1s);
    }
    return last_good.load(std::memory_order_relaxed);
}
