// SPDX-License-Identifier: GPL-2.0-or-later
// What the service bus sends: libtqapi's client and the daemon's handler, on libfrr's event loop and a bus of
// the target's own.  Input: pieces, each behind its length; a length of 0 is a time that passes, 255 the end
// of the connection.
#include "base/fd.hpp"
#include "diagd/core/state.hpp"
#include "diagd/units.hpp"
#include "platform/board/service_bus_protocol.hpp"
#include "tests/fuzz/fuzz.hpp"

#include "tq_api.h"
#include "util_cpld.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>

#include <thread.h>

#include <array>

namespace {

long passed_s = 0; // added to the clock of timers

// Something that always happens, so that a step of the loop ends.
bool ticked = false;
void tick(struct thread *) noexcept
{
    ticked = true;
}

class Bus {
public:
    Bus()
    {
        std::array<char, 32> folder{"./service-bus-XXXXXX"};
        fuzz::expect(::mkdtemp(folder.data()) != nullptr, "there is a folder for the socket");
        ::setenv("OLT_BOARD", OLT8_JSON, 1);
        ::setenv("BOARDSIM_DIR", folder.data(), 1);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (std::string(folder.data()) + "/" + board::service_bus_socket)
            .copy(address.sun_path, sizeof address.sun_path - 1);
        listener_.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        fuzz::expect(::bind(listener_.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
                         ::listen(listener_.get(), 4) == 0,
                     "there is a bus");
        loop_ = thread_master_create(nullptr);
        fuzz::expect(diag_sclient_init(loop_, 5, nullptr) == 0, "there is a client");
    }

    // The client is connected, and has nothing of an earlier input.
    void begin()
    {
        hang_up();
        connected();
    }
    void hang_up()
    {
        peer_.reset();
        settle();
    }
    void pass_time()
    {
        passed_s += 10;
        settle();
    }
    void send(std::span<const std::uint8_t> bytes)
    {
        if (peer_)
            ::send(peer_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        settle();
    }
    // Whether the client says hello, if need be on a new connection.
    void connected()
    {
        for (int tries = 0; tries < 3; ++tries) {
            pass_time();
            peer_.reset(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (peer_)
                return;
        }
        fuzz::expect(false, "the client looks for the bus again");
    }

private:
    // Until nothing is left to do but what waits for a time.
    void settle()
    {
        for (int idle_rounds = 0; idle_rounds < 2;) {
            bool was_idle = true;
            ticked = false;
            thread_add_event(loop_, tick, nullptr, 0, nullptr);
            for (struct thread event; !ticked && thread_fetch(loop_, &event) != nullptr;) {
                thread_call(&event);
                was_idle = was_idle && ticked;
            }
            idle_rounds = was_idle ? idle_rounds + 1 : 0;
        }
    }

    base::Fd listener_, peer_;
    struct thread_master *loop_;
};

} // namespace

// Timers are due when the target says so.
extern "C" int clock_gettime(clockid_t clock, struct timespec *time)
{
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (clock == CLOCK_MONOTONIC)
        time->tv_sec += passed_s;
    return static_cast<int>(result);
}

extern "C" int misc_cpld_oper_set(int)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static auto &bus = *new Bus; // libfrr's loop ends with the process
    bus.begin();
    for (fuzz::Input input(data, size); !input.empty();) {
        const std::size_t length = input.u8();
        if (length == 0)
            bus.pass_time();
        else if (length == 255)
            bus.begin();
        else
            bus.send(input.take(length));
    }
    // Whatever came before: on a new connection a message does what it says.
    bus.begin();
    constexpr std::array<std::uint8_t, 8> suspend = {0, 8, 0, 46, 0, 0, 0, 1}, resume = {0, 8, 0, 46};
    bus.send(suspend);
    fuzz::expect(diagm.fan_monitor.load() == 0, "monitoring is suspended");
    bus.send(resume);
    fuzz::expect(diagm.fan_monitor.load() == 1, "monitoring is resumed");
    return 0;
}
