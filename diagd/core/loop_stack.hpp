// SPDX-License-Identifier: GPL-2.0-or-later
// Stacks for the event loop, of which one runs at a time.
#pragma once

#include <ucontext.h>

#include <cstddef>

namespace diagd {

class LoopStack {
public:
    // That of the main thread, as it is.
    LoopStack() noexcept = default;
    ~LoopStack();
    LoopStack(const LoopStack &) = delete;
    LoopStack &operator=(const LoopStack &) = delete;

    // A new one on which `body`, which never returns, begins with the first switch to it.  False: no memory.
    bool prepare(void (*body)() noexcept) noexcept;

    // Goes on where `next` was left; comes back when somebody switches to this one.
    void switch_to(LoopStack &next) noexcept;

private:
    static void begin() noexcept;

    ucontext_t context_{};
    void *memory_ = nullptr; // with a page at its lower end that nobody may touch
    void (*body_)() noexcept = nullptr;
    // What sanitizers want to know.
    void *sanitizer_state_ = nullptr; // of a stack that is left
    const void *bottom_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace diagd
