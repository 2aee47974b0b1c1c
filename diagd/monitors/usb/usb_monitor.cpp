// SPDX-License-Identifier: GPL-2.0-or-later
// The USB monitor: lights the front panel's LED while a USB device is attached, as the mount table and the
// kernel's hot-plug events tell.
// Failure policy: without a handle there is no monitor, and without the hot-plug socket the thread ends; one
// line on standard output says so and the LED keeps what it shows.  A receive that fails is passed over.
#include "base/fd.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/worker_thread.hpp"
#include "diagd/monitors/usb/uevent_parser.hpp"

#include <linux/netlink.h>
#include <mntent.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <thread>

namespace {

constexpr const char *mount_table = "/proc/mounts";
constexpr std::string_view disk_prefix = "/dev/sd";
constexpr unsigned kernel_events = 1; // multicast group of the kernel's own messages
constexpr std::chrono::milliseconds pause_after_error{100};

int cpld_handle = -1; // set before the thread starts

void light_led(bool on) noexcept
{
    diagd::lock_and_write_register(cpld_handle, diagd::CpldRegister::usb_led, on ? 1 : 0);
}

struct CloseMountTable {
    void operator()(std::FILE *table) const noexcept { endmntent(table); }
};

bool disk_is_mounted() noexcept
{
    const std::unique_ptr<std::FILE, CloseMountTable> table{setmntent(mount_table, "r")};
    if (!table)
        return false;
    std::array<char, 1024> text;
    struct mntent entry;
    while (getmntent_r(table.get(), &entry, text.data(), static_cast<int>(text.size())) != nullptr)
        if (std::string_view{entry.mnt_fsname}.starts_with(disk_prefix))
            return true;
    return false;
}

// The forced buffer needs privileges.  An empty owner: the reason has been printed.
base::Fd open_hotplug_socket() noexcept
{
    const diagd::Privileges raised{"usb_monitor_thread"};
    const auto failed = [](const char *step) {
        const char *const error = std::strerror(errno);
        std::printf("error %s: %s", step, error);
        std::fflush(stdout); // no line end
        diagd::goes_without("usb_monitor", error);
        return base::Fd{};
    };

    base::Fd hotplug{::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT)};
    if (!hotplug)
        return failed("create hotplug socket");

    constexpr int receive_bytes = 1024;
    if (::setsockopt(hotplug.get(), SOL_SOCKET, SO_RCVBUFFORCE, &receive_bytes, sizeof receive_bytes) < 0)
        return failed("set hotplug socket receive buffer size");

    struct sockaddr_nl address {};
    address.nl_family = AF_NETLINK;
    address.nl_pid = static_cast<std::uint32_t>(getpid());
    address.nl_groups = kernel_events;
    if (::bind(hotplug.get(), reinterpret_cast<const struct sockaddr *>(&address), sizeof address) < 0)
        return failed("bind hotplug socket");
    return hotplug;
}

// False: there is no message.  What it left of the buffer is zero.
bool receive(int hotplug, diagd::UeventBuffer &buffer) noexcept
{
    buffer.fill('\0');
    struct sockaddr_nl sender {};
    struct iovec vector {
        .iov_base = buffer.data(), .iov_len = buffer.size()
    };
    struct msghdr message {};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    const ssize_t received = ::recvmsg(hotplug, &message, 0);
    if (received > 0)
        return true;
    // Interrupted, or events lost because they came too fast: the next one may be there already.  Whatever
    // else it is would come back at once.
    if (received == 0 || (errno != EINTR && errno != ENOBUFS))
        std::this_thread::sleep_for(pause_after_error);
    return false;
}

void run() noexcept
{
    if (disk_is_mounted())
        light_led(true);
    const base::Fd hotplug = open_hotplug_socket();
    if (!hotplug)
        return;
    diagm.usb_monitor.store(1, std::memory_order_relaxed);
    for (diagd::UeventBuffer buffer;;) {
        if (!receive(hotplug.get(), buffer) || diagm.usb_monitor.load(std::memory_order_relaxed) == 0)
            continue;
        if (const std::optional<bool> led = diagd::usb_led_after(buffer))
            light_led(*led);
    }
}

} // namespace

int usb_init()
{
    cpld_handle = diagd::open_board_for_life("usb_monitor");
    if (cpld_handle < 0)
        return 0;
    light_led(false);
    if (!diagd::start_worker("usb_monitor", run, diagd::ThreadEnd::detached))
        std::puts("wtd_app_init create usb_monitor_thread failed!\r");
    return 0;
}
