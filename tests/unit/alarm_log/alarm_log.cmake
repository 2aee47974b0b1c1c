# SPDX-License-Identifier: GPL-2.0-or-later
# The alarm log, room by room.
set(alarm_log_dir ${CMAKE_SOURCE_DIR}/diagd/alarm_log)

diagd_unit_test(alarm_id_test alarm_id_test.cpp ${alarm_log_dir}/catalogue.cpp LIBS platform_headers)

diagd_unit_test(record_chain_test record_chain_test.cpp ${alarm_log_dir}/records/record_chain.cpp
                LIBS platform_headers)
diagd_unit_test(debug_message_test debug_message_test.cpp)

diagd_unit_test(alarm_syntax_test alarm_syntax_test.cpp LIBS platform_headers tqapi tqdatabase)
diagd_unit_test(alarm_action_test alarm_action_test.cpp ${alarm_log_dir}/actions/alarm_action.cpp
                LIBS platform_headers)

diagd_unit_test(threshold_policy_test threshold_policy_test.cpp threshold_parser_test.cpp
                ${alarm_log_dir}/thresholds/threshold_policy.cpp LIBS platform_headers)
diagd_unit_test(thresholds_test thresholds_test.cpp LIBS platform_headers tqapi tqdatabase)

diagd_unit_test(remote_server_test remote_server_test.cpp LIBS platform_headers)
# remote_change.cpp comes as an object, so that the test sees no headers of sysrepo.
diagd_unit_test(alarm_log_database_test alarm_log_database_test.cpp ${alarm_log_dir}/alarm_log_database.cpp
                ${CMAKE_SOURCE_DIR}/diagd/core/state.cpp LIBS platform_headers)
target_sources(alarm_log_database_test PRIVATE $<TARGET_OBJECTS:diagd_alarm_log_sysrepo>)
