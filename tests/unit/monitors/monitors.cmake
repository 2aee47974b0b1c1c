# SPDX-License-Identifier: GPL-2.0-or-later
# What the hardware monitors decide, without threads and clocks.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

# The policy closes the loop with the simulated board's warmth.
diagd_unit_test(fan_policy_test fan_policy_test.cpp LIBS sim_board)

diagd_unit_test(fan_settings_test fan_settings_test.cpp ${diagd_dir}/monitors/fan/fan_settings.cpp)

diagd_unit_test(power_policy_test power_policy_test.cpp)

diagd_unit_test(button_policy_test button_policy_test.cpp)

diagd_unit_test(uevent_parser_test uevent_parser_test.cpp)

