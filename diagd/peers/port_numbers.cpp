// SPDX-License-Identifier: GPL-2.0-or-later
// Port numbers from the device's port record.  Without the record they stay zero and the daemon says so.
#include "diagd/peers/peers.hpp"

#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"

#include <cstdio>

constinit std::array<std::uint32_t, 8> diag_port{};

namespace {
// Bytes of the port record, in the order of diag_port.
constexpr std::array<std::uint8_t, 8> record_bytes{10, 11, 12, 13, 3, 4, 1, 0};
} // namespace

int diag_port_init()
{
    tq_port_info_t record{};
    if (const int code = database_dev_get_port_info(&g_diagd_db, &record); code < 0) {
        std::puts("diagd port init failed\r");
        diagd::goes_without_if_failed("port numbers", code);
        return -1;
    }
    for (std::size_t i = 0; i < diag_port.size(); ++i)
        diag_port[i] = record.b[record_bytes[i]];
    return 0;
}
