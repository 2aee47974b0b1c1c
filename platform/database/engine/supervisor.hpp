// SPDX-License-Identifier: GPL-2.0-or-later
// Keeps a database connected: the connection is made again when the files that it uses were replaced.
//
// Failure policy: a repository that cannot be reached is waited for, with the connection as it is.  One that
// was replaced, or whose shared state is gone, is connected to again: at every change that is asked for and
// every look, unless the last attempt took long.  A state that was cut, or whose locks died with their holder
// while nobody else is connected, is made again.  What it had then comes from the cache.
#pragma once

#include "platform/database/engine/repository.hpp"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

struct vty;

namespace tq::db {

// All members are for the executor's thread, but for those that say otherwise.
class Supervisor {
public:
    explicit Supervisor(Cache &cache) : cache_(cache) {}

    // Makes the first connection; from then on, until disconnect(), there is to be one.
    int connect();
    void disconnect();

    // TQ_OK: there is a connection that is good.
    int ready();
    Repository &repository() { return *repository_; } // after ready()
    // How a call went.  One without an answer in time may wait for a lock that died with its holder.
    void note(int code, bool is_in_time);

    // Come back with every new connection; the first needs ready().
    int subscribe(const tq_db_module &module);
    int open_session(const struct vty *vty);
    int close_session(const struct vty *vty);

    // Any thread.
    bool is_reachable() const { return is_reachable_; }
    // Any thread: whether the schema accepts the text.  TQ_ERR_INVALID, or TQ_ERR_NO_DB: nobody to ask.
    int validate(Slot slot, const char *text);

private:
    using Clock = std::chrono::steady_clock;

    int make_connection();
    void drop(Trust trust); // usual: properly; otherwise without touching the state

    Cache &cache_;
    std::atomic<bool> is_reachable_ = false;
    std::mutex exchange_; // of the repository, which is asked from other threads, too
    std::unique_ptr<Repository> repository_;
    std::map<const struct vty *, Session> sessions_; // end before the connection; none: to be opened with it
    std::vector<tq_db_module> modules_;              // subscribed to
    bool is_wanted_ = false;                         // between connect() and disconnect()
    bool is_away_ = false;
    bool is_suspect_ = false;    // no answer: a lock may have died with its holder
    Trust trust_ = Trust::usual; // in the shared state that is there
    int last_failure_ = 0;
    Clock::time_point next_attempt_;
};

} // namespace tq::db
