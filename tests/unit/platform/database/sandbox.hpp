// SPDX-License-Identifier: GPL-2.0-or-later
// A place of its own for every test program: mount namespace, /dev/shm, repository of user daemon with the
// modules of the OLT.  And what the tests of the database share.
#pragma once

#include "tq_database.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace sandbox {

inline constexpr uid_t daemon_uid = 1;
inline constexpr gid_t daemon_gid = 1;

const std::string &repository();
// Copy of the YANG and sysrepo files that user daemon can read.
const std::string &folder();
void install_modules();
// Back to an empty configuration.  Nobody may be connected.
void forget_everything();

// Polls until `done` or the deadline; whether it was done.
bool wait_until(const std::function<bool()> &done, std::chrono::milliseconds limit = std::chrono::seconds(5));

double seconds_of(const std::function<void()> &work);

// Program started by a test; its standard output can be read by lines.  Killed when it goes out of scope.
class Program {
public:
    explicit Program(std::vector<std::string> arguments);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    std::string line(); // waits for a minute; empty at the end
    void signal(int number) const;
    int wait(); // exit status, or 128 + signal

private:
    pid_t pid_ = -1;
    int out_ = -1;
};

// The test's own sysrepo program; exit status.
int sysrepocfg(std::vector<std::string> arguments);
// Changes by a program that is not ours: edits the running configuration with the content of <alarm-log>.
int edit(const std::string &content);
Program peer(std::vector<std::string> arguments);

// A test with an open database.
class DatabaseTest : public testing::Test {
protected:
    void SetUp() override
    {
        forget_everything();
        ASSERT_EQ(database_init(&db), 0);
    }
    void TearDown() override { database_disconnect(&db); }

    std::string text(int (*get)(tq_database_t *, void *, int *))
    {
        char buffer[64];
        int len = sizeof buffer;
        const int code = get(&db, buffer, &len);
        return code == 0 ? std::string(buffer) : "code " + std::to_string(code);
    }
    std::string level(uint16_t id)
    {
        char buffer[16];
        int len = sizeof buffer;
        const int code = db_olt_alarm_log_get_alarm_level(id, &db, buffer, &len);
        return code == 0 ? std::string(buffer) : "code " + std::to_string(code);
    }
    std::string xml(int (*show)(tq_database_t *, char **))
    {
        char *text = nullptr;
        const int code = show(&db, &text);
        const std::string result = code == 0 ? std::string(text) : "code " + std::to_string(code);
        std::free(text);
        return result;
    }

    tq_database_t db{};
};

} // namespace sandbox
