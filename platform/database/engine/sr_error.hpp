// SPDX-License-Identifier: GPL-2.0-or-later
// sysrepo's results as platform error codes.
#pragma once

#include <sysrepo.h>

namespace tq::db {

// `session`: where the details of the failure are kept, or nullptr when the call had none.  errno must be as
// the call left it.
int code_of(int sr_result, sr_session_ctx_t *session);

} // namespace tq::db
