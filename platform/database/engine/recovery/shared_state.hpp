// SPDX-License-Identifier: GPL-2.0-or-later
// Files of sysrepo's state in shared memory: the running configuration lives there, too, so whoever removes
// the state takes it along.
//
// When root is the first to connect, the data files of running and operational are given to the owner of the
// module, but without any permission.
#pragma once

#include <map>
#include <string>

namespace tq::db {

// What cannot be written stays as it is.
void write_state_file(const std::string &path, const std::string &content);

class SharedState {
public:
    // `repository`: folder of the repository.
    explicit SharedState(std::string repository);

    const std::string &repository() const { return repository_; }
    std::string shared(const char *suffix) const; // path of a file of the state
    std::string running_of(const char *module) const;

    // Gives the owner the permissions back that a module's startup file has.
    void repair_permissions() const;

    // A subscriber ended without unsubscribing: its event pipe is still there, without a reader.  Writers
    // wait for it in vain.
    bool has_dead_subscriber() const;
    // Nobody else has the state mapped, as far as this process may look: it has to be root's to say so.
    bool is_unused() const;
    // There is none: sysrepo is about to make it.
    bool is_absent() const;
    // The shared state is there, but not the running configuration of a module of ours.
    bool has_lost_running() const;

    // Removes the state, keeping the running configuration in memory for restore().
    void remove();
    // Once connected, before the first session: puts the running configuration back.
    void restore() const;
    bool is_restored() const { return !running_.empty(); }
    // Should it be unreadable, cut by whatever ended its writer: back to the startup configuration.
    void restore_startup() const;
    // Puts the startup configuration where the running one is missing.
    void replace_lost_running() const;
    // The data files of our modules, running and operational, with their content.
    std::map<std::string, std::string> data() const;

private:
    bool is_running_lost(const char *module) const;
    void put_startup(const std::string &module) const;

    std::string repository_, prefix_;
    std::map<std::string, std::string> running_; // module and content
};

} // namespace tq::db
