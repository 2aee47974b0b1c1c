// SPDX-License-Identifier: GPL-2.0-or-later
// What stands behind a tq_database_t: the settings with their pending changes, over one Repository.
#pragma once

#include "platform/database/engine/keeper.hpp"
#include "platform/database/engine/mirror.hpp"
#include "platform/database/engine/repository.hpp"
#include "tq_database.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace tq::db {

// Getters may be called from any thread and never wait for the database.  Writers take turns; the keeper's
// thread does what touches sysrepo for them, and looks after the connection: it is made anew when what it
// stands on was replaced.  The object outlives its connection: a call after disconnect() gives TQ_ERR_NO_DB.
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
    using Clock = std::chrono::steady_clock;

    bool is_open() const { return is_open_.load(std::memory_order_acquire); }
    int commit(Changes changes);
    template <class Work>
    int as_writer(Work work);
    template <class Work>
    int through_keeper(Work work);

    // On the keeper's thread, as are all members that they use and no others do:
    int ready(); // TQ_OK: there is a connection that is good
    int make_connection();
    int add_module(const tq_db_module &module);
    void drop(Trust trust); // usual: taking leave of it

    Mirror mirror_;
    std::mutex writer_;
    std::atomic<bool> is_open_ = false;
    std::atomic<bool> is_reachable_ = false;
    Changes pending_;

    std::mutex schema_; // while the repository is exchanged, or asked without the keeper
    std::unique_ptr<Repository> repository_;
    std::map<const struct vty *, Session> sessions_; // end before the connection; none: to be opened with it
    std::vector<tq_db_module> modules_;              // subscribed to
    bool is_kept_ = false;                           // between connect() and disconnect()
    bool is_away_ = false;
    bool is_suspect_ = false;    // no answer: a lock may have died with its holder
    Trust trust_ = Trust::usual; // in the shared state that is there
    int last_failure_ = 0;
    Clock::time_point next_attempt_;

    Keeper keeper_; // its thread ends first
};

} // namespace tq::db
