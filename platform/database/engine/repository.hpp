// SPDX-License-Identifier: GPL-2.0-or-later
// One connection to the sysrepo repository, with the subscriptions that keep a Mirror current.
//
// Change notices are taken by a thread of our own, not by sysrepo's, for three reasons: it has all signals
// blocked, so that they reach the main thread's event loop; a writer can take its own notices at once instead
// of waiting for a thread; and two takers never meet.
//
// Failure policy: every call is bounded by the times below and gives a TQ_ERR_ code.  A notice that was lost,
// because this process stood still for longer than the writer waited, is noticed by the next one: then
// everything is read anew.
#pragma once

#include "platform/database/engine/basis.hpp"
#include "platform/database/engine/file_lock.hpp"
#include "platform/database/engine/mirror.hpp"
#include "platform/database/engine/shared_state.hpp"
#include "platform/database/engine/sr_error.hpp"
#include "platform/database/model/settings.hpp"
#include "tq_database.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tq::db {

// What is known of the shared state before connecting to it.
enum class Trust {
    usual,
    stuck, // a lock was seen whose holder must have died: to be made anew when nobody else is connected
    none,  // cut to pieces: to be made anew in any case
};

inline constexpr std::chrono::milliseconds apply_timeout{2000}; // for each callback of other programs
inline constexpr std::chrono::milliseconds read_timeout{2000};
inline constexpr std::chrono::milliseconds lock_wait{1000};

struct DisconnectDeleter {
    void operator()(sr_conn_ctx_t *connection) const { sr_disconnect(connection); }
};
struct SessionDeleter {
    void operator()(sr_session_ctx_t *session) const { sr_session_stop(session); }
};
struct UnsubscribeDeleter {
    void operator()(sr_subscription_ctx_t *subscription) const { sr_unsubscribe(subscription); }
};
using Connection = std::unique_ptr<sr_conn_ctx_t, DisconnectDeleter>;
using Session = std::unique_ptr<sr_session_ctx_t, SessionDeleter>;
using Subscription = std::unique_ptr<sr_subscription_ctx_t, UnsubscribeDeleter>;

// Keeps what cannot be given back where it can be seen that it is not forgotten.  The keeper's thread only.
void leave_behind(void *handle);

// How long a call may take before the state counts as stuck: longer than the times above together.
class Patience {
public:
    explicit Patience(std::atomic<bool> &is_stuck) : is_stuck_(is_stuck) {}
    bool is_over() const
    {
        constexpr std::chrono::seconds longest{8};
        if (std::chrono::steady_clock::now() - begin_ > longest)
            is_stuck_ = true;
        return is_stuck_;
    }

private:
    std::atomic<bool> &is_stuck_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

class Repository {
public:
    // Connects, makes `mirror` and the database agree, and keeps the former current.  What the database lacks
    // of the mirror it is given; otherwise it is what counts, unless the running configuration was lost.
    // TQ_ERR_NO_DB: no repository, or one without our modules.
    static int open(Mirror &mirror, Trust trust, std::unique_ptr<Repository> &opened);
    ~Repository();
    // Takes no leave and gives nothing back but the thread: for a shared state that must not be touched, or
    // whose locks nobody will release.
    void abandon();

    Standing standing(int &code) const { return basis_->look(code); }
    // A lock was waited for in vain: nothing is tried any more, until somebody says so.
    bool is_stuck() const { return is_stuck_; }
    void try_again() { is_stuck_ = false; }
    // Nobody else is connected, see SharedState.
    static bool is_alone();
    Repository(const Repository &) = delete;
    Repository &operator=(const Repository &) = delete;

    // Whether the schema accepts the text as the value of this setting.
    bool is_valid(Slot slot, const char *text) const;

    // Makes all changes in one transaction; on return the mirror shows them.  One caller at a time.
    int apply(const Changes &changes);

    // Takes the notices that are waiting, so that the mirror is not behind anything committed before.
    void take_notices();
    // Reads everything anew.
    int reload();

    // The calling thread is taking notices: inside a change callback the database must not be changed.
    static bool is_in_callback();
    // What the callback that runs on the calling thread was subscribed to.
    static const char *callback_xpath();

    // The apply lock keeps the programs that use this library from mixing their changes of several values. It
    // is a lock on a file, not sysrepo's, because that one outlives a process that dies with it.  A lock that
    // some other program took with sysrepo counts, too.
    int lock();
    int unlock();

    int start_session(Session &session);
    int subscribe(const char *module, const tq_db_entry &entry);

private:
    struct Watched { // one of our modules
        Repository *repository;
        const char *module;
        std::uint32_t last_request = 0; // number of the last transaction seen
    };

    explicit Repository(Mirror &mirror);
    static int open_with(Mirror &mirror, const SharedState &state, bool &is_lost,
                         std::unique_ptr<Repository> &opened);
    int connect();
    static void forget_the_dead();
    int open_locks();
    bool is_consistent();
    int start_thread();
    void run() noexcept;
    int watch(const char *module);
    template <class Subscribe>
    int add_subscription(Subscribe subscribe);
    void on_done(sr_session_ctx_t *session, Watched &watched, std::uint32_t request);
    void add_leaf(const lyd_node *node, bool is_deleted, Changes &changes) const;
    int read_all(Changes &values); // with notices_ held, like the next
    int load_all();
    int agree(bool is_lost);
    bool stop_thread(); // whether there was one

    Mirror &mirror_;
    std::optional<Basis> basis_; // once connected
    SharedState::Data data_;     // at that time
    std::array<lys_node *, settings.size()> schema_{};
    std::deque<Watched> watched_;     // addresses stay
    std::deque<tq_db_entry> entries_; // of the callers' subscriptions; addresses stay
    std::atomic<bool> is_stuck_ = false;
    std::mutex notices_; // one taker at a time
    int event_fd_ = -1;  // the subscription's
    base::Fd stop_;
    base::Fd lock_; // files of the apply lock and of turns
    base::Fd turn_;
    bool is_locked_ = false;
    Connection connection_;
    Session session_;  // of the writer
    Session listener_; // of subscriptions and of reading anew, which happens while the writer writes
    Subscription subscription_;
    std::thread thread_;
};

} // namespace tq::db
