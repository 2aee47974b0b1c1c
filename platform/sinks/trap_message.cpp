// SPDX-License-Identifier: GPL-2.0-or-later
// Access to the library that makes notifications (see trap_encoder.hpp).
// Failure policy: a library that cannot be loaded is said in the log once, and not looked for again.
#include "platform/sinks/trap_message.hpp"

#include "platform/sinks/trap_encoder.hpp"

#include <dlfcn.h>

#include <cerrno>

#include <zebra.h>

#include <log.h>

namespace tq {

namespace {

// The library stays for the life of the process.
decltype(tq_trap_encode) *load()
{
    // Not by dlopen: sanitizers wrap that, and a wrapped one does not search this library's folder.
    void *const library = ::dlmopen(LM_ID_BASE, "libtqtrap.so", RTLD_NOW);
    void *const function = library ? ::dlsym(library, "tq_trap_encode") : nullptr;
    if (!function)
        zlog_warn("traps cannot be made: %s", ::dlerror());
    return reinterpret_cast<decltype(tq_trap_encode) *>(function);
}

} // namespace

std::string trap_message(const Alarm &alarm, const std::string &community, unsigned long uptime)
{
    static auto *const encode = load();
    std::string message;
    errno = encode ? EMSGSIZE : ELIBACC;
    if (encode)
        encode(alarm, community, uptime, message);
    return message;
}

} // namespace tq
