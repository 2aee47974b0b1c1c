# SPDX-License-Identifier: GPL-2.0-or-later
# The layers of the tree, and the check itself.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME layers COMMAND Python3::Interpreter ${CMAKE_SOURCE_DIR}/tools/check_layers.py)
add_test(NAME check_layers_test COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/check_layers_test.py)
set_tests_properties(layers check_layers_test PROPERTIES TIMEOUT ${unit_test_timeout_s})
