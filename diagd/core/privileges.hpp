// SPDX-License-Identifier: GPL-2.0-or-later
// What the daemon may do, and the guard that raises its privileges for as long as it lives.
#pragma once

#include "diagd/core/frr.hpp"

#include <cerrno>

extern struct zebra_privs_t diagd_privs;

namespace diagd {

// Of the calling thread, raised only around device opens and shell commands.  `reason` names the operation
// and must be a literal: libfrr keeps the pointer while raised.
class Privileges {
public:
    explicit Privileges(const char *reason) noexcept : raised_(_zprivs_raise(&diagd_privs, reason)) {}
    ~Privileges() { lower(); }
    Privileges(const Privileges &) = delete;
    Privileges &operator=(const Privileges &) = delete;

    // Lowers at once; a second call does nothing, so that the count of raises stays balanced.
    void lower() noexcept
    {
        if (raised_ != nullptr)
            _zprivs_lower(&raised_);
        raised_ = nullptr;
    }

private:
    struct zebra_privs_t *raised_;
};

// What work() returns, which has its privileges raised; errno stays as work left it.
template <class Work>
[[nodiscard]] auto with_privileges(const char *reason, Work work) noexcept
{
    Privileges raised{reason};
    const auto result = work();
    const int work_errno = errno;
    raised.lower();
    errno = work_errno;
    return result;
}

} // namespace diagd
