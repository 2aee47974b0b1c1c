// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's start order: its real main, with everything it calls recorded.
#undef main
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"
#include "diagd/leftovers.hpp"
#include "diagd/start_steps.hpp"
#include "diagd/units.hpp"

#include "tq_api.h"
#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdlib>
#include <future>
#include <string>
#include <thread>
#include <vector>

int diagd_main(int argc, char **argv);

namespace {

struct Recorder {
    std::vector<std::string> calls;
    std::vector<std::string> failing; // these calls return -1
    bool vty_config_read = false;

    int note(const std::string &call)
    {
        calls.push_back(call);
        for (const std::string &name : failing) {
            if (name == call)
                return -1;
        }
        return 0;
    }
};
Recorder recorder;

int debug_flag;
int debug_function;
std::promise<void> *waits_for_the_store; // told when a record begins to wait, which then goes on for ever
struct thread_master *const loop = reinterpret_cast<struct thread_master *>(&recorder);

} // namespace

// What main calls.
extern "C" {
int board_mmap_init(int regions, int record_size)
{
    return recorder.note("board_mmap_init " + std::to_string(regions) + " " + std::to_string(record_size));
}
int semaphore_create(int *id, int key, int count)
{
    EXPECT_EQ(id, &diagm.sem_id);
    EXPECT_EQ(key, 1057808);
    EXPECT_EQ(count, 1);
    return recorder.note("semaphore_create");
}
int database_init(tq_database_t *db)
{
    EXPECT_EQ(db, &g_diagd_db);
    EXPECT_STREQ(std::getenv("XTABLES_LIBDIR"), "/usr/lib/xtables");
    return recorder.note("database_init");
}
void *db_debug_flag_return(void)
{
    return &debug_flag;
}
void db_debug_flag_reg(void *flag)
{
    EXPECT_EQ(flag, &debug_flag);
    recorder.note("db_debug_flag_reg");
}
void *sysrepo_debug_func_return(void)
{
    return &debug_function;
}
void sysrepo_debug_fun_reg(void *function)
{
    EXPECT_EQ(function, &debug_function);
    recorder.note("sysrepo_debug_fun_reg");
}
int database_dev_get_port_info(tq_database_t *, tq_port_info_t *record)
{
    EXPECT_EQ(record, &port_info);
    for (const std::uint8_t byte : record->b)
        EXPECT_EQ(byte, 0);
    record->b[0] = 7;
    return recorder.note("database_dev_get_port_info");
}
int port_init(const tq_port_info_t *record, tq_intf_table_t *table)
{
    EXPECT_EQ(record, &port_info);
    EXPECT_EQ(table, &intf);
    return recorder.note("port_init");
}
int misc_cpld_i2c_init(std::uint8_t *bus, std::uint8_t *addr, int max_bus)
{
    EXPECT_EQ(bus, &diagm.cpld_i2c_bus);
    EXPECT_EQ(addr, &diagm.cpld_i2c_addr);
    EXPECT_EQ(max_bus, 20);
    return recorder.note("misc_cpld_i2c_init");
}
void frr_preinit(struct frr_daemon_info *info, int argc, char **)
{
    EXPECT_EQ(info, &diagd_di);
    EXPECT_EQ(argc, 2);
    recorder.note("frr_preinit");
}
struct thread_master *frr_init(void)
{
    recorder.note("frr_init");
    return loop;
}
int pon_mode_get(void)
{
    recorder.note("pon_mode_get");
    return 3;
}
int tq_alarm_log_init(void)
{
    return recorder.note("tq_alarm_log_init");
}
int cli_log(tq_database_t *, tq_alarm_req_t *, const char *, ...)
{
    if (waits_for_the_store != nullptr) {
        waits_for_the_store->set_value();
        for (;;)
            pause();
    }
    return recorder.note("cli_log");
}
int alarm_log_sem_id = 77;
int semtimedop(int id, struct sembuf *operations, size_t, const struct timespec *) noexcept
{
    if (id == alarm_log_sem_id && operations->sem_op == -1)
        std::fputs("store kept\n", stderr);
    return 0;
}
const char *tq_strerror(int)
{
    return "no reason";
}
void frr_config_fork(void)
{
    recorder.note("frr_config_fork");
}
void frr_run(struct thread_master *master)
{
    EXPECT_EQ(master, loop);
    recorder.note("frr_run");
}
bool vty_read_config(struct nb_config *config, const char *file, char *directory)
{
    EXPECT_EQ(config, nullptr);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(directory, config_default);
    recorder.vty_config_read = true;
    return true;
}
}

