// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's zebra client.  It only sends, so no callbacks are installed; libfrr connects and reconnects by
// itself.
// Failure policy: a zebra that is away costs the daemon nothing, and a notice that it misses is not repeated.
// libfrr's client belongs to the event loop.  A notice of another thread waits for it, however long it is
// busy: late it still serves, lost it does not.
#include "diagd/peers/peers.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/privileges.hpp"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

struct zclient *zclient;

namespace {

constexpr int zebra_route_type = 32; // who we are towards zebra
constexpr std::chrono::seconds longest_wait{1};

std::thread::id event_loop_thread;

// The notices of other threads, numbered from 1: those from `sent` to `requested` wait for the event loop.
struct Requests {
    std::mutex mutex;
    std::condition_variable changed;
    unsigned requested = 0;
    unsigned sent = 0;
    int result = ZCLIENT_SEND_FAILURE; // of the last one
};
Requests requests;

int send_reset() noexcept
{
    if (zclient == nullptr)
        return ZCLIENT_SEND_SUCCESS;
    struct stream *const message = zclient->obuf;
    stream_reset(message);
    zclient_create_header(message, ZEBRA_SYSTEM_RESET, VRF_DEFAULT);
    stream_putw_at(message, 0, static_cast<std::uint16_t>(stream_get_endp(message)));
    return zclient_send_message(zclient);
}

} // namespace

int diag_zclient_init(struct thread_master *master)
{
    event_loop_thread = std::this_thread::get_id();
    zclient = zclient_new(master, &zclient_options_default, nullptr, 0);
    zclient_init(zclient, zebra_route_type, 0, &diagd_privs);
    return 0;
}

void diag_zclient_stop()
{
    zclient_stop(zclient);
    zclient_free(zclient);
    zclient = nullptr;
}

void diag_zebra_reset_send_waiting()
{
    const std::lock_guard lock{requests.mutex};
    for (; requests.sent != requests.requested; ++requests.sent)
        requests.result = send_reset();
    requests.changed.notify_all();
}

static void send_waiting(struct thread *) noexcept
{
    diag_zebra_reset_send_waiting();
}

int diag_zebra_reset_send()
{
    if (zclient == nullptr)
        return ZCLIENT_SEND_SUCCESS;
    if (std::this_thread::get_id() == event_loop_thread)
        return send_reset();

    std::unique_lock lock{requests.mutex};
    const unsigned own = ++requests.requested;
    thread_add_event(zclient->master, send_waiting, nullptr, 0, nullptr);
    const bool sent = requests.changed.wait_for(lock, longest_wait, [own] { return requests.sent >= own; });
    return sent ? requests.result : ZCLIENT_SEND_BUFFERED;
}
