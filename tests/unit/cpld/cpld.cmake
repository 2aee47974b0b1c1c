# SPDX-License-Identifier: GPL-2.0-or-later
# The CPLD: register commands and the upgrade of its logic.
set(cpld_dir ${CMAKE_SOURCE_DIR}/diagd/cpld)


diagd_unit_test(image_file_test image_file_test.cpp ${cpld_dir}/image_file.cpp LIBS deps::frr deps::jsonc)

diagd_unit_test(shell_runner_test shell_runner_test.cpp ${cpld_dir}/shell_runner.cpp
                ${CMAKE_SOURCE_DIR}/diagd/core/child_programs.cpp)

diagd_unit_test(image_fetch_test image_fetch_test.cpp ${cpld_dir}/image_fetch.cpp ${cpld_dir}/image_file.cpp
                LIBS platform_headers deps::frr
                deps::jsonc)

set(core_dir ${CMAKE_SOURCE_DIR}/diagd/core)
set(board_dir ${CMAKE_SOURCE_DIR}/diagd/board)
diagd_unit_test(image_program_test image_program_test.cpp ${cpld_dir}/image_program.cpp ${cpld_dir}/image_file.cpp
                ${board_dir}/session.cpp
                ${board_dir}/semaphore.cpp ${core_dir}/privileges.cpp ${core_dir}/start_report.cpp
                ${core_dir}/state.cpp
                LIBS platform_headers deps::frr deps::jsonc)

diagd_unit_test(port_switch_test port_switch_test.cpp ${cpld_dir}/port_switch.cpp ${board_dir}/records.cpp
                LIBS platform_headers)
