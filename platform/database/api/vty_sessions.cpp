// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's callbacks for sessions that open and close.  Main thread only, like the sessions themselves.
#include "platform/database/api/vty_hooks.h"
#include "platform/trace/tq_trace.hpp"
#include "tq_database.h"

namespace {

struct Registered {
    tq_db_vty_cb callback = nullptr;
    tq_database_t *db = nullptr;

    void operator()(struct vty *vty) const
    {
        if (callback)
            callback(vty, db);
    }
};
Registered on_open, on_close;

void follow_sessions()
{
    tq_vty_hooks_register([](struct vty *vty) { on_open(vty); }, [](struct vty *vty) { on_close(vty); });
}

} // namespace

void tq_db_cb_init_func(tq_db_vty_cb cb, tq_database_t *db)
{
    tq::traced("tq_db_cb_init_func", [&] {
        on_open = {cb, db};
        follow_sessions();
    });
}

void tq_db_cb_free_func(tq_db_vty_cb cb, tq_database_t *db)
{
    tq::traced("tq_db_cb_free_func", [&] {
        on_close = {cb, db};
        follow_sessions();
    });
}
