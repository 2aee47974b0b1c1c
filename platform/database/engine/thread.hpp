// SPDX-License-Identifier: GPL-2.0-or-later
// Threads of the library: with all signals blocked, so that they reach the main thread's event loop.
#pragma once

#include "tq_errno.h"

#include <pthread.h>

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace tq::db {

template <class Body>
int start_thread(std::thread &thread, const char *name, Body body)
{
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    int code = TQ_OK;
    try {
        thread = std::thread(std::move(body));
        pthread_setname_np(thread.native_handle(), name);
    } catch (const std::system_error &) {
        code = TQ_ERR_NO_MEMORY;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return code;
}

} // namespace tq::db
