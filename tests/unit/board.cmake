# SPDX-License-Identifier: GPL-2.0-or-later
# Board description, bus libraries, module memories and the simulated board.
diagd_unit_test(board_description_test board_description_test.cpp LIBS platform_description)
target_compile_definitions(board_description_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")
