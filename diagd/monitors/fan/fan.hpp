// SPDX-License-Identifier: GPL-2.0-or-later
// The fans: their settings, that is what the operator asked for and what the monitor last told the CPLD, and
// the parts of the room.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace diagd {

enum FanMode : std::int32_t { fan_close = 0, fan_open = 1, fan_auto = 2 };

// Also what the CPLD's speed register takes.
enum FanSpeed : std::int32_t { speed_low = 0, speed_medium = 1, speed_high = 2, speed_auto = 5 };

inline constexpr std::int32_t not_yet_written = -1;
inline constexpr std::int32_t default_temperature = 350;

// Written by the commands (mode, speed, temperature) and by the monitor (state, current speed, reference),
// each word by one of them at a time: always load and store with std::memory_order_relaxed.
using FanWord = std::atomic<std::int32_t>;
static_assert(sizeof(FanWord) == 4 && FanWord::is_always_lock_free);

struct FanMaster {
    FanWord mode{fan_auto};
    FanWord speed{speed_auto};
    FanWord state{not_yet_written};                     // 0 closed, 1 open
    FanWord current_speed{not_yet_written};             // 0 low, 1 medium, 2 high
    FanWord open_temperature{default_temperature};      // tenths of a degree Celsius
    FanWord reference_temperature{default_temperature}; // tenths of a degree Celsius, see fan_policy.hpp
};
static_assert(sizeof(FanMaster) == 24);
static_assert(offsetof(FanMaster, mode) == 0 && offsetof(FanMaster, speed) == 4);
static_assert(offsetof(FanMaster, state) == 8 && offsetof(FanMaster, current_speed) == 12);
static_assert(offsetof(FanMaster, open_temperature) == 16);
static_assert(offsetof(FanMaster, reference_temperature) == 20);

// All words as they are before the first command and the first pass of the monitor.
void reset_fan_master() noexcept;

// The reference becomes `lifted`, unless it is not `seen` any more: one that the operator has set meanwhile
// stands.
void lift_reference(std::int32_t seen, std::int32_t lifted) noexcept;

} // namespace diagd

extern diagd::FanMaster fan_master;

// The setters only store: the monitor acts on its next pass.  They return 0.
int fan_temperature_set(unsigned degrees) noexcept; // whole degrees; the reference follows
int fan_temperature_get() noexcept;                 // tenths of a degree Celsius
int fan_mode_set(int mode) noexcept;
int fan_mode_get() noexcept;
// Texts of a code; what has not been written yet reads as open, and as low.
const char *fan_mode_str_get(int mode) noexcept;
const char *fan_speed_str_get(int speed) noexcept;

// Installs the node of the fans' running configuration and the commands.  Returns 0.
int fan_cmd_init();
