// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show and clear alarm records.  The store's semaphore is held from before the store is looked
// at until the last line is printed: a long listing delays other writers, but no record changes under it. All
// commands succeed; a store that cannot be attached is said in one line.
#include "diagd/alarm_log/export/alarm_log_commands.hpp"

#include "base/printable.hpp"
#include "diagd/alarm_log/actions/level_words.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/records/attached_store.hpp"
#include "diagd/alarm_log/records/record_view.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/text.hpp"

#include <cerrno>
#include <cstdlib>

// Runs `body(chain)` on a chain that is not empty.
template <typename Body>
static int with_records(struct vty *vty, Body body)
{
    const diagd::Semaphore lock{alarm_log_sem_id};
    tq_alarm_store_t *const store = diagd::attached_store();
    if (store == nullptr) {
        vty_out(vty, "get share memory failed : %s\n", safe_strerror(errno));
        return CMD_SUCCESS;
    }
    const diagd::RecordChain chain{*store, TQ_ALARM_CAPACITY};
    if (!chain.empty())
        body(chain);
    return CMD_SUCCESS;
}

// All forms have the level keyword in the same place.
static diagd::LevelFilter level_argument(int argc, struct cmd_token *argv[])
{
    constexpr int level_index = 3;
    char keyword[16];
    diagd::copy_text(keyword, argc > level_index ? argv[level_index]->text : "all");
    return static_cast<diagd::LevelFilter>(get_level_num_by_string(keyword) & 0xFF);
}

static std::uint16_t count_argument(struct cmd_token *argv[])
{
    return static_cast<std::uint16_t>(std::strtoul(argv[3]->arg, nullptr, 10));
}

static diagd::RecordSink print_to(struct vty *vty)
{
    return [vty](const tq_alarm_slot_t &slot) {
        const std::string_view description = diagd::alarm_description(slot.alarm_id);
        vty_out(vty, "[%4d/%02d/%02d %02d:%02d:%02d]  %.*s    %s\n", slot.year, slot.mon, slot.mday,
                slot.hour, slot.min, slot.sec, diagd::print_length(description), description.data(),
                base::printable(diagd::field_text(slot.message)).c_str());
    };
}

DEFUN(show_alarm_log, show_alarm_log_cmd, "show alarm-log [level " LEVEL_WORDS "]",
      "Show information.\n"
      "Alarm log.\n" LEVEL_STR)
{
    const diagd::LevelFilter level = level_argument(argc, argv);
    return with_records(vty, [&](const diagd::RecordChain &chain) {
        const int shown = diagd::view_all(chain, level, print_to(vty));
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
    return with_records(vty, [&](const diagd::RecordChain &chain) {
        diagd::view_oldest(chain, count_argument(argv), print_to(vty));
    });
}

DEFUN(show_alarm_log_tail, show_alarm_log_tail_cmd, "show alarm-log tail (1-1000)",
      "Show information.\n"
      "Alarm log.\n"
      "Latest log.\n"
      "Specify latest log count.\n")
{
    return with_records(vty, [&](const diagd::RecordChain &chain) {
        diagd::view_newest(chain, count_argument(argv), print_to(vty));
    });
}

// The first help line is that of the show commands: operators' scripts compare it.
DEFUN(clear_alarm_log, clear_alarm_log_cmd, "clear alarm-log [level " LEVEL_WORDS "]",
      "Show information.\n"
      "Alarm log.\n" LEVEL_STR)
{
    const diagd::LevelFilter level = level_argument(argc, argv);
    return with_records(vty, [&](const diagd::RecordChain &chain) { diagd::delete_records(chain, level); });
}

ALIAS_HIDDEN(clear_alarm_log, clear_syslog_cmd, "clear syslog [level " LEVEL_WORDS "]",
             "Show information.\n"
             "Alarm log.\n" LEVEL_STR)
