// SPDX-License-Identifier: GPL-2.0-or-later
// The engine as this library sees it: owners of its handles, its results as platform error codes, and the
// calls whose form differs between its versions.  Nothing outside engine/ includes its headers.
#pragma once

#include "base/owner.hpp"

#include <libyang/libyang.h>
#include <sysrepo.h>

#include <cerrno>
#include <chrono>
#include <string>

namespace tq::db {

using Connection = base::Owner<sr_conn_ctx_t, sr_disconnect>;
using Session = base::Owner<sr_session_ctx_t, sr_session_stop>;
using Subscription = base::Owner<sr_subscription_ctx_t, sr_unsubscribe>;
using ChangeIterator = base::Owner<sr_change_iter_t, sr_free_change_iter>;
using DataTree = base::Owner<lyd_node, lyd_free_withsiblings>;

// `session`: where the details of the failure are kept, or nullptr when the call had none.  errno must be as
// the call left it.
int code_of(int sr_result, sr_session_ctx_t *session);

// Gives `owner` what start(&handle) makes; sysrepo's result.
template <class Owner, class Start>
int make(Owner &owner, Start start)
{
    typename Owner::pointer handle = nullptr;
    errno = 0;
    const int result = start(&handle);
    if (result == SR_ERR_OK)
        owner.reset(handle);
    return result;
}

// sysrepo's results, as those below.  `timeout`: for each callback of other programs; waits for all of them,
// for an event that one has not taken blocks the next writer.
int apply_changes(sr_session_ctx_t *session, std::chrono::milliseconds timeout);
// The running data below `xpath`.  No data is no failure.
int read_data(sr_session_ctx_t *session, const std::string &xpath, std::chrono::milliseconds timeout,
              DataTree &data);
// Calls the callbacks of all events that are waiting.
void process_events(sr_subscription_ctx_t *subscription);
// Whether some program holds sysrepo's own lock on the running data of `module`.
bool is_locked(sr_conn_ctx_t *connection, const char *module);

struct ChangedNode {
    const lyd_node *node;
    bool is_deleted;
};
// False: there is none left.
bool next_changed_node(sr_session_ctx_t *session, sr_change_iter_t *iterator, ChangedNode &changed);

} // namespace tq::db
