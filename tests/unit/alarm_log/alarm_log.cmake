# SPDX-License-Identifier: GPL-2.0-or-later
# The alarm log, room by room.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(record_view_test record_view_test.cpp ${diagd_dir}/alarm_log/records/record_chain.cpp
                ${diagd_dir}/alarm_log/records/record_view.cpp LIBS platform_headers)

diagd_unit_test(debug_message_test debug_message_test.cpp ${diagd_dir}/alarm_log/records/debug_message.cpp)

diagd_unit_test(alarm_grammar_test alarm_grammar_test.cpp LIBS platform_headers tqapi)

diagd_unit_test(alarm_action_test alarm_action_test.cpp ${diagd_dir}/alarm_log/actions/alarm_action.cpp LIBS platform_headers)

diagd_unit_test(alarm_id_test alarm_id_test.cpp ${diagd_dir}/alarm_log/alarm_id.cpp LIBS platform_headers)

diagd_unit_test(remote_server_test remote_server_test.cpp ${diagd_dir}/alarm_log/servers/remote_server.cpp LIBS platform_headers)

# remote_change.cpp comes as an object, so that the test sees no headers of sysrepo.
diagd_unit_test(alarm_log_database_test alarm_log_database_test.cpp ${diagd_dir}/alarm_log/alarm_log_database.cpp
                ${diagd_dir}/core/state.cpp LIBS platform_headers)
target_sources(alarm_log_database_test PRIVATE $<TARGET_OBJECTS:diagd_alarm_log_sysrepo>)

diagd_unit_test(threshold_judge_test threshold_judge_test.cpp)

diagd_unit_test(threshold_parser_test threshold_parser_test.cpp ${diagd_dir}/alarm_log/thresholds/threshold_parser.cpp LIBS platform_headers)

diagd_unit_test(threshold_alarms_test threshold_alarms_test.cpp LIBS platform_headers tqapi tqdatabase)
