// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's zebra client.  It only sends, so no callbacks are installed; libfrr connects and reconnects by
// itself, and a zebra that is away costs the daemon nothing.
// libfrr's client belongs to the event loop: another thread that wants to send has it done there, and gives
// up when the event loop is busy for too long.
#include "diagd/peers/reset_clients.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/privileges.hpp"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

struct zclient *zclient;

namespace {

constexpr int zebra_route_type = 32; // who we are towards zebra
constexpr std::chrono::seconds longest_wait{1};

std::thread::id event_loop_thread;

// Somebody's wish to send, known to two threads; the last one frees it.
struct Errand {
    std::mutex mutex;
    std::condition_variable changed;
    bool given_up = false;
    bool done = false;
    int result = ZCLIENT_SEND_FAILURE;
};

int send_reset() noexcept
{
    struct stream *const message = zclient->obuf;
    stream_reset(message);
    zclient_create_header(message, ZEBRA_SYSTEM_RESET, VRF_DEFAULT);
    stream_putw_at(message, 0, static_cast<std::uint16_t>(stream_get_endp(message)));
    return zclient_send_message(zclient);
}

void run_errand(struct thread *thread) noexcept
{
    const std::unique_ptr<std::shared_ptr<Errand>> errand{
        static_cast<std::shared_ptr<Errand> *>(THREAD_ARG(thread))};
    Errand &wish = **errand;
    const std::lock_guard lock{wish.mutex};
    if (wish.given_up)
        return;
    wish.result = zclient != nullptr ? send_reset() : ZCLIENT_SEND_FAILURE;
    wish.done = true;
    wish.changed.notify_one();
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

int diag_zebra_reset_send()
{
    if (zclient == nullptr)
        return ZCLIENT_SEND_SUCCESS;
    if (std::this_thread::get_id() == event_loop_thread)
        return send_reset();

    const auto errand = std::make_shared<Errand>();
    std::unique_lock lock{errand->mutex};
    thread_add_event(zclient->master, run_errand, new std::shared_ptr<Errand>{errand}, 0, nullptr);
    errand->changed.wait_for(lock, longest_wait, [&] { return errand->done; });
    errand->given_up = !errand->done;
    return errand->result;
}
