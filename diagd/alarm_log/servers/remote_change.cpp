// SPDX-License-Identifier: GPL-2.0-or-later
// Database callbacks of the remote log server's settings.  The one file that sees sysrepo's headers: they
// bring another libyang than libfrr's, so it must not include frr.hpp.
#include "diagd/alarm_log/servers/remote_server.hpp"

#include "tq_database.h"

#include <sysrepo.h>

namespace {

constexpr int operation_deleted = 2;

int accept_changes(void *session, int event) noexcept
{
    if (event != SR_EV_CHANGE)
        return 0;

    void *iterator = nullptr;
    bool more = true;
    while (more) {
        int operation = 0;
        void *old_value = nullptr;
        void *new_value = nullptr;
        more = tq_db_get_change_next(session, &iterator, &operation, &old_value, &new_value) == 0 &&
               operation != operation_deleted;
        sr_free_val(static_cast<sr_val_t *>(old_value));
        sr_free_val(static_cast<sr_val_t *>(new_value));
    }
    sr_free_change_iter(static_cast<sr_change_iter_t *>(iterator));
    return 0;
}

} // namespace

int alarm_log_remote_server_ip_addr_change_cb(void *session, const char *, const char *, int event,
                                              std::uint32_t, void *)
{
    return accept_changes(session, event);
}

int alarm_log_remote_server_port_change_cb(void *session, const char *, const char *, int event,
                                           std::uint32_t, void *)
{
    return accept_changes(session, event);
}

int alarm_log_remote_server_ip_addr_get_cb(void *, const char *, const char *, std::uint32_t, void **, void *)
{
    return 0;
}

int alarm_log_remote_server_port_get_cb(void *, const char *, const char *, std::uint32_t, void **, void *)
{
    return 0;
}
