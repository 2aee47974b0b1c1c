# SPDX-License-Identifier: GPL-2.0-or-later
# Board description, buses and the libraries on top of them.
diagd_unit_test(board_description_test description/board_description_test.cpp LIBS platform_description)
target_compile_definitions(board_description_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")

diagd_unit_test(board_check_test description/board_check_test.cpp LIBS platform_description)
target_compile_definitions(board_check_test PRIVATE BOARDS="${CMAKE_SOURCE_DIR}/sim/boards")

diagd_unit_test(bus_linux_test board/bus_linux_test.cpp LIBS util_cpld util_i2c util_phy platform_bus)
target_compile_definitions(bus_linux_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")

diagd_board_test(board_libraries_test board/board_libraries_test.cpp LIBS util_cpld util_i2c util_phy)
diagd_board_test(phy_library_test board/phy_library_test.cpp LIBS util_cpld util_i2c util_phy)
