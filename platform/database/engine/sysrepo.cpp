// SPDX-License-Identifier: GPL-2.0-or-later
// sysrepo's results, and its calls (see sysrepo.hpp).
#include "platform/database/engine/sysrepo.hpp"

#include "tq_errno.h"

#include <cerrno>
#include <cstdint>
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

int apply_changes(sr_session_ctx_t *session, std::chrono::milliseconds timeout)
{
    constexpr int wait_for_callbacks = 1;
    errno = 0;
    return sr_apply_changes(session, static_cast<std::uint32_t>(timeout.count()), wait_for_callbacks);
}

int read_data(sr_session_ctx_t *session, const std::string &xpath, std::chrono::milliseconds timeout,
              DataTree &data)
{
    constexpr std::uint32_t whole_depth = 0;
    const int result = make(data, [&](lyd_node **raw) {
        return sr_get_data(session, xpath.c_str(), whole_depth, static_cast<std::uint32_t>(timeout.count()),
                           SR_OPER_DEFAULT, raw);
    });
    return result == SR_ERR_NOT_FOUND ? SR_ERR_OK : result;
}

void process_events(sr_subscription_ctx_t *subscription)
{
    sr_process_events(subscription, nullptr, nullptr);
}

bool is_locked(sr_conn_ctx_t *connection, const char *module)
{
    int locked = 0;
    sr_get_lock(connection, SR_DS_RUNNING, module, &locked, nullptr, nullptr, nullptr);
    return locked != 0;
}

bool next_changed_node(sr_session_ctx_t *session, sr_change_iter_t *iterator, ChangedNode &changed)
{
    sr_change_oper_t operation{};
    const char *previous_value = nullptr, *previous_list = nullptr;
    bool previous_default = false;
    if (sr_get_change_tree_next(session, iterator, &operation, &changed.node, &previous_value, &previous_list,
                                &previous_default) != SR_ERR_OK)
        return false;
    changed.is_deleted = operation == SR_OP_DELETED;
    return true;
}

} // namespace tq::db
