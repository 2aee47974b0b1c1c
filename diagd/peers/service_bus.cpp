// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's client on the service bus.  A bus that is absent leaves the daemon working without it.  A
// message that cannot be read is passed over.
#include "diagd/peers/peers.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"
#include "util_cpld.h"

namespace {

constexpr int bus_client_type = 10; // the daemon's place on the bus
constexpr std::uint16_t reset_command = 45;

struct sclient *bus_client;

// Monitoring as a whole: body 0 resumes it, any other value suspends it.  The switches come first, so that no
// monitor works on a board which has been told that nobody operates it.
int monitoring_received(struct sclient *, struct stream *message) noexcept
{
    std::uint32_t suspend = 0;
    // The length is asked first, because libfrr logs a backtrace for a read beyond the end.
    if (message == nullptr || STREAM_READABLE(message) < sizeof(suspend) || !stream_getl2(message, &suspend))
        return 0;
    const bool enabled = suspend == 0;
    diagm.set_all_monitors(enabled);
    misc_cpld_oper_set(enabled ? 1 : 0);
    return 0;
}

} // namespace

int diag_sclient_init(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs)
{
    bus_client = sclient_new(master, instance, privs);
    if (bus_client == nullptr)
        return -1;
    sclient_init(bus_client, bus_client_type, static_cast<std::uint16_t>(instance & 0xFFFF), privs);
    bus_client->message_handler = monitoring_received;
    return 0;
}

int diag_sclient_reset_send()
{
    if (bus_client == nullptr)
        return -1;
    struct stream *const message = bus_client->obuf;
    stream_reset(message);
    sclient_create_header(message, reset_command);
    stream_putw_at(message, 0, static_cast<std::uint16_t>(stream_get_endp(message)));
    return sclient_send_message(bus_client);
}
