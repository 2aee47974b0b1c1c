# SPDX-License-Identifier: GPL-2.0-or-later
# The daemon's frame: start order, core, basic commands, alarm record view.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)
get_directory_property(diagd_units DIRECTORY ${diagd_dir} DEFINITION diagd_units)

# The start order runs for real, everything it calls is recorded; its main gives way to the test's.
set(start_sources ${diagd_dir}/diag_main.cpp ${diagd_dir}/start_steps.cpp ${diagd_dir}/daemon_info.cpp
                  ${diagd_dir}/core/state.cpp ${diagd_dir}/core/privileges.cpp
                  ${diagd_dir}/core/alarm_record.cpp)
diagd_unit_test(start_order_test start_order_test.cpp ${start_sources} LIBS platform_headers deps::frr deps::jsonc)
target_compile_definitions(start_order_test PRIVATE main=diagd_main)

diagd_unit_test(text_test text_test.cpp)

diagd_unit_test(record_view_test record_view_test.cpp ${diagd_dir}/alarm_log/record_chain.cpp
                ${diagd_dir}/alarm_log/record_view.cpp LIBS platform_headers)

diagd_unit_test(debug_message_test debug_message_test.cpp ${diagd_dir}/alarm_log/debug_message.cpp)

diagd_unit_test(alarm_grammar_test alarm_grammar_test.cpp LIBS platform_headers tqapi)

diagd_unit_test(alarm_action_test alarm_action_test.cpp ${diagd_dir}/alarm_log/alarm_action.cpp LIBS platform_headers)

diagd_unit_test(alarm_id_test alarm_id_test.cpp ${diagd_dir}/alarm_log/alarm_id.cpp LIBS platform_headers)

diagd_unit_test(remote_server_test remote_server_test.cpp ${diagd_dir}/alarm_log/remote_server.cpp LIBS platform_headers)

# remote_change.cpp comes as an object, so that the test sees no headers of sysrepo.
diagd_unit_test(alarm_log_database_test alarm_log_database_test.cpp ${diagd_dir}/alarm_log/alarm_log_database.cpp
                ${diagd_dir}/core/state.cpp LIBS platform_headers)
target_sources(alarm_log_database_test PRIVATE $<TARGET_OBJECTS:diagd_alarm_log_sysrepo>)

# All units: the alarm log reaches into several of them.
list(TRANSFORM diagd_units PREPEND diagd_ OUTPUT_VARIABLE unit_targets)
diagd_unit_test(install_order_test install_order_test.cpp LIBS ${unit_targets} diagd_alarm_log_sysrepo
                transceiver_decode platform_headers deps::frr deps::jsonc deps::sysrepo tqapi tqdatabase util_cpld
                util_i2c util_phy)

diagd_unit_test(peer_test peer_test.cpp ${diagd_dir}/core/privileges.cpp ${diagd_dir}/core/state.cpp
                LIBS diagd_peer platform_headers deps::frr deps::jsonc)

# The layers of the tree, and the check itself.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME layers COMMAND Python3::Interpreter ${CMAKE_SOURCE_DIR}/tools/check_layers.py)
add_test(NAME check_layers_test COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/check_layers_test.py)
set_tests_properties(layers check_layers_test PROPERTIES TIMEOUT ${unit_test_timeout_s})
