# SPDX-License-Identifier: GPL-2.0-or-later
# libtqapi.  Its parts are linked with a double of the few database getters that they call; tests that use the
# box's names for shared memory and semaphores do so in namespaces of their own (private_ipc.hpp).
function(diagd_api_test name)
  diagd_unit_test(${name} ${ARGN} database_getters_double.cpp LIBS tqapi_parts)
endfunction()

diagd_api_test(alarm_catalogue_test alarm_catalogue_test.cpp)
diagd_api_test(alarm_chain_test alarm_chain_test.cpp)
diagd_api_test(alarm_chain_kill_test alarm_chain_kill_test.cpp)
diagd_api_test(alarm_remote_test alarm_remote_test.cpp)
diagd_api_test(alarm_store_test alarm_store_test.cpp private_ipc.cpp)
diagd_api_test(alarm_xml_test alarm_xml_test.cpp)
diagd_api_test(cli_log_test cli_log_test.cpp private_ipc.cpp)
diagd_api_test(syslog_message_test syslog_message_test.cpp)
diagd_api_test(trap_message_test trap_message_test.cpp)
diagd_api_test(trap_sinks_test trap_sinks_test.cpp)
diagd_api_test(udp_receiver_test udp_receiver_test.cpp)
diagd_api_test(semaphore_test semaphore_test.cpp private_ipc.cpp)
diagd_api_test(parameters_test parameters_test.cpp)
diagd_api_test(board_ports_test board_ports_test.cpp)
target_compile_definitions(board_ports_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")
diagd_api_test(shell_test shell_test.cpp)
diagd_api_test(api_trace_test api_trace_test.cpp private_ipc.cpp)
