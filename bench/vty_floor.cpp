// SPDX-License-Identifier: GPL-2.0-or-later
// The least that a long listing costs: libfrr alone, with a vty on the socket given as argument, and a
// handler that prints as many lines as a full alarm store has, through the format of its listing, with
// constant values. Runs until it is ended.
#include "diagd/core/frr.hpp"

#include <cstdlib>

namespace {
constexpr int lines = 4096;
struct thread_master *master;
} // namespace

DEFUN(show_floor, show_floor_cmd, "show floor", "Show information.\nThe least there is.\n")
{
    for (int i = 0; i < lines; ++i)
        vty_out(vty, "[%4d/%02d/%02d %02d:%02d:%02d]  %.*s    %.*s\n", 2026, 3, 2, 9, 41, 17, 25,
                "Power supply 1 up or down", 45, "port 0/3 is down, a message of a usual length");
    return CMD_SUCCESS;
}

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    master = thread_master_create(nullptr);
    cmd_init(1);
    vty_init(master, false);
    install_element(VIEW_NODE, &show_floor_cmd);
    vty_serv_sock(nullptr, 0, argv[1]);
    for (struct thread thread; thread_fetch(master, &thread) != nullptr;)
        thread_call(&thread);
}
