// SPDX-License-Identifier: GPL-2.0-or-later
// The least that a daemon of this machine is: libfrr with a vty and nothing to do.  With the argument
// "session" it has a session of the configuration database, too.  Runs until it is ended.
#include "diagd/core/frr.hpp"

#include <sysrepo.h>

#include <cstdio>
#include <cstring>

namespace {

zebra_capabilities_t no_capabilities[] = {};
struct zebra_privs_t privileges = {
    .caps_p = no_capabilities, .cap_num_p = 0, .user = "daemon", .group = "daemon"};

} // namespace

FRR_DAEMON_INFO(bare, DIAGD, .vty_port = 0, .proghelp = "A daemon without a task.", .privs = &privileges, );

int main(int argc, char **argv)
{
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    if (argc == 2 && std::strcmp(argv[1], "session") == 0) {
        const int result = sr_connect(0, &connection);
        if (result != SR_ERR_OK || sr_session_start(connection, SR_DS_RUNNING, &session) != SR_ERR_OK) {
            std::fprintf(stderr, "bare_daemon: no session of the database\n");
            return 1;
        }
    }
    frr_preinit(&bare_di, 1, argv);
    struct thread_master *const master = frr_init();
    frr_config_fork();
    frr_run(master);
    return 0;
}
