# SPDX-License-Identifier: GPL-2.0-or-later
# The daemon on platform libraries that are not of this build.
add_test(NAME box_libraries_test
         COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/box/box_libraries_test.py ${CMAKE_BINARY_DIR})
set_tests_properties(box_libraries_test PROPERTIES TIMEOUT ${unit_test_timeout_s})

# The binary interface that such libraries share with ours.
add_test(NAME abi_test COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/abi/abi_test.py ${CMAKE_BINARY_DIR})
set_tests_properties(abi_test PROPERTIES TIMEOUT ${unit_test_timeout_s})
