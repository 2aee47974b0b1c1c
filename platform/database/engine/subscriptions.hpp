// SPDX-License-Identifier: GPL-2.0-or-later
// The subscriptions of one connection: those that keep the cache current, and those of the callers.
//
// Change notices are taken by a thread of our own, not by sysrepo's, for three reasons: it has all signals
// blocked, so that they reach the main thread's event loop; a writer can take its own notices at once instead
// of waiting for a thread; and two takers never meet.
//
// Failure policy: a notice that was lost, because this process stood still for longer than the writer waited,
// is noticed by the next one: then everything is read again.
#pragma once

#include "base/fd.hpp"
#include "platform/database/engine/recovery.hpp"
#include "platform/database/engine/sysrepo.hpp"
#include "platform/database/model/cache.hpp"
#include "tq_database.h"

#include <array>
#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

namespace tq::db {

// Schema node of each row of `settings`.
using SchemaNodes = std::array<lys_node *, settings.size()>;

class Subscriptions {
public:
    // `is_stuck`: a lock was waited for in vain; nothing is tried while it says so.
    Subscriptions(Cache &cache, const SchemaNodes &schema, std::atomic<bool> &is_stuck);
    // Nothing is unsubscribed here, see unsubscribe().
    ~Subscriptions();
    Subscriptions(const Subscriptions &) = delete;
    Subscriptions &operator=(const Subscriptions &) = delete;

    // All below use this session, which is not the writer's: reading again happens while the writer writes.
    Session &session() { return session_; }

    // Subscribes to everything that is committed to one of our modules.
    int watch(const char *module);
    // Subscribes a caller's callbacks.
    int subscribe(const char *module, const tq_db_entry &entry);

    // The thread that takes notices, as long as the connection is not broken.
    int start_thread(const Baseline &baseline);
    // Takes the notices that are waiting, so that the cache is not behind anything committed before.
    void take_notices();

    // What the database holds of our modules.
    int read_all(Changes &values);
    // Reads everything into the cache.
    int reload();

    // Ends the thread and the subscriptions; notices that wait are taken, because an untaken one makes the
    // next writer wait in vain.
    void unsubscribe(const Baseline &baseline);
    // Ends the thread, and leaks the rest: for a state that must not be touched.
    void abandon();

    // The calling thread is taking notices: inside a change callback the database must not be changed.
    static bool is_in_callback();

private:
    struct Watched { // one of our modules
        Subscriptions *subscriptions;
        const char *module;
        std::uint32_t last_request = 0; // number of the last transaction seen
    };

    template <class Subscribe>
    int add(Subscribe subscribe);
    void on_done(sr_session_ctx_t *session, Watched &watched, std::uint32_t request);
    void add_leaf(const lyd_node *node, bool is_deleted, Changes &changes) const;
    int read_watched(Changes &values); // with mutex_ held, like the next
    int load_watched();
    void run(const Baseline &baseline) noexcept;
    bool stop_thread(); // whether there was one

    Cache &cache_;
    const SchemaNodes &schema_;
    std::atomic<bool> &is_stuck_;
    std::deque<Watched> watched_;        // addresses stay
    std::deque<tq_db_entry> entries_;    // of the callers; addresses stay
    std::mutex mutex_;                   // one taker at a time
    std::atomic<bool> is_stale_ = false; // the cache missed a change, and reading all again failed
    int event_fd_ = -1;                  // the subscription's
    base::Fd stop_;
    Session session_;
    Subscription subscription_;
    std::thread thread_;
};

// Next change of a transaction that a change callback hears of, as tq_db_get_change_next() gives it.
int next_change(void *session, void **iterator, int *operation, void **old_value, void **new_value);

} // namespace tq::db
