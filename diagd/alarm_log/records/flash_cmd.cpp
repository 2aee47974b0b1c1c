// SPDX-License-Identifier: GPL-2.0-or-later
// Commands of the flash log: the level from which records are saved, and the file.
// Failure policy: saving begins with emptying the file, so whatever fails after that has lost what was saved
// before; no record is ever half saved, and each failure is one line.  The store's semaphore is held until
// the flash has everything: other writers wait, but the file is one moment's content of the store.
#include "base/owner.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/records/record_chain.hpp"
#include "diagd/alarm_log/syntax.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

using namespace diagd;

namespace {

// Root's effective user id for the whole process: the flash belongs to root.
class EffectiveRoot {
public:
    EffectiveRoot() noexcept : saved_(geteuid()) { become(0); }
    ~EffectiveRoot() { restore(); }
    EffectiveRoot(const EffectiveRoot &) = delete;
    EffectiveRoot &operator=(const EffectiveRoot &) = delete;

    // At once; a second call does nothing.
    void restore() noexcept
    {
        if (is_changed_)
            become(saved_);
        is_changed_ = false;
    }

private:
    // One that is refused shows when the file is opened.
    static void become(uid_t user) noexcept { [[maybe_unused]] const int result = seteuid(user); }

    uid_t saved_;
    bool is_changed_ = true;
};

constexpr const char *flash_file_path = "/media/config/var/alarm_log.log";

base::File open_and_tell(struct vty *vty, const char *mode)
{
    base::File file{std::fopen(flash_file_path, mode)};
    if (!file)
        vty_out(vty, "open flash log file %s failed\n", flash_file_path);
    return file;
}

// Length of the line, negative with errno set when it cannot be written.
int print_record(std::FILE *stream, const tq_alarm_slot_t &slot) noexcept
{
    const std::string_view level = alarm_level_name(slot.level);
    const std::string_view name = alarm_name(slot.alarm_id);
    const std::string_view description = alarm_description(slot.alarm_id);
    const std::string_view message = field_text(slot.message);
    return std::fprintf(stream, "[%4d/%02d/%02d %02d:%02d:%02d] [%.*s] [%.*s] [%.*s] : %.*s\n", slot.year,
                        slot.mon, slot.mday, slot.hour, slot.min, slot.sec, print_length(level), level.data(),
                        print_length(name), name.data(), print_length(description), description.data(),
                        print_length(message), message.data());
}

// Writes a line for each valid record of the level and above, oldest first.  A line that does not fit into
// the flash ends it, and nothing of that line stays in the file.  0, or the errno of what failed.
int write_records(std::FILE *stream, const RecordChain &chain, int level) noexcept
{
    // A line at a time, so that it is known which was the last that the flash took.
    std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    off_t written = 0;
    int error = 0;
    chain.walk(chain.head(), [&](const tq_alarm_slot_t &slot) {
        if (slot.valid == 0 || slot.level < level)
            return true;
        const int length = print_record(stream, slot);
        if (length < 0) {
            error = errno;
            return false;
        }
        written += length;
        return true;
    });
    if (error != 0) {
        __fpurge(stream); // or closing would write what is left of the line
        if (ftruncate(fileno(stream), written) != 0)
            error = errno;
    }
    return error;
}

// Makes the file everybody's and brings it to the flash.  0, or the errno of what failed.
int sync_flash_file(std::FILE *stream) noexcept
{
    int error = std::fflush(stream) == 0 ? 0 : errno;
    fchmod(fileno(stream), 0777); // a file that only root may read is saved nevertheless
    if (fsync(fileno(stream)) != 0)
        error = errno;
    return error;
}

void save_records(struct vty *vty)
{
    const base::File file = open_and_tell(vty, "w+");
    if (!file)
        return;
    tq_alarm_store_t *const store = attached_store();
    if (store == nullptr) {
        vty_out(vty, "get share memory failed : %s\n", safe_strerror(errno));
        return;
    }
    const int level = get_flash_level_from_database(&g_diagd_db);
    if (level == TQ_ALARM_LEVEL_ALL || level == -1) {
        vty_out(vty, "get flash level failed\n");
        return;
    }
    const RecordChain chain{*store, TQ_ALARM_CAPACITY};
    int error = chain.empty() ? 0 : write_records(file.get(), chain, level);
    const int sync_error = sync_flash_file(file.get());
    if (error == 0)
        error = sync_error;
    if (error != 0)
        vty_out(vty, "flash log file sync failed : %s\n", safe_strerror(error));
}

} // namespace

DEFUN(config_alarm_log_flash, config_alarm_log_flash_cmd, "alarm-log flash level " LEVEL_SYNTAX,
      "Alarm log.\n"
      "Specify log flash.\n" LEVEL_HELP)
{
    char level[16];
    copy_text(level, argv[3]->text);
    const int code = db_olt_alarm_log_set_alarm_log_flash_level(&g_diagd_db, level, sizeof level, 1);
    if (code != 0)
        vty_out(vty, "set alarm log flash level failed : %s\n", tq_strerror(code));
    return CMD_SUCCESS;
}

ALIAS_HIDDEN(config_alarm_log_flash, config_syslog_flash_cmd, "syslog flash level " LEVEL_SYNTAX,
             "Alarm log.\n"
             "Specify log flash.\n" LEVEL_HELP)

DEFUN(show_alarm_log_flash, show_alarm_log_flash_cmd, "show alarm-log flash level",
      "Show information.\n"
      "Alarm log.\n"
      "Specify log flash.\n"
      "Specify log level.\n")
{
    char level[16] = "";
    int length = sizeof level;
    const int code = db_olt_alarm_log_get_alarm_log_flash_level(&g_diagd_db, level, &length);
    if (code != 0) {
        vty_out(vty, "get alarm log flash level failed : %s\n", tq_strerror(code));
        return CMD_SUCCESS;
    }
    const std::string_view text = field_text(level);
    if (text.empty())
        return CMD_SUCCESS;
    vty_out(vty, "alarm log flash level is %.*s.\n", print_length(text), text.data());
    vty_out(vty,
            "log level priority: 0-debug 1-info 2-notice 3-warning 4-major 5-critical 6-alert 7-emerg\n");
    vty_out(vty, "logs higher than or equal to this level will be written into Flash.\n");
    return CMD_SUCCESS;
}

DEFUN(save_alarm_log_flash, save_alarm_log_flash_cmd, "save alarm-log flash",
      "Save log to flash.\n"
      "Alarm log.\n"
      "Specify log flash.\n")
{
    await_free(alarm_log_sem_id);
    const EventLoopKept kept; // or other sessions would be root's
    EffectiveRoot root;
    const Semaphore lock{alarm_log_sem_id};
    save_records(vty);
    root.restore(); // before others can take the semaphore
    return CMD_SUCCESS;
}

// The file is everybody's once it was saved, so no privileges are needed.
DEFUN(clear_alarm_log_flash, clear_alarm_log_flash_cmd, "clear alarm-log flash",
      "Clear log from flash.\n"
      "Alarm log.\n"
      "Specify log flash.\n")
{
    if (open_and_tell(vty, "w"))
        sync();
    return CMD_SUCCESS;
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &config_alarm_log_flash_cmd}, {config_node, &config_syslog_flash_cmd},
    {config_node, &show_alarm_log_flash_cmd},   {config_node, &save_alarm_log_flash_cmd},
    {config_node, &clear_alarm_log_flash_cmd},
};
} // namespace
constinit const CommandTable diagd::flash_commands{commands};
