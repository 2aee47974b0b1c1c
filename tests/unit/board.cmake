# SPDX-License-Identifier: GPL-2.0-or-later
# Board description, bus libraries, module memories and the simulated board.
diagd_unit_test(board_description_test board_description_test.cpp LIBS platform_description)
target_compile_definitions(board_description_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")

diagd_unit_test(bus_linux_test bus_linux_test.cpp LIBS util_cpld util_i2c util_phy platform_bus)
target_compile_definitions(bus_linux_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")

# A board of its own for each of these.
function(diagd_board_test name)
  diagd_unit_test(${ARGV} sim_client)
  target_compile_definitions(
    ${name} PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json" BOARDSIM="$<TARGET_FILE:boardsim>"
                    MODULES="${CMAKE_SOURCE_DIR}/sim/modules")
  add_dependencies(${name} boardsim)
endfunction()

diagd_board_test(board_libraries_test board_libraries_test.cpp LIBS util_cpld util_i2c util_phy)
diagd_board_test(module_generator_test module_generator_test.cpp LIBS)
diagd_board_test(simulated_board_test simulated_board_test.cpp LIBS sim_board)
diagd_board_test(phys_test phys_test.cpp LIBS sim_board)
diagd_board_test(i2c_devices_test i2c_devices_test.cpp LIBS sim_board)
diagd_board_test(board_control_test board_control_test.cpp LIBS)
diagd_board_test(gpio_sim_test gpio_sim_test.cpp LIBS gpio_sim)
