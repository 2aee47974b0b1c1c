// SPDX-License-Identifier: GPL-2.0-or-later
// Copy in memory of every setting, from which all getters answer.  The database's change notices keep it
// current, whoever made the change.  All members may be called from any thread; none waits for the database.
#pragma once

#include "platform/database/model/settings.hpp"

#include <array>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tq::db {

using Value = std::optional<std::string>; // nothing: not set
using Changes = std::map<Slot, Value>;

class Cache {
public:
    // Replaces everything by `values`.
    void load(Changes values);
    // All changes become visible at once.
    void update(Changes changes);

    // Puts the value into a caller's buffer as to_caller() does.  TQ_ERR_NOT_FOUND: not set.
    int read(Slot slot, void *buffer, int *len) const;
    bool is_set(Slot slot) const;
    Changes values() const; // all that are set
    // Takes out of `changes` what is so already.
    void drop_unchanged(Changes &changes) const;

    std::string alarms_as_xml() const;
    std::string thresholds_as_xml() const;

private:
    mutable std::mutex mutex_;
    std::array<Value, slot_count> values_;
};

} // namespace tq::db
