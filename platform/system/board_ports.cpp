// SPDX-License-Identifier: GPL-2.0-or-later
// What the board description says about ports: the board records, the interface table and the PON mode.
// Failure policy: without a readable description there are no records; the caller decides what that means.
#include "platform/description/board_description.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_board.h"
#include "tq_errno.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

namespace {

using Records = std::array<board_record_t, BOARD_REGIONS>;
std::unique_ptr<const Records> records; // made by board_mmap_init, before there are threads

const board::Board *description() noexcept
{
    try {
        std::string reason;
        return board::this_board(reason);
    } catch (...) {
        return nullptr;
    }
}

void fill_ports(board_port_t (&table)[BOARD_PORT_ENTRIES], const std::vector<board::Port> &ports)
{
    for (const board::Port &port : ports) {
        if (port.number >= BOARD_PORT_ENTRIES)
            continue;
        board_port_t &entry = table[port.number];
        entry.slot = port.slot;
        entry.in_use = port.in_use;
        entry.present = port.present;
    }
}

Records make_records(const board::Board &board)
{
    Records made{};
    for (board_record_t &record : made)
        record.w8 = 1; // not listed: no board for register commands
    for (const board::Record &listed : board.records) {
        if (listed.index >= made.size())
            continue;
        board_record_t &record = made[listed.index];
        record.w8 = listed.word8;
        record.capability = listed.capability;
        record.w108 = listed.word108;
        fill_ports(record.pon1, listed.pon1);
        fill_ports(record.pon2, listed.pon2);
        fill_ports(record.sfp, listed.sfp);
    }
    return made;
}

// Bytes of the port-count record.
constexpr std::size_t gpon_ports = 10;
constexpr std::size_t xgpon_ports = 11;

} // namespace

int board_mmap_init(int regions, int record_size)
{
    return tq::traced(
        "board_mmap_init",
        [&]() -> int {
            if (regions != BOARD_REGIONS || record_size != BOARD_REC_SIZE)
                return TQ_ERR_INVALID;
            const board::Board *board = description();
            if (!board)
                return TQ_ERR_NOT_FOUND;
            try {
                records = std::make_unique<const Records>(make_records(*board));
            } catch (...) {
                return TQ_ERR_NO_MEMORY;
            }
            return TQ_OK;
        },
        tq::arg("regions", regions), tq::arg("size", record_size));
}

int board_mmap_read(int index, void *record)
{
    return tq::traced(
        "board_mmap_read",
        [&]() -> int {
            if (!record || index < 0 || index >= BOARD_REGIONS)
                return TQ_ERR_INVALID;
            if (!records)
                return TQ_ERR_NOT_FOUND;
            std::memcpy(record, &(*records)[static_cast<std::size_t>(index)], sizeof(board_record_t));
            return TQ_OK;
        },
        tq::arg("index", index));
}

// PON ports are numbered from 1 on; a cage that takes both kinds of module counts in both bytes.
int port_init(const tq_port_info_t *info, tq_intf_table_t *intf)
{
    return tq::traced(
        "port_init",
        [&]() -> int {
            if (!info || !intf)
                return TQ_ERR_INVALID;
            *intf = {};
            const std::uint8_t last = std::max(info->b[gpon_ports], info->b[xgpon_ports]);
            if (last >= BOARD_PORT_ENTRIES)
                return TQ_ERR_INVALID;
            intf->first_port = last > 0 ? 1 : 0;
            intf->last_port = last;
            return TQ_OK;
        },
        tq::bytes("info", info, sizeof(tq_port_info_t)));
}

int pon_mode_get(void)
{
    return tq::traced("pon_mode_get", []() -> int {
        const board::Board *board = description();
        return board ? board->pon_mode : TQ_ERR_NOT_FOUND;
    });
}
