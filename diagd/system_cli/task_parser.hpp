// SPDX-License-Identifier: GPL-2.0-or-later
// What the kernel's files about a thread say of it.  Pure: no file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace diagd {

// The number that a folder of /proc stands for; nothing when its name is not all digits.
[[nodiscard]] std::optional<std::uint32_t> parse_task_folder(std::string_view name) noexcept;

// From cmdline, whose arguments end with a zero byte each: the base name of the first one.  Empty for a
// thread of the kernel.
[[nodiscard]] std::string parse_task_command(std::string_view cmdline);

struct TaskStatus {
    std::string name;  // the thread's, from line 1
    std::string state; // "S (sleeping)", from line 3
};

// From status; lines that are not there leave their value empty.
[[nodiscard]] TaskStatus parse_task_status(std::string_view status);

} // namespace diagd
