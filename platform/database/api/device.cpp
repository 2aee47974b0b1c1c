// SPDX-License-Identifier: GPL-2.0-or-later
// Data of the device that the database hands out: they come from the description of the board.
// Failure policy: a description that is absent or wrong gives TQ_ERR_NOT_FOUND and leaves the record as it
// is.
#include "platform/database/api/api.hpp"
#include "platform/description/board_description.hpp"

#include <algorithm>
#include <span>

using namespace tq::db;

namespace {

// One text of the record: cut to its place, always NUL-terminated.
void put(std::span<char> place, const std::string &text)
{
    const std::size_t length = std::min(text.size(), place.size() - 1);
    std::fill(std::copy_n(text.begin(), length, place.begin()), place.end(), '\0');
}

template <class Fill>
int with_board(const void *record, Fill fill)
{
    std::string error;
    const board::Board *board = record ? board::this_board(error) : nullptr;
    if (!board)
        return record ? TQ_ERR_NOT_FOUND : TQ_ERR_INVALID;
    fill(*board);
    return TQ_OK;
}

} // namespace

int database_dev_get_port_info(tq_database_t *db, tq_port_info_t *rec)
{
    return exported(
        "database_dev_get_port_info", db,
        [&](Database &) {
            return with_board(rec, [&](const board::Board &board) {
                std::copy(board.port_record.begin(), board.port_record.end(), rec->b);
            });
        },
        tq::out_bytes("rec", rec, sizeof *rec));
}

int database_dev_get_base_info(tq_database_t *db, tq_base_info_t *rec)
{
    return exported("database_dev_get_base_info", db, [&](Database &) {
        return with_board(rec, [&](const board::Board &board) {
            *rec = {};
            put(rec->device_model, board.base.device_model);
            put(rec->device_mac, board.base.device_mac);
            put(rec->serial_number, board.base.serial_number);
            put(rec->hardware_version, board.base.hardware_version);
            put(rec->software_version, board.base.software_version);
            put(rec->software_created, board.base.software_created);
            put(rec->copyright, board.base.copyright);
        });
    });
}
