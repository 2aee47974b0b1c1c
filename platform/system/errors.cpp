// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of the platform's result codes.
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <cstdio>
#include <cstring>

namespace {

const char *text_of(int code) noexcept
{
    switch (code) {
    case TQ_OK:
        return "Success";
    case TQ_ERR:
        return "Operation failed";
    case TQ_ERR_NOT_FOUND:
        return "No such object";
    case TQ_ERR_INVALID:
        return "Invalid argument or value";
    case TQ_ERR_NO_DB:
        return "Database not reachable";
    case TQ_ERR_LOCKED:
        return "Database locked by another user";
    case TQ_ERR_TIMEOUT:
        return "No answer in time";
    case TQ_ERR_NO_SPACE:
        return "No space left in the storage";
    case TQ_ERR_ACCESS:
        return "Permission denied by the platform";
    case TQ_ERR_NO_MEMORY:
        return "Out of memory";
    case TQ_ERR_STORE:
        return "Alarm store not available";
    case TQ_ERR_PEER:
        return "Peer not reachable";
    default:
        break;
    }
    // Some calls hand on the errno value of what failed below them.
    if (const char *description = code > 0 ? strerrordesc_np(code) : nullptr)
        return description;
    thread_local char unknown[32];
    std::snprintf(unknown, sizeof unknown, "Unknown error %d", code);
    return unknown;
}

} // namespace

const char *tq_strerror(int code)
{
    return tq::traced(
        "tq_strerror", [&] { return text_of(code); }, tq::arg("code", code));
}
