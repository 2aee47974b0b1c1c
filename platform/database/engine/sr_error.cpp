// SPDX-License-Identifier: GPL-2.0-or-later
// sysrepo's results as platform error codes.
#include "platform/database/engine/sr_error.hpp"

#include "tq_errno.h"

#include <cerrno>
#include <cstring>
#include <initializer_list>

namespace tq::db {

namespace {
int code_of_errno(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return TQ_ERR_NO_SPACE;
    case EACCES:
    case EPERM:
    case EROFS:
        return TQ_ERR_ACCESS;
    case ENOMEM:
        return TQ_ERR_NO_MEMORY;
    case ETIMEDOUT:
        return TQ_ERR_TIMEOUT;
    default:
        return TQ_ERR_NO_DB;
    }
}

// A failed system call is known by its text only: sysrepo appends strerror's to its message.
int code_of_system_failure(sr_session_ctx_t *session, int error)
{
    const sr_error_info_t *info = nullptr;
    if (session && sr_get_error(session, &info) == SR_ERR_OK && info) {
        for (std::size_t i = 0; i < info->err_count; ++i)
            for (const int known : {ENOSPC, EDQUOT, EACCES, EPERM, EROFS, ENOMEM, ETIMEDOUT})
                if (info->err[i].message && std::strstr(info->err[i].message, std::strerror(known)))
                    return code_of_errno(known);
    }
    return code_of_errno(error);
}
} // namespace

int code_of(int sr_result, sr_session_ctx_t *session)
{
    const int error = errno;
    switch (sr_result) {
    case SR_ERR_OK:
        return TQ_OK;
    case SR_ERR_INVAL_ARG:
    case SR_ERR_LY:
    case SR_ERR_VALIDATION_FAILED:
    case SR_ERR_UNSUPPORTED:
        return TQ_ERR_INVALID;
    case SR_ERR_NOMEM:
        return TQ_ERR_NO_MEMORY;
    case SR_ERR_NOT_FOUND:
        return TQ_ERR_NOT_FOUND;
    case SR_ERR_UNAUTHORIZED:
        return TQ_ERR_ACCESS;
    case SR_ERR_LOCKED:
        return TQ_ERR_LOCKED;
    case SR_ERR_TIME_OUT:
        return TQ_ERR_TIMEOUT;
    case SR_ERR_SYS:
    case SR_ERR_INTERNAL: // connecting failed, for a reason that only errno may tell
        return code_of_system_failure(session, error);
    default:
        return TQ_ERR;
    }
}

} // namespace tq::db
