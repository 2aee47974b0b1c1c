// SPDX-License-Identifier: GPL-2.0-or-later
// What the exported functions have in common: from the caller's handle to the Database, and no exception
// through the C boundary.
#pragma once

#include "platform/database/api/database.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_errno.h"

#include <new>

namespace tq::db {

inline Database *database_of(void *conn)
{
    return static_cast<Database *>(conn);
}
inline Database *database_of(const tq_database_t *db)
{
    return db ? database_of(db->conn) : nullptr;
}

// Runs work(database) as the exported function `op`.
template <class Handle, class Work, class... Args>
int exported(const char *op, Handle handle, Work work, const Args &...args) noexcept
{
    return tq::traced(
        op,
        [&]() -> int {
            Database *database = database_of(handle);
            if (!database)
                return TQ_ERR_NO_DB;
            try {
                return work(*database);
            } catch (const std::bad_alloc &) {
                return TQ_ERR_NO_MEMORY;
            } catch (...) { // a mutex or a stream that the system refused
                return TQ_ERR;
            }
        },
        args...);
}

// Traced arguments of setters and getters, in the form of the setting's kind.
struct ValueArg {
    Kind kind;
    const void *value;
    bool is_output;
    void append_to(TraceLine &line) const noexcept;
};

} // namespace tq::db
