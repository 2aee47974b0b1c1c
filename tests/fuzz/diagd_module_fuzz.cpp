// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's own way through a module's memory, from the bus to the displays: one module in every cage.
// Input: presence registers, which reads fail, board record; then memory at 0x50, 0x51, 0x58, 0x59, 256 bytes
// each.
#include "diagd/board/semaphore.hpp"
#include "diagd/core/command.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/idprom.hpp"
#include "diagd/transceiver/memory/module_listing.hpp"
#include "diagd/transceiver/memory/optical_readout.hpp"
#include "diagd/transceiver/memory/pon_optics.hpp"
#include "diagd/transceiver/show/idprom_text.hpp"
#include "diagd/transceiver/show/json.hpp"
#include "diagd/transceiver/show/text.hpp"
#include "tests/fuzz/fuzz.hpp"

#include "tq_api.h"
#include "util_cpld.h"
#include "util_i2c.h"

#include <cstring>

namespace {

constexpr int cpld_handle = 7;
constexpr std::size_t memory_size = 256;

struct Module {
    std::uint8_t presence = 0;
    std::uint8_t failing = 0; // reads whose register has one of these bits
    std::array<std::array<std::uint8_t, memory_size>, 4> memory{};
    std::array<std::uint8_t, sizeof(board_record_t)> record{};
    int holders = 0, raised = 0;
};
Module module;

void read_input(fuzz::Input &input)
{
    module = {};
    module.presence = input.u8();
    module.failing = input.u8();
    board_record_t record{};
    record.capability = 0x18;
    record.w108 = 6;
    const unsigned ports = input.u16();
    for (unsigned k = 0; k < 8; ++k) {
        record.pon1[k].in_use = ports >> k & 1;
        record.sfp[k].in_use = record.sfp[k].present = static_cast<std::uint8_t>(ports >> (8 + k) & 1);
    }
    std::memcpy(module.record.data(), &record, sizeof record);
    for (auto &memory : module.memory)
        std::ranges::copy(input.take(memory_size), memory.begin());
}

void show_everything()
{
    using diagd::IdpromScope;
    for (const auto scope : {IdpromScope::all, IdpromScope::vendor, IdpromScope::manufacture})
        if (const auto idprom = diagd::read_idprom(cpld_handle, scope))
            fuzz::expect_harmless(diagd::idprom_text(*idprom, scope));
    for (const auto scope :
         {diagd::ReadScope::family, diagd::ReadScope::values, diagd::ReadScope::values_and_identity})
        if (const auto listing = diagd::read_module_listing("fuzz", scope)) {
            fuzz::expect_harmless(diagd::diagnosis_text(*listing));
            fuzz::expect_harmless(diagd::threshold_text(*listing));
            const diagd::Json json = diagd::module_listing_json(*listing);
            fuzz::expect_harmless(
                base::printable_json(json_object_to_json_string_ext(json.get(), JSON_C_TO_STRING_PRETTY)));
        }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    read_input(input);
    show_everything();
    std::array<float, 5> values{};
    for (const std::uint8_t type : {std::uint8_t{2}, std::uint8_t{3}})
        pon_intf_optical_transceiver_get(type, 1, &values[0], &values[1], &values[2], &values[3], &values[4]);
    diagd::OpticalReadout readout{};
    for (const auto path : {diagd::first_path, diagd::second_path})
        diagd::read_optical_path(cpld_handle, path, readout);
    std::array<char, 64> type;
    type.fill('x');
    if (transceiver_type_get(cpld_handle, type.data(), type.size()) == 0)
        fuzz::expect(std::memchr(type.data(), '\0', type.size()) != nullptr, "a type is a text");
    fuzz::expect(module.holders == 0 && module.raised == 0, "semaphore and privileges are given back");
    return 0;
}

// The platform, libfrr and the rest of the daemon around the unit.
diagd::Semaphore::Semaphore(int id) noexcept : id_(id), held_(semaphore_p(id) >= 0) {}

extern "C" {

std::uint8_t cpld_debug = 0;
int alarm_log_sem_id = -1;

int semaphore_p(int)
{
    fuzz::expect(module.holders++ == 0, "the semaphore is not taken twice");
    return 0;
}

int semaphore_v(int)
{
    --module.holders;
    return 0;
}

struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *)
{
    ++module.raised;
    return privs;
}

void _zprivs_lower(struct zebra_privs_t **privs)
{
    --module.raised;
    *privs = nullptr;
}

int misc_cpld_i2c_open(int)
{
    return cpld_handle;
}

int misc_cpld_i2c_close(int)
{
    return 0;
}

int misc_cpld_i2c_read_byte(int, uint8_t, uint8_t *value)
{
    *value = module.presence;
    return 0;
}

int misc_cpld_i2c_set_byte(int, uint8_t, uint8_t)
{
    return 0;
}

int misc_cpld_channel_select(int, int)
{
    return 0;
}

int misc_cpld_channel_select_end(int)
{
    return 0;
}

int misc_i2c_read(int, uint8_t address, uint8_t reg, uint8_t *buf, int len, int)
{
    if ((reg & module.failing) != 0)
        return -1;
    constexpr std::array<std::uint8_t, 4> addresses = {0x50, 0x51, 0x58, 0x59};
    const auto *const at = std::ranges::find(addresses, address);
    if (at == addresses.end())
        return -1;
    const auto &memory = module.memory[static_cast<std::size_t>(at - addresses.begin())];
    for (int i = 0; i < len; ++i)
        buf[i] = memory[(static_cast<unsigned>(reg) + static_cast<unsigned>(i)) % memory_size];
    return len;
}

int misc_i2c_write(int, uint8_t, uint8_t, uint8_t *, int len, int)
{
    return len;
}

int board_mmap_read(int index, void *record)
{
    if (index != 0)
        return -1;
    std::ranges::copy(module.record, static_cast<std::uint8_t *>(record));
    return 0;
}

} // extern "C"
