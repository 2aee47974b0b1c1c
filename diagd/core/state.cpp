// SPDX-License-Identifier: GPL-2.0-or-later
// The process-wide objects.
#include "diagd/core/state.hpp"

constinit diagd::State diagm{};
constinit tq_database_t g_diagd_db{};
constinit tq_port_info_t port_info{};
constinit tq_intf_table_t intf{};
