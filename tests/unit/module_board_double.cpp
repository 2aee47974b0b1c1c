// SPDX-License-Identifier: GPL-2.0-or-later
// A board with modules in place of the platform libraries (see module_board_double.hpp).
#include "tests/unit/module_board_double.hpp"

#include "diagd/core/privileges.hpp"

#include "tq_api.h"
#include "util_cpld.h"
#include "util_i2c.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

ModuleBoardDouble board_double;

namespace {

constexpr int cpld_handle = 7;

template <class... Args>
void note(const char *format, Args... args)
{
    std::array<char, 96> line{};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    std::snprintf(line.data(), line.size(), format, args...);
#pragma GCC diagnostic pop
    board_double.record.emplace_back(line.data());
}

Memory *memory_at(int handle, int address)
{
    if (handle != cpld_handle)
        return nullptr;
    const auto module = board_double.modules.find(board_double.channel);
    if (module == board_double.modules.end())
        return nullptr;
    const auto memory = module->second.find(address);
    return memory == module->second.end() ? nullptr : &memory->second;
}

} // namespace

void ModuleBoardDouble::reset()
{
    *this = ModuleBoardDouble{};
}

Module &ModuleBoardDouble::plug_pon(int port)
{
    cpld[0x0B] = static_cast<std::uint8_t>(cpld[0x0B] | 1 << (port - 1));
    return modules[port - 1];
}

Module &ModuleBoardDouble::plug_gigabit(int port)
{
    cpld[0x0C] = static_cast<std::uint8_t>(cpld[0x0C] | 1 << (port - 1));
    return modules[port + 7];
}

void ModuleBoardDouble::expect_given_back() const
{
    EXPECT_EQ(semaphore, 1);
    EXPECT_EQ(raised, 0);
    EXPECT_EQ(channel, -1);
}

std::string byte_read(int address, int reg)
{
    return byte_reads(address, reg, reg).front();
}

std::vector<std::string> byte_reads(int address, int first, int last)
{
    std::vector<std::string> lines;
    for (int reg = first; reg <= last; ++reg) {
        std::array<char, 32> line{};
        std::snprintf(line.data(), line.size(), "I %x:%d 1", static_cast<unsigned>(address), reg);
        lines.emplace_back(line.data());
    }
    return lines;
}

std::string word_read(int address, int reg)
{
    std::string line = byte_read(address, reg);
    line.back() = '2';
    return line;
}

std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string> &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

void set_word(Memory &memory, int reg, int value)
{
    const auto at = static_cast<std::size_t>(reg);
    memory[at] = static_cast<std::uint8_t>(value >> 8);
    memory[at + 1] = static_cast<std::uint8_t>(value);
}

void set_text(Memory &memory, int reg, std::string_view text)
{
    std::ranges::copy(text, memory.begin() + reg);
}

void make_path(Module &module, int id, int diagnostics, const RawPath &path)
{
    set_word(module[id], 60, path.wavelength_nm);
    module[id][92] = static_cast<std::uint8_t>(path.monitoring);
    Memory &page = module[diagnostics];
    set_word(page, 96, path.temperature);
    set_word(page, 98, path.voltage);
    set_word(page, 100, path.bias);
    set_word(page, 102, path.tx_power);
    set_word(page, 104, path.rx_power);
}

std::vector<std::uint8_t> make_board_record(std::uint32_t capability, const std::vector<int> &pon1,
                                            const std::vector<int> &pon2, const std::vector<int> &gigabit)
{
    board_record_t record{};
    record.capability = capability;
    record.w108 = 6;
    for (const int k : pon1)
        record.pon1[k].in_use = 1;
    for (const int k : pon2)
        record.pon2[k].in_use = 1;
    for (const int k : gigabit) {
        record.sfp[k].in_use = 1;
        record.sfp[k].present = 1;
    }
    std::vector<std::uint8_t> bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

extern "C" {

int alarm_log_sem_id = -1; // there are no alarms on it

uint8_t cpld_debug = 0;

int semaphore_p(int)
{
    EXPECT_EQ(board_double.semaphore, 1) << "taken twice: the daemon would hang";
    --board_double.semaphore;
    note("P");
    return 0;
}

int semaphore_v(int)
{
    ++board_double.semaphore;
    note("V");
    return 0;
}

struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    ++board_double.raised;
    note("RAISE %s", reason);
    return privs;
}

void _zprivs_lower(struct zebra_privs_t **privs)
{
    --board_double.raised;
    *privs = nullptr;
    note("LOWER");
}

int misc_cpld_i2c_open(int bus)
{
    note("OPEN %d", bus);
    errno = ENODEV;
    return board_double.opens ? cpld_handle : -1;
}

int misc_cpld_i2c_close(int)
{
    note("CLOSE");
    return 0;
}

int misc_cpld_i2c_read_byte(int, uint8_t reg, uint8_t *value)
{
    note("R %d", reg);
    if (!board_double.cpld_reads)
        return -1;
    *value = board_double.cpld[reg];
    return 0;
}

int misc_cpld_channel_select(int, int channel)
{
    note("CH %d", channel);
    if (!board_double.selects)
        return -1;
    board_double.channel = channel;
    return 0;
}

int misc_cpld_channel_select_end(int)
{
    note("CHE");
    board_double.channel = -1;
    return 0;
}

int misc_i2c_read(int handle, uint8_t address, uint8_t reg, uint8_t *buf, int len, int zero)
{
    EXPECT_EQ(zero, 0);
    note("I %x:%d %d", address, reg, len);
    const Memory *memory = memory_at(handle, address);
    if (memory == nullptr || board_double.dead.contains({address, reg}))
        return -5;
    for (int i = 0; i < len; ++i)
        buf[i] = (*memory)[static_cast<std::uint8_t>(reg + i)];
    return len;
}

int misc_i2c_write(int handle, uint8_t address, uint8_t reg, uint8_t *buf, int len, int zero)
{
    EXPECT_EQ(zero, 0);
    EXPECT_EQ(len, 1);
    note("W %x:%d=%d", address, reg, buf[0]);
    Memory *memory = memory_at(handle, address);
    if (memory == nullptr || board_double.dead.contains({address, reg}))
        return -5;
    (*memory)[reg] = buf[0];
    return len;
}

// The rest of board/ reaches what is not there.
int misc_i2c_device_init(int)
{
    return -1;
}

int misc_cpld_i2c_set_byte(int, uint8_t, uint8_t)
{
    return -1;
}

// core/ can file records; modules have none to file.
int cli_log(tq_database_t *, tq_alarm_req_t *, const char *, ...)
{
    return -1;
}

int board_mmap_read(int index, void *record)
{
    const auto at = static_cast<std::size_t>(index);
    if (at >= board_double.board_records.size())
        return -1;
    std::ranges::copy(board_double.board_records[at], static_cast<std::uint8_t *>(record));
    return 0;
}

} // extern "C"
