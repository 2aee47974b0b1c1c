// SPDX-License-Identifier: GPL-2.0-or-later
// Commands on the clock and the running time.
// Failure policy: a clock that cannot be set is said by the programs that set it, on the daemon's streams;
// the difference is stored and the time shown whatever they did.  A running time that cannot be read is said
// on standard output and counts as 0.
#include "diagd/system_cli/clock_cli.hpp"

#include "base/owner.hpp"
#include "diagd/core/child_programs.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

using diagd::config_node;
using diagd::line_end;

namespace {

// Nothing, with errno set, when the file cannot be read or says no number.
std::optional<diagd::RunningTime> read_uptime() noexcept
{
    const base::File file{std::fopen("/proc/uptime", "re")};
    if (!file)
        return std::nullopt;
    std::array<char, 512> text;
    errno = EINVAL;
    return diagd::parse_uptime({text.data(), std::fread(text.data(), 1, text.size(), file.get())});
}

} // namespace

void system_running_time_get(diagd::RunningTime *time) noexcept
{
    *time = {};
    if (const auto uptime = read_uptime())
        *time = *uptime;
    else
        std::printf("%s error: %s\r\n", __func__, std::strerror(errno));
}

static std::tm local_time(std::time_t time) noexcept
{
    tzset(); // another zone counts from when the system has it
    std::tm local{};
    localtime_r(&time, &local);
    return local;
}

static std::tm local_time() noexcept
{
    return local_time(std::time(nullptr));
}

static std::string running_time() noexcept
{
    diagd::RunningTime time;
    system_running_time_get(&time);
    return diagd::running_time_text(time);
}

DEFUN(config_time, config_time_cmd,
      "time set year (2000-2099) month (1-12) day (1-31) hour (0-23) minute (0-59) second (0-59)",
      "Specify system time configuration.\n"
      "Set system time.\n"
      "Specify year.\n"
      "Specify year value from 2000.\n"
      "Specify month.\n"
      "Specify month value.\n"
      "Specify day.\n"
      "Specify day value.\n"
      "Specify hour.\n"
      "Specify hour value.\n"
      "Specify minute.\n"
      "Specify minute value.\n"
      "Specify second.\n"
      "Specify second value.\n")
{
    constexpr int first_value = 3; // and then every other word
    diagd::CalendarTime asked;
    std::ranges::generate(asked, [argv, at = first_value]() mutable {
        const char *const word = argv[at]->arg;
        at += 2;
        return std::strtol(word, nullptr, 10);
    });

    const std::time_t before = std::time(nullptr);
    diagd::run_shell_line(diagd::set_clock_line(asked).c_str());
    diagd::run_shell_line("hwclock -w"); // the hardware clock is where the time comes from after a restart
    const std::time_t after = std::time(nullptr);

    // The time service learns from it how far its own times are off now.
    const auto difference_s = static_cast<std::int32_t>(after - before);
    db_olt_ntp_set_ntp_diff_time(&g_diagd_db, &difference_s, sizeof difference_s, 1);

    vty_out(vty, "set time : %s%s", diagd::calendar_text(local_time(after)).c_str(), line_end);
    return CMD_SUCCESS;
}

DEFUN(show_time, show_time_cmd, "show time [json]",
      "Show running system information\n"
      "Specify system time.\n"
      "JavaScript Object Notation\n")
{
    const std::tm now = local_time();
    if (use_json(argc, argv)) {
        const diagd::Json json = diagd::json_new_object();
        json_object_int_add(json.get(), "timeYear", now.tm_year + 1900);
        json_object_int_add(json.get(), "timeMonth", now.tm_mon + 1);
        json_object_int_add(json.get(), "timeDay", now.tm_mday);
        json_object_int_add(json.get(), "timeHour", now.tm_hour);
        json_object_int_add(json.get(), "timeMinute", now.tm_min);
        json_object_int_add(json.get(), "timeSecond", now.tm_sec);
        diagd::json_print(vty, json);
        return CMD_SUCCESS;
    }
    vty_out(vty, "The current date/time is : %s%s", diagd::calendar_text(now).c_str(), line_end);
    vty_out(vty, "Syetem Running Time:    %s%s", running_time().c_str(), line_end);
    return CMD_SUCCESS;
}

DEFUN(show_sys_running_time, show_sys_running_time_cmd, "show sys running-time [json]",
      "Show running system information\n"
      "Show sys\n"
      "Show system run time.\n"
      "JavaScript Object Notation\n")
{
    const std::string running = running_time();
    if (use_json(argc, argv)) {
        const diagd::Json json = diagd::json_new_object();
        json_object_string_add(json.get(), "currentTime", diagd::calendar_text(local_time()).c_str());
        json_object_string_add(json.get(), "runningTime", running.c_str());
        diagd::json_print(vty, json);
        return CMD_SUCCESS;
    }
    vty_out(vty, "Syetem Running Time:    %s%s", running.c_str(), line_end);
    return CMD_SUCCESS;
}

static constexpr diagd::InstallRow commands[] = {
    {config_node, &config_time_cmd},
    {config_node, &show_time_cmd},
    {config_node, &show_sys_running_time_cmd},
};

void diagd::clock_cmd_init() noexcept
{
    install_table(commands);
}
