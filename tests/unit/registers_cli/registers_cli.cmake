# SPDX-License-Identifier: GPL-2.0-or-later
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(register_commands_test register_commands_test.cpp ${diagd_dir}/registers_cli/phy_cli.cpp
                ${diagd_dir}/registers_cli/i2c_cli.cpp ${diagd_dir}/core/privileges.cpp
                LIBS platform_headers deps::frr deps::jsonc)
