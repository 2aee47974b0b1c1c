// SPDX-License-Identifier: GPL-2.0-or-later
// Commands of the flash log: the level from which records are saved, and the file.
// Failure policy: saving begins with emptying the file, so whatever fails after that has lost what was saved
// before; no record is ever half saved, and each failure is one line.  The store's semaphore is held until
// the flash has everything: other writers wait, but the file is one moment's content of the store.
#include "diagd/alarm_log/export/alarm_log_commands.hpp"

#include "diagd/alarm_log/actions/level_words.hpp"
#include "diagd/alarm_log/records/attached_store.hpp"
#include "diagd/alarm_log/records/flash_file.hpp"
#include "diagd/alarm_log/records/record_chain.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <cerrno>
#include <unistd.h>

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

base::File open_and_tell(struct vty *vty, const char *mode)
{
    base::File file = open_flash_file(mode);
    if (!file)
        vty_out(vty, "open flash log file %s failed\n", flash_file_path);
    return file;
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

DEFUN(config_alarm_log_flash, config_alarm_log_flash_cmd, "alarm-log flash level " LEVEL_WORDS,
      "Alarm log.\n"
      "Specify log flash.\n" LEVEL_STR)
{
    char level[16];
    copy_text(level, argv[3]->text);
    const int code = db_olt_alarm_log_set_alarm_log_flash_level(&g_diagd_db, level, sizeof level, 1);
    if (code != 0)
        vty_out(vty, "set alarm log flash level failed : %s\n", tq_strerror(code));
    return CMD_SUCCESS;
}

ALIAS_HIDDEN(config_alarm_log_flash, config_syslog_flash_cmd, "syslog flash level " LEVEL_WORDS,
             "Alarm log.\n"
             "Specify log flash.\n" LEVEL_STR)

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
