// SPDX-License-Identifier: GPL-2.0-or-later
// bus_floor LIST THREADS: makes the steps of a list on the board, one after another, and does nothing else.
// For each line on standard input, a number of rounds, it answers with the CPU they took, in nanoseconds.
// THREADS more threads sleep meanwhile: in a process that has some, every call of the kernel that takes a
// descriptor costs more.
//
// A line of the list is one step: "open BUS", "cpld REGISTER", "select CHANNEL", "read ADDRESS REGISTER
// LENGTH", "write ADDRESS REGISTER VALUE", "end", "close". Numbers are decimal.
#include "util_cpld.h"
#include "util_i2c.h"

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

enum class Op { open, cpld, select, read, write, end, close };

struct Step {
    Op op;
    std::array<int, 3> numbers;
};

std::vector<Step> read_list(const char *path)
{
    constexpr std::array names{"open", "cpld", "select", "read", "write", "end", "close"};
    std::vector<Step> list;
    std::ifstream file{path};
    for (std::string line; std::getline(file, line);) {
        std::istringstream words{line};
        std::string name;
        words >> name;
        Step step{};
        std::size_t op = 0;
        while (op < names.size() && name != names[op])
            ++op;
        if (op == names.size()) {
            std::cerr << "no step: " << line << '\n';
            std::exit(2);
        }
        step.op = static_cast<Op>(op);
        for (int &number : step.numbers)
            words >> number;
        list.push_back(step);
    }
    return list;
}

void must(int result, const char *what)
{
    if (result >= 0)
        return;
    std::perror(what);
    std::exit(2);
}

// Reads of a path that a module does not have fail, as they do in the daemon.
void run(const std::vector<Step> &list)
{
    int handle = -1;
    std::array<std::uint8_t, 256> bytes{};
    for (const auto &[op, n] : list) {
        const auto byte = [&n = n](std::size_t i) { return static_cast<std::uint8_t>(n[i]); };
        switch (op) {
        case Op::open:
            must(handle = misc_cpld_i2c_open(n[0]), "open");
            break;
        case Op::cpld:
            must(misc_cpld_i2c_read_byte(handle, byte(0), bytes.data()), "register");
            break;
        case Op::select:
            must(misc_cpld_channel_select(handle, n[0]), "select");
            break;
        case Op::read:
            misc_i2c_read(handle, byte(0), byte(1), bytes.data(), n[2], 0);
            break;
        case Op::write:
            bytes[0] = byte(2);
            must(misc_i2c_write(handle, byte(0), byte(1), bytes.data(), 1, 0), "write");
            break;
        case Op::end:
            must(misc_cpld_channel_select_end(handle), "end");
            break;
        case Op::close:
            misc_cpld_i2c_close(handle);
            break;
        }
    }
}

std::int64_t cpu_ns()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::cerr << "bus_floor LIST THREADS\n";
        return 2;
    }
    for (long threads = std::strtol(argv[2], nullptr, 10); threads > 0; --threads)
        std::thread{[] { pause(); }}.detach();
    const std::vector<Step> list = read_list(argv[1]);
    for (int rounds = 0; std::cin >> rounds;) {
        const std::int64_t begin = cpu_ns();
        while (rounds-- > 0)
            run(list);
        std::cout << cpu_ns() - begin << std::endl;
    }
}
