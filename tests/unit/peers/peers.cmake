# SPDX-License-Identifier: GPL-2.0-or-later
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(peer_test peer_test.cpp ${diagd_dir}/monitors/reset_button/system_reset.cpp
                ${diagd_dir}/core/privileges.cpp ${diagd_dir}/core/start_report.cpp ${diagd_dir}/core/state.cpp
                LIBS diagd_peers platform_headers deps::frr deps::jsonc)
