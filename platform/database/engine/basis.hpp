// SPDX-License-Identifier: GPL-2.0-or-later
// What a connection stands on: the folders of the repository and the files of the shared state, all of which
// somebody may take away, put others in the place of, or cut, while sysrepo has them mapped.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tq::db {

class SharedState;

enum class Standing {
    firm,     // as it was when the connection was made
    away,     // the repository cannot be reached; the connection is good again when it can
    replaced, // files gone or others in their place: the connection leads nowhere
    broken,   // cut under the mapping: not even to be touched
};

class Basis {
public:
    // Takes down what there is now.
    explicit Basis(const SharedState &state);

    // How it compares with what was taken down.  `code`, for away: TQ_ERR_ACCESS or TQ_ERR_NO_DB.
    Standing look(int &code) const;
    bool is_broken() const;

private:
    struct Place {
        std::string path;
        dev_t device;
        ino_t inode;
        off_t size;
    };
    static Place place_of(std::string path);

    std::vector<Place> folders_;
    std::vector<Place> mapped_;
    std::vector<std::string> data_;
};

} // namespace tq::db
