// SPDX-License-Identifier: GPL-2.0-or-later
// The reset push-button: a sample of its mapped register five times a second.
// Failure policy: a device that cannot be opened, set up or mapped is told on standard error and there is no
// button; everything else of the daemon goes on.  Once pressed, whatever fails on the way is at most printed:
// the reboot goes ahead.
#include "base/fd.hpp"
#include "base/owner.hpp"
#include "diagd/board/gpio.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/child_programs.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/worker_thread.hpp"
#include "diagd/monitors/reset_button/button_policy.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"
#include "diagd/peers/peers.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

constexpr const char *thread_name = "reset_monitor";
constexpr unsigned button_line = 2;

constexpr const char *uio_device = "/dev/uio0";
constexpr const char *uio_size_file = "/sys/class/uio/uio0/maps/map0/size";
constexpr std::size_t button_word = 8 / sizeof(std::uint32_t); // byte offset 8
constexpr std::uint32_t button_released = 1U << 21;

constexpr std::chrono::milliseconds sample_interval{200};

constexpr const char *save_configuration =
    "export LD_LIBRARY_PATH=/usr/local/lib:/usr/lib:/lib;/usr/local/bin/vtysh -c write";

const volatile std::uint32_t *uio_registers; // set before the thread starts

// There will be no button; `message` is for perror.
bool failed(const char *message) noexcept
{
    const int error = errno;
    std::perror(message);
    diagd::goes_without(thread_name, std::strerror(error));
    return false;
}

// Makes the button's line an input.
bool set_up_line() noexcept
{
    const base::Fd device = diagd::open_gpio();
    if (!device)
        return failed("open /dev/tq_gpio_cfg failed\n");
    if (!diagd::request_gpio(device, diagd::GpioRequest::get, button_line, 0))
        return failed("/dev/tq_gpio_cfg ioctl fail!\n");
    return true;
}

// Bytes of the mapped region; 0, which cannot be mapped, when the kernel does not say.
std::uint32_t uio_size() noexcept
{
    const base::File file{std::fopen(uio_size_file, "re")};
    unsigned size = 0;
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes a number that fits
    if (!file || std::fscanf(file.get(), "0x%16X", &size) != 1)
        return 0;
    return size;
}

bool map_registers() noexcept
{
    base::Fd device{::open(uio_device, O_RDWR | O_SYNC | O_CLOEXEC)};
    if (!device)
        return failed("Failed to open the device");
    void *const region = ::mmap(nullptr, uio_size(), PROT_READ | PROT_WRITE, MAP_SHARED, device.get(), 0);
    if (region == MAP_FAILED)
        return failed("devuio mmap");
    uio_registers = static_cast<const volatile std::uint32_t *>(region);
    device.release(); // stays open, as the mapping stays, for the life of the process
    return true;
}

bool button_is_pressed() noexcept
{
    return (uio_registers[button_word] & button_released) == 0;
}

void save_configurations() noexcept
{
    const int status = diagd::run_shell_line(save_configuration);
    if (status != -1 && WIFSIGNALED(status) && (WTERMSIG(status) == SIGINT || WTERMSIG(status) == SIGQUIT))
        std::printf("system: exit status of the child WTERMSIG[%d]\n", WTERMSIG(status));
}

void reboot() noexcept
{
    diagd::file_alarm(TQ_ALARM_RESET, diagd::AlarmState::event, "reset by push-button");
    std::puts("Restarting system by push-button...\r");
    system_backup();
    system_reboot();
}

// The peers reset their part of the configuration first, so that what is saved then is the result.
void reset_configuration() noexcept
{
    if (diag_sclient_reset_send() == -1)
        std::printf("%s sclient_send_message() failed\r\n", "reset_monitor_thread");
    diag_zebra_reset_send();
    save_configurations();
    diagd::file_alarm(TQ_ALARM_CONFIG_ERASE, diagd::AlarmState::event, "erase partial config by push-button");
}

void run() noexcept
{
    for (int held = 0;;) {
        std::this_thread::sleep_for(sample_interval);
        switch (diagd::sample_button(button_is_pressed(), held)) {
        case diagd::ButtonAction::none:
            break;
        case diagd::ButtonAction::long_press:
            reset_configuration();
            [[fallthrough]];
        case diagd::ButtonAction::short_press:
            reboot();
            return;
        }
    }
}

} // namespace

int reset_init()
{
    diagd::Privileges raised{"reset_monitor"};
    if (!set_up_line() || !map_registers())
        return 0;
    raised.lower();
    if (!diagd::start_worker(thread_name, run, diagd::ThreadEnd::joinable))
        std::puts("wtd_app_init create tq_reset_app_thread failed!\r");
    return 0;
}
