// SPDX-License-Identifier: GPL-2.0-or-later
// Programming the CPLD; the failure policy stands in image_program.hpp.
#include "diagd/cpld/image_program.hpp"

#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"
#include "diagd/cpld/image_file.hpp"
#include "diagd/cpld/shell_runner.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"

#include <chrono>
#include <cstdio>
#include <thread>

using namespace std::chrono_literals;

void diagd::program_image(const std::string &path) noexcept
{
    constexpr const char *reason = "update_cpld";
    const EventLoopKept kept; // the image stays the one that was fetched
    const BoardSession board{reason, SessionPolicy::release_then_lower};
    if (!board || holder_of(path) == PathHolder::others)
        return;
    std::puts("\r\nStart to upgarde CPLD...\r");
    run_to_its_end(permit_programmer_line);
    run_to_its_end("chmod -R 777 " + path);
    diagm.set_all_monitors(false);
    write_register(board.handle(), CpldRegister::logic_run, 0);
    stop_watchdog(reason); // it must not restart daemons meanwhile
    std::this_thread::sleep_for(1ms);
    run_to_its_end("jtag " + path);
    std::this_thread::sleep_for(2s);
    write_register(board.handle(), CpldRegister::logic_run, 1);
    diagm.set_all_monitors(true);
    run_to_its_end("rm " + path);
}
