# SPDX-License-Identifier: GPL-2.0-or-later
# The daemon's frame: start order, install order, core.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)
get_directory_property(diagd_units DIRECTORY ${diagd_dir} DEFINITION diagd_units)

# The start order runs for real, everything it calls is recorded; its main gives way to the test's.
set(start_sources ${diagd_dir}/diag_main.cpp ${diagd_dir}/start_steps.cpp ${diagd_dir}/daemon_info.cpp
                  ${diagd_dir}/core/state.cpp ${diagd_dir}/core/privileges.cpp
                  ${diagd_dir}/core/alarm_record.cpp ${diagd_dir}/core/configuration_reading.cpp
                  ${diagd_dir}/core/start_report.cpp)
diagd_unit_test(start_order_test start_order_test.cpp ${start_sources} LIBS platform_headers deps::frr deps::jsonc)
target_compile_definitions(start_order_test PRIVATE main=diagd_main)

diagd_unit_test(alarm_record_test alarm_record_test.cpp ${diagd_dir}/core/alarm_record.cpp ${diagd_dir}/core/state.cpp
                LIBS platform_headers)

diagd_unit_test(start_report_test start_report_test.cpp ${diagd_dir}/core/start_report.cpp
                LIBS platform_headers deps::frr deps::jsonc)

diagd_unit_test(child_programs_test child_programs_test.cpp ${diagd_dir}/core/child_programs.cpp)

diagd_unit_test(loop_stack_test loop_stack_test.cpp ${diagd_dir}/core/loop_stack.cpp)

diagd_unit_test(leftovers_test leftovers_test.cpp ${diagd_dir}/leftovers.cpp LIBS platform_headers deps::frr
                deps::jsonc)

diagd_unit_test(text_test text_test.cpp)

# All units: the alarm log reaches into several of them.
list(TRANSFORM diagd_units PREPEND diagd_ OUTPUT_VARIABLE unit_targets)
diagd_unit_test(install_order_test install_order_test.cpp command_table.cpp LIBS ${unit_targets} diagd_alarm_log_sysrepo
                transceiver_decode platform_headers deps::frr deps::jsonc deps::sysrepo tqapi tqdatabase util_cpld
                util_i2c util_phy)
target_compile_definitions(install_order_test PRIVATE COMMAND_TABLE="${CMAKE_SOURCE_DIR}/tests/commands.txt")
