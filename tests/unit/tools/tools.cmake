# SPDX-License-Identifier: GPL-2.0-or-later
# The programs that look after the tree, and what is made of it.  Their own tests are Python, of the distribution and
# not of whoever runs them.

# diagd_tool_test(NAME argument...)
function(diagd_tool_test name)
  add_test(NAME ${name} COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/${name}.py ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${unit_test_timeout_s})
endfunction()

diagd_tool_test(check_layers_test)
diagd_tool_test(documents_test)
diagd_tool_test(draw_front_test)
diagd_tool_test(install_test ${CMAKE_BINARY_DIR})
diagd_tool_test(lint_test)
diagd_tool_test(man_test ${CMAKE_BINARY_DIR})
diagd_tool_test(test_summary_test)
