# SPDX-License-Identifier: GPL-2.0-or-later
# Configuration database.  The tests run against sysrepo itself, in a repository, a /dev/shm and a mount
# namespace of their own (root is needed for that).
set(database_source ${CMAKE_SOURCE_DIR}/platform/database)

diagd_unit_test(
  database_values_test database/values_test.cpp ${database_source}/model/settings.cpp
  ${database_source}/model/value.cpp ${database_source}/model/xml.cpp LIBS platform_headers)

diagd_unit_test(database_executor_test database/executor_test.cpp ${database_source}/engine/executor.cpp LIBS
                platform_headers)

# Another program that uses the database.
add_executable(database_peer platform/database/peer.cpp)
target_link_libraries(database_peer PRIVATE diagd_warnings tqdatabase deps::sysrepo)
set_target_properties(database_peer PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/unit)

foreach(area settings transactions notices failures away identity file_access defaults late)
  diagd_unit_test(
    database_${area}_test database/${area}_test.cpp database/sandbox.cpp LIBS tqdatabase deps::sysrepo)
  target_compile_definitions(
    database_${area}_test PRIVATE YANG_FOLDER="${CMAKE_BINARY_DIR}/yang" SYSREPO_FOLDER="${DIAGD_DEPS_DIR}/sysrepo"
                                  PEER_PROGRAM="$<TARGET_FILE:database_peer>"
                                  BOARD_FILE="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")
  add_dependencies(database_${area}_test database_peer)
endforeach()
