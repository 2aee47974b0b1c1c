# SPDX-License-Identifier: GPL-2.0-or-later
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(usage_parser_test usage_parser_test.cpp ${diagd_dir}/system_cli/usage_parser.cpp)
diagd_unit_test(clock_parser_test clock_parser_test.cpp ${diagd_dir}/system_cli/clock_parser.cpp)
diagd_unit_test(task_parser_test task_parser_test.cpp ${diagd_dir}/system_cli/task_parser.cpp)
