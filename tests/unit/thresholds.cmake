# SPDX-License-Identifier: GPL-2.0-or-later
# Threshold alarms and the samplers behind them.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(usage_parser_test usage_parser_test.cpp ${diagd_dir}/system_cli/usage_parser.cpp)

diagd_unit_test(threshold_judge_test threshold_judge_test.cpp)

diagd_unit_test(threshold_parser_test threshold_parser_test.cpp ${diagd_dir}/alarm_log/threshold_parser.cpp)

diagd_unit_test(threshold_alarms_test threshold_alarms_test.cpp LIBS platform_headers tqapi tqdatabase)
diagd_unit_test(clock_parser_test clock_parser_test.cpp ${diagd_dir}/system_cli/clock_parser.cpp)
diagd_unit_test(task_parser_test task_parser_test.cpp ${diagd_dir}/system_cli/task_parser.cpp)
