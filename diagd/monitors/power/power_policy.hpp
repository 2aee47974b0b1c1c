// SPDX-License-Identifier: GPL-2.0-or-later
// What a status byte of the CPLD says about the supplies and the board's temperature, against what was seen
// before.
#pragma once

#include <cstdint>
#include <optional>

namespace diagd {

// As seen last; all zero at the start, so that the first look reports every supply that is up.
struct PowerStates {
    std::int32_t supply1 = 0; // 1 up
    std::int32_t supply2 = 0; // 1 up
    std::int32_t too_hot = 0; // 2 while the over-temperature flag is set
};

// Bit 0: supply 1 is up, bit 1: supply 2 is up, bit 2: the board is too hot.  No bit at all is no status: at
// least one supply must be up for anybody to read it.
[[nodiscard]] constexpr std::optional<PowerStates> read_power_status(std::uint8_t status) noexcept
{
    if (status == 0)
        return std::nullopt;
    return PowerStates{.supply1 = status & 1, .supply2 = status >> 1 & 1, .too_hot = status >> 1 & 2};
}

// Texts of the records to file, in this order; null where nothing changed.
struct PowerReport {
    const char *supply1 = nullptr;
    const char *supply2 = nullptr;
    const char *temperature = nullptr; // the same in either direction
};

[[nodiscard]] constexpr PowerReport report_power(const PowerStates &before, const PowerStates &now) noexcept
{
    PowerReport report;
    if (now.supply1 != before.supply1)
        report.supply1 = now.supply1 != 0 ? "Power1 Up" : "Power1 Down";
    if (now.supply2 != before.supply2)
        report.supply2 = now.supply2 != 0 ? "Power2 Up" : "Power2 Down";
    if (now.too_hot != before.too_hot)
        report.temperature = "Device temperature is too high,";
    return report;
}

} // namespace diagd
