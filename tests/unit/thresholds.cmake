# SPDX-License-Identifier: GPL-2.0-or-later
# Threshold alarms.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(threshold_judge_test threshold_judge_test.cpp)

diagd_unit_test(threshold_parser_test threshold_parser_test.cpp ${diagd_dir}/alarm_log/threshold_parser.cpp)

diagd_unit_test(threshold_alarms_test threshold_alarms_test.cpp LIBS platform_headers tqapi tqdatabase)
