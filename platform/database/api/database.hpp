// SPDX-License-Identifier: GPL-2.0-or-later
// What stands behind a tq_database_t: the settings with their pending changes, over a connection that is
// kept.
#pragma once

#include "platform/database/engine/executor.hpp"
#include "platform/database/engine/supervisor.hpp"
#include "platform/database/model/cache.hpp"
#include "tq_database.h"

#include <atomic>
#include <mutex>

namespace tq::db {

// Getters may be called from any thread and never wait for the database.  Writers take turns; the executor's
// thread does what touches sysrepo for them, and looks after the connection.  The object outlives its
// connection: a call after disconnect() gives TQ_ERR_NO_DB.
class Database {
public:
    Database();
    int connect();
    void disconnect();

    // Not applied: pending, unseen by get(), until apply_pending().  Applied: at once, together with what is
    // pending for the same object.
    int set(Slot slot, const void *value, int width, bool is_applied);
    int get(Slot slot, void *buffer, int *len) const;
    int remove(Slot slot);         // at once; TQ_ERR_NOT_FOUND: not set
    int remove_pending(Slot slot); // with apply_pending(); what is not set is removed already

    int apply_pending();
    int discard_pending();
    int lock();
    int unlock();

    int alarms_as_xml(char **xml) const;
    int thresholds_as_xml(char **xml) const;

    int subscribe(const tq_db_module &module);
    int open_session(const struct vty *vty);
    int close_session(const struct vty *vty);

private:
    bool is_open() const { return is_open_.load(std::memory_order_acquire); }
    int commit(Changes changes);
    template <class Work>
    int as_writer(Work work);
    template <class Work>
    int execute(Work work);

    Cache cache_;
    std::mutex writer_;
    std::atomic<bool> is_open_ = false;
    Changes pending_;
    Supervisor supervisor_;
    Executor executor_; // its thread ends first
};

} // namespace tq::db