// The machine's own files are not the test's.
void clear_leftovers() {}
void lock_wait_init() {}

void alarm_log_database_init(void)
{
    recorder.note("alarm_log_database_init");
}
void alarm_log_database_free(void)
{
    std::fputs("database closed\n", stderr);
}
int diag_sclient_init(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs)
{
    EXPECT_EQ(master, loop);
    EXPECT_EQ(instance, 0u);
    EXPECT_EQ(privs, &diagd_privs);
    return recorder.note("diag_sclient_init");
}
void diag_zebra_reset_send_waiting(void)
{
    std::fputs("notices sent\n", stderr);
}
int diag_zclient_init(struct thread_master *master)
{
    EXPECT_EQ(master, loop);
    return recorder.note("diag_zclient_init");
}
#define INITIALISER(name)                                                                                    \
    int name(void)                                                                                           \
    {                                                                                                        \
        return recorder.note(#name);                                                                         \
    }
INITIALISER(diag_port_init)
INITIALISER(initial_alarm_log_config)
INITIALISER(fan_init)
INITIALISER(usb_init)
INITIALISER(power_init)
INITIALISER(reset_init)
INITIALISER(phy_cmd_init)
INITIALISER(i2c_cmd_init)
INITIALISER(diag_cmd_init)
INITIALISER(cpld_init)
INITIALISER(system_cmd_init)
INITIALISER(transceiver_cmd_init)

namespace {

const std::vector<std::string> start_order{
    "board_mmap_init 13 2928",
    "semaphore_create",
    "database_init",
    "db_debug_flag_reg",
    "sysrepo_debug_fun_reg",
    "alarm_log_database_init",
    "database_dev_get_port_info",
    "port_init",
    "misc_cpld_i2c_init",
    "frr_preinit",
    "frr_init",
    "pon_mode_get",
    "diag_sclient_init",
    "diag_zclient_init",
    "diag_port_init",
    "tq_alarm_log_init",
    "initial_alarm_log_config",
    "fan_init",
    "usb_init",
    "power_init",
    "reset_init",
    "phy_cmd_init",
    "i2c_cmd_init",
    "diag_cmd_init",
    "cpld_init",
    "system_cmd_init",
    "transceiver_cmd_init",
    "frr_config_fork",
    "frr_run",
};

class StartOrder : public testing::Test {
protected:
    void SetUp() override
    {
        recorder = {};
        port_info = {};
        setenv("XTABLES_LIBDIR", "/somewhere/else", 1);
    }

    static int start()
    {
        char name[] = "diagd";
        char option[] = "--bogus";
        char *argv[] = {name, option, nullptr};
        return diagd_main(2, argv);
    }

    // Runs the start in a process of its own, prints the calls made, and ends with main's result.
    [[noreturn]] static void start_and_tell()
    {
        std::atexit([] {
            for (const std::string &call : recorder.calls)
                std::fprintf(stderr, "|%s", call.c_str());
        });
        std::exit(100 + start());
    }
};

using StartOrderDeathTest = StartOrder;

} // namespace

TEST_F(StartOrder, every_step_runs_once_in_the_fixed_order)
{
    EXPECT_EQ(start(), 0);
    EXPECT_THAT(recorder.calls, testing::ElementsAreArray(start_order));
    EXPECT_EQ(diagm.master, loop);
    EXPECT_EQ(diagm.pon_mode, 3u);
    EXPECT_EQ(port_info.b[0], 7);
}

TEST_F(StartOrder, an_initialiser_that_fails_keeps_nothing_from_starting)
{
    for (const char *name :
         {"board_mmap_init 13 2928", "port_init", "misc_cpld_i2c_init", "diag_sclient_init",
          "diag_zclient_init", "diag_port_init", "tq_alarm_log_init", "initial_alarm_log_config", "fan_init",
          "usb_init", "power_init", "reset_init", "phy_cmd_init", "i2c_cmd_init", "diag_cmd_init",
          "cpld_init", "system_cmd_init", "transceiver_cmd_init"}) {
        recorder = {};
        recorder.failing = {name};
        EXPECT_EQ(start(), 0) << name;
        EXPECT_THAT(recorder.calls, testing::ElementsAreArray(start_order)) << name;
    }
}

TEST_F(StartOrder, without_port_record_the_interface_table_is_not_built_and_the_rest_goes_on)
{
    recorder.failing = {"database_dev_get_port_info"};
    testing::internal::CaptureStderr();
    EXPECT_EQ(start(), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("DIAGD: get port info from db failed!"));

    std::vector<std::string> expected = start_order;
    std::erase(expected, "port_init");
    EXPECT_THAT(recorder.calls, testing::ElementsAreArray(expected));
    EXPECT_EQ(port_info.b[0], 0) << "a failed read leaves the record zero";
}

TEST_F(StartOrderDeathTest, without_semaphore_it_ends_with_status_0_and_exactly_27_bytes_on_standard_error)
{
    recorder.failing = {"semaphore_create"};
    EXPECT_EXIT(start_and_tell(), testing::ExitedWithCode(0),
                "^diagd init semaphore failed\\|board_mmap_init 13 2928\\|semaphore_create$");
}

// libc keeps twice the largest block that was ever freed, if it is left to it.
TEST_F(StartOrderDeathTest, memory_that_is_freed_goes_back_to_the_system)
{
    EXPECT_EXIT(
        {
            limit_kept_memory();
            constexpr std::size_t block = 64 * 1024;
            constexpr std::size_t count = 256;                 // 16 MiB
            void *volatile large = std::malloc(block * count); // the compiler would leave both calls out
            std::free(large);
            std::vector<void *> blocks(count);
            for (void *&one : blocks)
                one = std::malloc(block);
            for (void *one : blocks)
                std::free(one);
            std::exit(mallinfo2().arena < block * count / 4 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(StartOrderDeathTest, without_database_it_logs_an_error_and_ends_with_status_0)
{
    recorder.failing = {"database_init"};
    EXPECT_EXIT(
        start_and_tell(), testing::ExitedWithCode(0),
        "DIAGD init database failed[^|]*\\|board_mmap_init 13 2928\\|semaphore_create\\|database_init$");
}

TEST(DaemonInfo, describes_the_daemon_to_libfrr)
{
    EXPECT_STREQ(diagd_di.name, "diagd");
    EXPECT_STREQ(diagd_di.logname, "DIAGD");
    EXPECT_EQ(diagd_di.vty_port, 2709);
    EXPECT_STREQ(diagd_di.proghelp, "Implementation of the diagd.");
    EXPECT_EQ(diagd_di.privs, &diagd_privs);
    EXPECT_EQ(diagd_di.flags, 0u);
    EXPECT_EQ(diagd_di.n_yang_modules, 0u);
    EXPECT_EQ(diagd_di.config_file, nullptr);

    ASSERT_EQ(diagd_di.n_signals, 4u);
    EXPECT_EQ(diagd_di.signals[0].signal, SIGHUP);
    EXPECT_EQ(diagd_di.signals[1].signal, SIGUSR1);
    EXPECT_EQ(diagd_di.signals[2].signal, SIGINT);
    EXPECT_EQ(diagd_di.signals[3].signal, SIGTERM);
    EXPECT_EQ(diagd_di.signals[2].handler, diagd_di.signals[3].handler);
}

TEST(DaemonInfo, asks_for_three_capabilities_as_user_daemon)
{
    ASSERT_EQ(diagd_privs.cap_num_p, 3);
    EXPECT_EQ(diagd_privs.caps_p[0], ZCAP_NET_RAW);
    EXPECT_EQ(diagd_privs.caps_p[1], ZCAP_BIND);
    EXPECT_EQ(diagd_privs.caps_p[2], ZCAP_SYS_ADMIN);
    EXPECT_EQ(diagd_privs.cap_num_i, 0);
    EXPECT_STREQ(diagd_privs.user, "daemon");
    EXPECT_STREQ(diagd_privs.group, "daemon");
    EXPECT_STREQ(diagd_privs.vty_group, "daemon");
}

TEST(Signals, hangup_reads_the_configuration_file_again)
{
    recorder = {};
    diagd_di.signals[0].handler();
    EXPECT_TRUE(recorder.vty_config_read);
}

TEST(SignalsDeathTest, termination_closes_the_database_and_ends_with_status_0)
{
    EXPECT_EXIT(diagd_di.signals[3].handler(), testing::ExitedWithCode(0), "database closed");
}

TEST(SignalsDeathTest, a_record_that_still_waits_for_the_store_is_not_begun_any_more)
{
    EXPECT_EXIT(
        {
            std::promise<void> waiting;
            waits_for_the_store = &waiting;
            std::thread{[] { diagd::file_alarm(TQ_ALARM_FAN, diagd::AlarmState::on, "Open!"); }}.detach();
            waiting.get_future().wait();
            diagd_di.signals[3].handler();
        },
        testing::ExitedWithCode(0), "database closed\nstore kept");
}
