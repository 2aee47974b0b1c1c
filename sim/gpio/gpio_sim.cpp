// SPDX-License-Identifier: GPL-2.0-or-later
// libgpio_sim.so, to be preloaded: gives the ioctl requests 3 and 1 of the GPIO device to the simulated
// board ($BOARDSIM_DIR, see gpio_file.hpp), when an ordinary file stands where the device would be.  Every
// other open and ioctl goes on to the C library.
//
// Failure policy: a real device, or no board, leaves the calls as they are, so that the preload does no harm
// where there is no simulated board.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sim/boardsim/devices/gpio_file.hpp"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using sim::GpioFault;
using sim::GpioFile;

template <class Function>
Function *next_function(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

auto *next_open()
{
    static auto *const next = next_function<int(const char *, int, ...)>("open");
    return next;
}

const char *device_path()
{
    static const char *const path = [] {
        const char *given = std::getenv("OLT_GPIO_DEVICE");
        return given != nullptr ? given : "/dev/tq_gpio_cfg";
    }();
    return path;
}

// The state of the board's GPIO driver, nullptr while there is none.  Mapped once: boardsim keeps the file.
GpioFile *state()
{
    static std::atomic<GpioFile *> mapped{nullptr};
    if (GpioFile *known = mapped.load(std::memory_order_acquire); known != nullptr)
        return known;
    const char *folder = std::getenv("BOARDSIM_DIR");
    char path[256];
    std::snprintf(path, sizeof path, "%s/%s", folder != nullptr ? folder : "/run/boardsim",
                  sim::gpio_file_name);
    const int saved = errno;
    const int fd = next_open()(path, O_RDWR | O_CLOEXEC, 0);
    struct stat status {};
    const bool usable =
        fd >= 0 && ::fstat(fd, &status) == 0 && status.st_size >= static_cast<off_t>(sizeof(GpioFile));
    void *memory =
        usable ? ::mmap(nullptr, sizeof(GpioFile), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0) : MAP_FAILED;
    if (fd >= 0)
        ::close(fd);
    errno = saved;
    if (memory == MAP_FAILED)
        return nullptr;
    auto *file = static_cast<GpioFile *>(memory);
    GpioFile *none = nullptr;
    if (file->magic != sim::gpio_magic || !mapped.compare_exchange_strong(none, file)) {
        ::munmap(memory, sizeof(GpioFile));
        return none;
    }
    return file;
}

// The state, when `fd` is the simulated device: the ordinary file that has the device's name.
GpioFile *gpio_of(int fd)
{
    struct stat opened {};
    struct stat device {};
    if (::fstat(fd, &opened) != 0 || !S_ISREG(opened.st_mode) || ::stat(device_path(), &device) != 0 ||
        opened.st_dev != device.st_dev || opened.st_ino != device.st_ino)
        return nullptr;
    return state();
}

// errno value when this call is to fail, else 0.
int next_error(GpioFault &fault)
{
    const std::int32_t left = fault.left.load(std::memory_order_relaxed);
    if (left == 0)
        return 0;
    if (fault.skip.load(std::memory_order_relaxed) > 0) {
        fault.skip.fetch_sub(1, std::memory_order_relaxed);
        return 0;
    }
    if (left > 0)
        fault.left.fetch_sub(1, std::memory_order_relaxed);
    return fault.error.load(std::memory_order_relaxed);
}

int refuse(int error)
{
    errno = error;
    return -1;
}

// The word's value goes to the line, or comes from it.
int serve(GpioFile &gpio, unsigned long request, std::uint32_t *word)
{
    const bool set = request == sim::gpio_request_set;
    (set ? gpio.set_requests : gpio.get_requests).fetch_add(1, std::memory_order_relaxed);
    if (const int error = next_error(set ? gpio.fail_set : gpio.fail_get); error != 0)
        return refuse(error);
    if (word == nullptr)
        return refuse(EFAULT);
    gpio.last_word.store(*word, std::memory_order_relaxed);
    const unsigned line = *word >> 8 & 0xff;
    if (set) {
        gpio.value[line].store(static_cast<std::uint8_t>(*word), std::memory_order_relaxed);
        gpio.set_count[line].fetch_add(1, std::memory_order_relaxed);
    } else {
        *word = (*word & ~0xffU) | gpio.value[line].load(std::memory_order_relaxed);
    }
    return 0;
}

// Lets the board refuse an open of its device.
int opened(const char *path, int fd)
{
    if (fd < 0 || path == nullptr || std::strcmp(path, device_path()) != 0)
        return fd;
    GpioFile *gpio = gpio_of(fd);
    if (gpio == nullptr)
        return fd;
    gpio->opened.fetch_add(1, std::memory_order_relaxed);
    const int error = next_error(gpio->fail_open);
    if (error == 0)
        return fd;
    ::close(fd);
    return refuse(error);
}

mode_t mode_of(int flags, va_list args)
{
    const bool creates = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return creates ? static_cast<mode_t>(va_arg(args, unsigned)) : 0;
}

} // namespace

EXPORT int open(const char *path, int flags, ...)
{
    va_list args;
    va_start(args, flags);
    const mode_t mode = mode_of(flags, args);
    va_end(args);
    return opened(path, next_open()(path, flags, mode));
}

EXPORT int open64(const char *path, int flags, ...)
{
    static auto *const next = next_function<int(const char *, int, ...)>("open64");
    va_list args;
    va_start(args, flags);
    const mode_t mode = mode_of(flags, args);
    va_end(args);
    return opened(path, next(path, flags, mode));
}

EXPORT int ioctl(int fd, unsigned long request, ...)
{
    static auto *const next = next_function<int(int, unsigned long, ...)>("ioctl");
    va_list args;
    va_start(args, request);
    void *argument = va_arg(args, void *);
    va_end(args);
    if (request == sim::gpio_request_set || request == sim::gpio_request_get)
        if (GpioFile *gpio = gpio_of(fd); gpio != nullptr)
            return serve(*gpio, request, static_cast<std::uint32_t *>(argument));
    return next(fd, request, argument);
}
