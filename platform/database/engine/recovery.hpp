// SPDX-License-Identifier: GPL-2.0-or-later
// Everything that mends the engine's shared state from outside, behind this header: the rest of the library
// does not know how.
//
// The locks in sysrepo's shared memory have no owners: a process that is killed in a transaction leaves one
// held, and from then on every program waits 15 seconds to connect and fails, for ever.  While nobody is
// connected, the locks belong to nobody and the state can be made again, with the running configuration
// carried over.  Anybody may also remove files of the state, or cut them under the mapping of those who use
// them.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tq::db {

class SharedState;

// What is known of the shared state before connecting to it.
enum class Trust {
    usual,
    stuck, // a lock was seen whose holder must have died: to be made again when nobody else is connected
    none,  // cut to pieces: to be made again in any case
};

// How the files that a connection uses compare with those that were there when it was made.
enum class Condition {
    sound,    // the same
    away,     // the repository cannot be reached; the connection is good again when it can
    replaced, // files gone or others in their place: the connection leads nowhere
    broken,   // cut under the mapping: not even to be touched
};

// The files that a connection uses, as they were when it was made.
class Baseline {
public:
    explicit Baseline(const SharedState &state);

    // `code`, for away: TQ_ERR_ACCESS or TQ_ERR_NO_DB.
    Condition compare(int &code) const;
    bool is_broken() const;

private:
    friend class DataFiles;
    struct Entry {
        std::string path;
        dev_t device;
        ino_t inode;
        off_t size;
    };
    static Entry entry_of(std::string path);

    std::vector<Entry> folders_;              // of the repository
    std::vector<Entry> mapped_;               // files of the shared state
    std::vector<std::string> running_;        // data files of the running configuration
    std::map<std::string, std::string> data_; // of our modules, running and operational, with their content
};

// While it lives, the data files that somebody removed are there again: without them sysrepo cannot end a
// subscription, and keeps what belongs to it.
class DataFiles {
public:
    explicit DataFiles(const Baseline &baseline);
    ~DataFiles();
    DataFiles(const DataFiles &) = delete;
    DataFiles &operator=(const DataFiles &) = delete;

private:
    std::vector<std::string> made_;
};

// The shared state around the making of one connection.
class Recovery {
public:
    Recovery();
    ~Recovery();

    // Whether connecting makes sense at all; a state that nobody could use is removed.
    // TQ_ERR_NO_DB: no repository.
    int prepare(Trust trust);
    // Right before each attempt to connect.
    void begin();
    // After one that timed out: removes the state when nobody uses it.  True: it is worth another attempt.
    bool remove_if_unused();

    // Once connected: puts back what the state has lost of the running configuration.
    Baseline complete();
    // The running configuration was put back, from what the removed state held.  Should it be unreadable, cut
    // by whatever ended its writer: back to the startup configuration.
    bool is_restored() const;
    void restore_startup();
    // The running configuration is not the one that programs left there.
    bool is_running_lost() const { return is_running_lost_; }

private:
    std::unique_ptr<SharedState> state_;
    bool is_running_lost_ = false;
};

// sysrepo makes its files, pipes and shared memory with the identity of whoever needs them first.  A daemon
// connects as root and lives on as the user who owns the repository, so root connects as that user: while
// this lives, a thread of root's acts as the repository's owner.  Any other stays what it is.
class OwnerIdentity {
public:
    OwnerIdentity();
    ~OwnerIdentity();
    OwnerIdentity(const OwnerIdentity &) = delete;
    OwnerIdentity &operator=(const OwnerIdentity &) = delete;

private:
    uid_t uid_;
    gid_t gid_;
    bool is_group_changed_ = false;
    bool is_user_changed_ = false;
};

// Nobody else has the shared state mapped, as far as this process may look: it has to be root's to say so.
bool is_state_unused();

// sysrepo's shared memory is mapped and grows: with the file system full, touching it would kill the process
// with SIGBUS.  Far more than one transaction needs is asked for.
bool is_shared_memory_full();

// Has sysrepo forget subscribers that ended without unsubscribing, for which every writer would wait in vain.
void forget_dead_subscribers();

// Keeps a handle that must not be given back where leak checkers see that it is not forgotten.  One thread
// only.
void leak(void *handle);

} // namespace tq::db
