// SPDX-License-Identifier: GPL-2.0-or-later
// To be preloaded into the daemon: adds up the CPU that its calls of the bus libraries take, and keeps the
// sum, in nanoseconds, in the file named by BUS_COST_FILE.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

std::atomic<std::uint64_t> &sum()
{
    static std::atomic<std::uint64_t> unseen;
    static auto *const shared = []() -> std::atomic<std::uint64_t> * {
        const char *path = std::getenv("BUS_COST_FILE");
        const int fd = path ? open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666) : -1;
        if (fd < 0)
            return &unseen;
        void *place = ftruncate(fd, sizeof unseen) == 0
                          ? mmap(nullptr, sizeof unseen, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)
                          : MAP_FAILED;
        close(fd);
        return place == MAP_FAILED ? &unseen : static_cast<std::atomic<std::uint64_t> *>(place);
    }();
    return *shared;
}

std::uint64_t cpu_ns()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(time.tv_nsec);
}

// Every function of the bus libraries takes and gives integers and pointers; six are enough for all.
using Word = std::intptr_t;
Word measured(void *real, Word a, Word b, Word c, Word d, Word e, Word f)
{
    const std::uint64_t begin = cpu_ns();
    const Word result =
        reinterpret_cast<Word (*)(Word, Word, Word, Word, Word, Word)>(real)(a, b, c, d, e, f);
    sum() += cpu_ns() - begin;
    return result;
}

} // namespace

#define MEASURED(op)                                                                                         \
    extern "C" Word op(Word a, Word b, Word c, Word d, Word e, Word f)                                       \
    {                                                                                                        \
        static void *const real = dlsym(RTLD_NEXT, #op);                                                     \
        return measured(real, a, b, c, d, e, f);                                                             \
    }

MEASURED(misc_i2c_device_init)
MEASURED(misc_i2c_read)
MEASURED(misc_i2c_write)
MEASURED(misc_cpld_channel_select)
MEASURED(misc_cpld_channel_select_end)
MEASURED(misc_cpld_i2c_close)
MEASURED(misc_cpld_i2c_init)
MEASURED(misc_cpld_i2c_open)
MEASURED(misc_cpld_i2c_read_byte)
MEASURED(misc_cpld_i2c_set_byte)
MEASURED(misc_cpld_oper_set)
