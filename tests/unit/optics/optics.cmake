# SPDX-License-Identifier: GPL-2.0-or-later
foreach(test calibration sff8024 sff8472 sff8636 cmis never_shown random_memories)
  diagd_unit_test(optics_${test}_test ${test}_test.cpp LIBS optics)
endforeach()

diagd_unit_test(optics_described_modules_test described_modules_test.cpp LIBS optics sim_modules)
target_compile_definitions(optics_described_modules_test PRIVATE MODULES="${CMAKE_SOURCE_DIR}/sim/modules")

# Through the program.  Memories of real modules are not in the tree: 77 says that there are none to test with.
add_test(NAME optics_program_test COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/program_test.py
                                          $<TARGET_FILE:optics_program>)
add_test(NAME optics_real_modules_test COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/real_modules_test.py
                                               $<TARGET_FILE:optics_program>)
set_tests_properties(optics_program_test optics_real_modules_test PROPERTIES TIMEOUT ${unit_test_timeout_s})
set_tests_properties(optics_real_modules_test PROPERTIES SKIP_RETURN_CODE 77)
