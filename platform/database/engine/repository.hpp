// SPDX-License-Identifier: GPL-2.0-or-later
// One connection to the sysrepo repository: transactions, locks, and the subscriptions that keep a Cache
// current. Failure policy: every call is bounded by the times below and gives a TQ_ERR_ code.
#pragma once

#include "base/fd.hpp"
#include "platform/database/engine/recovery.hpp"
#include "platform/database/engine/subscriptions.hpp"
#include "platform/database/engine/sysrepo.hpp"
#include "platform/database/model/cache.hpp"
#include "tq_database.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace tq::db {

inline constexpr std::chrono::milliseconds apply_timeout{2000}; // for each callback of other programs
inline constexpr std::chrono::milliseconds validate_timeout{2000};
inline constexpr std::chrono::milliseconds lock_wait{1000};

class Repository {
public:
    // Connects, makes `cache` and the database agree, and keeps the former current.  What the database lacks
    // of the cache it is given; otherwise it is what counts, unless the running configuration was lost.
    // TQ_ERR_NO_DB: no repository, or one without our modules.
    static int open(Cache &cache, Trust trust, std::unique_ptr<Repository> &opened);
    ~Repository();
    // Gives nothing back but the thread: for a shared state that must not be touched, or whose locks nobody
    // will release.
    void abandon();
    Repository(const Repository &) = delete;
    Repository &operator=(const Repository &) = delete;

    // `code`: why it is away.
    Condition condition(int &code) const { return baseline_->compare(code); }
    // A lock was waited for in vain: nothing is tried any more, until somebody says so.
    bool is_stuck() const { return is_stuck_; }
    void try_again() { is_stuck_ = false; }

    // Whether the schema accepts the text as the value of this setting.
    bool is_valid(Slot slot, const char *text) const;

    // Makes all changes in one transaction; on return the cache shows them.  One caller at a time.
    int apply(const Changes &changes);

    void take_notices() { subscriptions_.take_notices(); }
    int reload() { return subscriptions_.reload(); }
    int subscribe(const tq_db_module &module);

    // The apply lock keeps the programs that use this library from mixing their changes of several values. It
    // is a lock on a file, not sysrepo's, because that one outlives a process that dies with it.  A lock that
    // some other program took with sysrepo counts, too.
    int lock();
    int unlock();

    int start_session(Session &session);

private:
    explicit Repository(Cache &cache);
    static int attempt(Cache &cache, Recovery &recovery, std::unique_ptr<Repository> &opened);
    int connect();
    int open_lock_files();
    bool is_consistent();
    int agree(bool is_running_lost);

    Cache &cache_;
    std::optional<Baseline> baseline_; // once connected
    SchemaNodes schema_{};
    std::atomic<bool> is_stuck_ = false;
    base::Fd lock_; // file of the apply lock
    base::Fd turn_; // file by which writers, and who unsubscribes, keep out of each other's way
    bool is_locked_ = false;
    Connection connection_;
    Session session_; // of the writer
    Subscriptions subscriptions_;
};

} // namespace tq::db
