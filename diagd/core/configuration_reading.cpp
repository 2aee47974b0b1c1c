// SPDX-License-Identifier: GPL-2.0-or-later
// What goes wrong in a configuration file, on standard error; see configuration_reading.hpp.
#include "diagd/core/configuration_reading.hpp"

#include "diagd/core/frr.hpp"

#include <atomic>
#include <cstdio>
#include <string_view>

namespace diagd {

namespace {

// libfrr's words for a line that it could not execute: a reason, these, the number and the line.
constexpr std::string_view refused_line = " on config line ";
constexpr std::string_view missing_file = "can't open configuration file";
constexpr std::string_view backup_taken = "using backup configuration file";

// Other threads log at any time, and may be at the target when a reading ends: it stays for good.
std::atomic<bool> reading;
std::atomic<unsigned> refused;
std::atomic<bool> missing;
std::atomic<bool> backup;

void write(struct zlog_target *target, struct zlog_msg *messages[], std::size_t count) noexcept
{
    for (std::size_t i = 0; reading && i < count; ++i) {
        if (zlog_msg_prio(messages[i]) > target->prio_min)
            continue;
        std::size_t size = 0;
        const char *const characters = zlog_msg_text(messages[i], &size);
        const std::string_view text{characters, size};
        std::fprintf(stderr, "diagd: %.*s\n", static_cast<int>(text.size()), text.data());
        if (text.find(refused_line) != std::string_view::npos)
            ++refused;
        if (text.find(missing_file) != std::string_view::npos)
            missing = true;
        if (text.find(backup_taken) != std::string_view::npos)
            backup = true;
    }
}

void install_target() noexcept
{
    static struct zlog_target target;
    if (target.logfn != nullptr)
        return;
    target.prio_min = LOG_WARNING;
    target.logfn = write;
    zlog_target_replace(nullptr, &target);
}

} // namespace

ConfigurationReading::ConfigurationReading() noexcept
{
    install_target();
    refused = 0;
    missing = false;
    backup = false;
    reading = true;
}

ConfigurationReading::~ConfigurationReading()
{
    reading = false;
}

unsigned ConfigurationReading::refused_lines() const noexcept
{
    return refused;
}

bool ConfigurationReading::file_is_missing() const noexcept
{
    return missing;
}

bool ConfigurationReading::backup_is_used() const noexcept
{
    return backup;
}

} // namespace diagd
