// SPDX-License-Identifier: GPL-2.0-or-later
// Stacks of the event loop (see loop_stack.hpp).
#include "diagd/core/loop_stack.hpp"

#include <sys/mman.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace diagd {

namespace {

// Handlers have arrays of some ten thousand bytes at most; memory is taken as it is touched.
constexpr std::size_t stack_bytes = 1024 * 1024;
constexpr std::size_t guard_bytes = 64 * 1024;

LoopStack *left = nullptr;    // the one before, until its successor has noted what it must
LoopStack *entered = nullptr; // the one that runs

} // namespace

LoopStack::~LoopStack()
{
    if (memory_ == nullptr)
        return;
#ifdef __SANITIZE_THREAD__
    __tsan_destroy_fiber(sanitizer_state_);
#endif
#ifdef __SANITIZE_ADDRESS__
    __asan_unpoison_memory_region(memory_, guard_bytes + stack_bytes); // of the calls that never returned
#endif
    munmap(memory_, guard_bytes + stack_bytes);
}

bool LoopStack::prepare(void (*body)() noexcept) noexcept
{
    void *const memory = mmap(nullptr, guard_bytes + stack_bytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return false;
    memory_ = memory;
    mprotect(memory_, guard_bytes, PROT_NONE);
    bottom_ = static_cast<char *>(memory_) + guard_bytes;
    size_ = stack_bytes;
    body_ = body;
#ifdef __SANITIZE_THREAD__
    sanitizer_state_ = __tsan_create_fiber(0);
#endif
    getcontext(&context_);
    context_.uc_stack = {.ss_sp = const_cast<void *>(bottom_), .ss_flags = 0, .ss_size = size_};
    context_.uc_link = nullptr;
    makecontext(&context_, begin, 0);
    return true;
}

void LoopStack::begin() noexcept
{
#ifdef __SANITIZE_ADDRESS__
    __sanitizer_finish_switch_fiber(nullptr, &left->bottom_, &left->size_);
#endif
    entered->body_();
}

void LoopStack::switch_to(LoopStack &next) noexcept
{
    left = this;
    entered = &next;
#ifdef __SANITIZE_ADDRESS__
    __sanitizer_start_switch_fiber(&sanitizer_state_, next.bottom_, next.size_);
#endif
#ifdef __SANITIZE_THREAD__
    sanitizer_state_ = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(next.sanitizer_state_, 0);
#endif
    swapcontext(&context_, &next.context_);
#ifdef __SANITIZE_ADDRESS__
    __sanitizer_finish_switch_fiber(sanitizer_state_, &left->bottom_, &left->size_);
#endif
}

} // namespace diagd
