// SPDX-License-Identifier: GPL-2.0-or-later
// The three C libraries against a boardsim of the test program's own.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/unit/running_board.hpp"
#include "util_cpld.h"
#include "util_i2c.h"
#include "util_phy.h"

class Libraries : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        board_ = new RunningBoard;
        ::setenv("OLT_BOARD", OLT8_JSON, 1);
        ::setenv("BOARDSIM_DIR", board_->path().c_str(), 1);
    }
    static void TearDownTestSuite() { delete board_; }
    void TearDown() override
    {
        board_->ask({"fault", "clear"});
        for (const char *port : {"1", "2", "3"})
            board_->ask({"unplug", "gpon", port});
        board_->ask({"unplug", "ge", "1"});
        misc_i2c_debug_set(0);
        misc_cpld_debug_set(0);
        misc_phy_debug_set(0);
    }

    static inline RunningBoard *board_ = nullptr;

    static std::string module(const std::string &name) { return std::string(MODULES) + "/" + name + ".json"; }
    static int read_byte(int handle, std::uint8_t address, std::uint8_t reg)
    {
        std::uint8_t value = 0;
        return misc_i2c_read(handle, address, reg, &value, 1, 0) < 0 ? -1 : value;
    }
};

class Handle {
public:
    explicit Handle(int fd) : fd_(fd) { EXPECT_GE(fd, 0) << std::strerror(errno); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { ::close(fd_); }
    operator int() const { return fd_; } // NOLINT: stands for the plain number that the C API takes

private:
    int fd_;
};
