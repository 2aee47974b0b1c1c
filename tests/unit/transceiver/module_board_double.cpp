// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/unit/transceiver/module_board_double.hpp"

#include "sim/modules/text.hpp"

#include "diagd/core/privileges.hpp"

#include "tq_api.h"
#include "util_cpld.h"
#include "util_i2c.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

using board::SimOp;

ModuleBoardDouble board_double;

namespace {

constexpr int cpld_handle = 7;
constexpr int failed = -5;

void note(std::string line)
{
    board_double.record.push_back(std::move(line));
}

// One transaction through the handle.
sim::BusAnswer transact(int handle, board::SimRequest request, std::span<const std::uint8_t> out = {})
{
    sim::BusAnswer answer;
    request.length = static_cast<std::uint32_t>(out.size());
    if (handle == cpld_handle)
        sim::transact(*board_double.board, board_double.handle, request, out, answer);
    else
        answer.result = failed;
    return answer;
}

} // namespace

void ModuleBoardDouble::reset()
{
    record.clear();
    board.emplace(board::load(OLT8_JSON));
    handle = {.opened = true, .kind = board::HandleKind::cpld, .bus = board->description.cpld.bus};
    board_records.clear();
    semaphore = 1;
    raised = 0;
}

Module ModuleBoardDouble::plug(sim::CageKind kind, int port)
{
    sim::Cage &cage = *board->cages.find(kind, port);
    if (!cage.module)
        cage.plug({.name = "test", .devices = {}});
    return Module(cage);
}

void ModuleBoardDouble::pretend_pons()
{
    for (sim::Cage &cage : board->cages.all())
        if (cage.kind == sim::CageKind::pon)
            cage.presence = sim::Presence::stuck_on;
}

void ModuleBoardDouble::expect_given_back() const
{
    EXPECT_EQ(semaphore, 1);
    EXPECT_EQ(raised, 0);
    EXPECT_EQ(handle.channel, sim::no_channel);
}

std::string byte_read(int address, int reg)
{
    return sim::format("I %x:%d 1", static_cast<unsigned>(address), reg);
}

std::vector<std::string> byte_reads(int address, int first, int last)
{
    std::vector<std::string> lines;
    for (int reg = first; reg <= last; ++reg)
        lines.push_back(byte_read(address, reg));
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

void set_word(Memory memory, int reg, int value)
{
    const auto at = static_cast<std::size_t>(reg);
    memory[at] = static_cast<std::uint8_t>(value >> 8);
    memory[at + 1] = static_cast<std::uint8_t>(value);
}

void set_text(Memory memory, int reg, std::string_view text)
{
    for (const char letter : text)
        memory[static_cast<std::size_t>(reg++)] = static_cast<std::uint8_t>(letter);
}

void make_path(Module module, int id, int diagnostics, const RawPath &path)
{
    set_word(module[id], 60, path.wavelength_nm);
    module[id][92] = static_cast<std::uint8_t>(path.monitoring);
    const Memory page = module[diagnostics];
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
    note(sim::format("RAISE %s", reason));
    return privs;
}

void _zprivs_lower(struct zebra_privs_t **privs)
{
    --board_double.raised;
    *privs = nullptr;
    note("LOWER");
}

// Whatever bus is opened, the CPLD is there.
int misc_cpld_i2c_open(int bus)
{
    note(sim::format("OPEN %d", bus));
    const sim::BusAnswer answer = transact(
        cpld_handle, {.op = SimOp::open, .address = 1, .number = board_double.board->description.cpld.bus});
    errno = ENODEV;
    return answer.result == 0 ? cpld_handle : -1;
}

int misc_cpld_i2c_close(int)
{
    note("CLOSE");
    return 0;
}

int misc_cpld_i2c_read_byte(int handle, uint8_t reg, uint8_t *value)
{
    note(sim::format("R %d", reg));
    const sim::BusAnswer answer = transact(handle, {.op = SimOp::cpld_read, .reg = reg});
    if (answer.result != 0)
        return -1;
    *value = static_cast<uint8_t>(answer.value);
    return 0;
}

int misc_cpld_channel_select(int handle, int channel)
{
    note(sim::format("CH %d", channel));
    return transact(handle, {.op = SimOp::select, .number = channel}).result == 0 ? 0 : -1;
}

int misc_cpld_channel_select_end(int handle)
{
    note("CHE");
    return transact(handle, {.op = SimOp::deselect}).result;
}

int misc_i2c_read(int handle, uint8_t address, uint8_t reg, uint8_t *buf, int len, int zero)
{
    EXPECT_EQ(zero, 0);
    note(sim::format("I %x:%d %d", unsigned{address}, reg, len));
    const sim::BusAnswer answer = transact(
        handle,
        {.op = SimOp::i2c_read, .address = address, .reg = reg, .value = static_cast<std::uint32_t>(len)});
    if (answer.result != 0)
        return failed;
    std::ranges::copy(answer.data, buf);
    return len;
}

int misc_i2c_write(int handle, uint8_t address, uint8_t reg, uint8_t *buf, int len, int zero)
{
    EXPECT_EQ(zero, 0);
    EXPECT_EQ(len, 1);
    note(sim::format("W %x:%d=%d", unsigned{address}, reg, buf[0]));
    const std::span out(buf, static_cast<std::size_t>(len));
    const board::SimRequest request{.op = SimOp::i2c_write, .address = address, .reg = reg};
    return transact(handle, request, out).result == 0 ? len : failed;
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
