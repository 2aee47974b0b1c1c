# SPDX-License-Identifier: GPL-2.0-or-later
# The programs that look after the tree.  Their own tests are Python, of the distribution and not of whoever runs them.
set(python /usr/bin/python3)
foreach(test check_layers_test lint_test test_summary_test)
  add_test(NAME ${test} COMMAND ${python} -B ${CMAKE_CURRENT_LIST_DIR}/${test}.py)
  set_tests_properties(${test} PROPERTIES TIMEOUT ${unit_test_timeout_s})
endforeach()
