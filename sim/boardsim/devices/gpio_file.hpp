// SPDX-License-Identifier: GPL-2.0-or-later
// Shared state of the simulated GPIO driver: a file in the board's folder, mapped by boardsim and by
// libgpio_sim.so in every process that uses the device.  Requests are served where they are made, at the
// speed of a driver call; boardsim only watches and injects faults.
#pragma once

#include <atomic>
#include <cstdint>

namespace sim {

inline constexpr std::uint32_t gpio_magic = 0x6f696770;
inline constexpr char gpio_file_name[] = "gpio";

// Requests of the device: argument is a 32-bit word, bits 0-7 the value, bits 8-15 the line.
inline constexpr unsigned long gpio_request_set = 1;
inline constexpr unsigned long gpio_request_get = 3;

// The next `skip` calls work, then `left` calls fail (negative: all) with `error`.
struct GpioFault {
    std::atomic<std::int32_t> skip;
    std::atomic<std::int32_t> left;
    std::atomic<std::int32_t> error;
};

struct GpioFile {
    std::atomic<std::uint32_t> magic;
    std::atomic<std::uint32_t> last_word; // of the last request of either kind
    std::atomic<std::uint64_t> opened;
    std::atomic<std::uint64_t> get_requests;
    std::atomic<std::uint64_t> set_requests;
    GpioFault fail_open;
    GpioFault fail_get;
    GpioFault fail_set;
    std::atomic<std::uint32_t> set_count[256]; // by line
    std::atomic<std::uint8_t> value[256];
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free &&
              std::atomic<std::int32_t>::is_always_lock_free);

} // namespace sim
