// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show and clear alarm records.  The store's semaphore is held from before the store is looked
// at until the last line is printed: a long listing delays other writers, but no record changes under it. All
// commands succeed; a store that cannot be attached is said in one line.
#include "base/printable.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/records/record_chain.hpp"
#include "diagd/alarm_log/syntax.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/text.hpp"

#include <cerrno>
#include <cstdlib>

using namespace diagd;

// Runs `body(chain)` on a chain that is not empty.
template <typename Body>
static int with_records(struct vty *vty, Body body)
{
    const Semaphore lock{alarm_log_sem_id};
    tq_alarm_store_t *const store = attached_store();
    if (store == nullptr) {
        vty_out(vty, "get share memory failed : %s\n", safe_strerror(errno));
        return CMD_SUCCESS;
    }
    const RecordChain chain{*store, TQ_ALARM_CAPACITY};
    if (!chain.empty())
        body(chain);
    return CMD_SUCCESS;
}

// All forms have the level keyword in the same place.
static LevelFilter level_argument(int argc, struct cmd_token *argv[])
{
    constexpr int level_index = 3;
    char keyword[16];
    copy_text(keyword, argc > level_index ? argv[level_index]->text : "all");
    return static_cast<LevelFilter>(get_level_num_by_string(keyword) & 0xFF);
}

static std::uint16_t count_argument(struct cmd_token *argv[])
{
    return static_cast<std::uint16_t>(std::strtoul(argv[3]->arg, nullptr, 10));
}

static RecordSink print_to(struct vty *vty)
{
    return [vty](const tq_alarm_slot_t &slot) {
        const std::string_view description = alarm_description(slot.alarm_id);
        vty_out(vty, "[%4d/%02d/%02d %02d:%02d:%02d]  %.*s    %s\n", slot.year, slot.mon, slot.mday,
                slot.hour, slot.min, slot.sec, print_length(description), description.data(),
                base::printable(field_text(slot.message)).c_str());
    };
}

DEFUN(show_alarm_log, show_alarm_log_cmd, "show alarm-log [level " LEVEL_SYNTAX "]",
      "Show information.\n"
      "Alarm log.\n" LEVEL_HELP)
{
    const LevelFilter level = level_argument(argc, argv);
    return with_records(vty, [&](const RecordChain &chain) {
        const int shown = view_all(chain, level, print_to(vty));
        if (shown > 0)
            vty_out(vty, "alarm log count: %d\n", shown);
    });
}

DEFUN(show_alarm_log_head, show_alarm_log_head_cmd, "show alarm-log head (1-1000)",
      "Show information.\n"
      "Alarm log.\n"
      "Oldest log.\n"
      "Specify oldest log count.\n")
{
    return with_records(
        vty, [&](const RecordChain &chain) { view_oldest(chain, count_argument(argv), print_to(vty)); });
}

DEFUN(show_alarm_log_tail, show_alarm_log_tail_cmd, "show alarm-log tail (1-1000)",
      "Show information.\n"
      "Alarm log.\n"
      "Latest log.\n"
      "Specify latest log count.\n")
{
    return with_records(
        vty, [&](const RecordChain &chain) { view_newest(chain, count_argument(argv), print_to(vty)); });
}

// The first help line is that of the show commands: operators' scripts compare it.
DEFUN(clear_alarm_log, clear_alarm_log_cmd, "clear alarm-log [level " LEVEL_SYNTAX "]",
      "Show information.\n"
      "Alarm log.\n" LEVEL_HELP)
{
    const LevelFilter level = level_argument(argc, argv);
    return with_records(vty, [&](const RecordChain &chain) { delete_records(chain, level); });
}

ALIAS_HIDDEN(clear_alarm_log, clear_syslog_cmd, "clear syslog [level " LEVEL_SYNTAX "]",
             "Show information.\n"
             "Alarm log.\n" LEVEL_HELP)

namespace {
constexpr InstallRow commands[] = {
    {config_node, &show_alarm_log_cmd},      {config_node, &show_alarm_log_head_cmd},
    {config_node, &show_alarm_log_tail_cmd}, {config_node, &clear_alarm_log_cmd},
    {config_node, &clear_syslog_cmd},
};
} // namespace
constinit const CommandTable diagd::record_commands{commands};
