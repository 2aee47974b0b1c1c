// SPDX-License-Identifier: GPL-2.0-or-later
// The handler of faults in the alarm store (see store_fault.hpp).
// Failure policy: a fault anywhere else, or one that cannot be mended, goes to the handler before, and ends
// the process as it would have without this one.
#include "platform/alarms/store_fault.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/mman.h>

namespace tq {

namespace {

std::atomic<void *> store = nullptr;
std::atomic<std::size_t> store_bytes = 0;
std::atomic<bool> is_lost = false;
struct sigaction before; // written once, before the handler is in place

bool is_in_store(const void *address) noexcept
{
    const auto offset =
        reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(store.load());
    return store.load() && offset < store_bytes.load();
}

// mmap is a bare system call, so it may be called here.
void on_bus_error(int signal, siginfo_t *info, void *) noexcept
{
    const int saved = errno;
    if (info->si_code == BUS_ADRERR && is_in_store(info->si_addr) &&
        mmap(store.load(), store_bytes.load(), PROT_READ | PROT_WRITE,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED)
        is_lost = true;
    else
        sigaction(signal, &before, nullptr); // the access comes again, and is his
    errno = saved;
}

bool install() noexcept
{
    struct sigaction action {};
    action.sa_sigaction = on_bus_error;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    return sigaction(SIGBUS, nullptr, &before) == 0 && sigaction(SIGBUS, &action, nullptr) == 0;
}

} // namespace

void guard_store(void *memory, std::size_t size) noexcept
{
    store_bytes = size;
    store = memory;
    is_lost = false;
    [[maybe_unused]] static const bool is_installed = install();
}

bool is_store_lost() noexcept
{
    return is_lost;
}

} // namespace tq
