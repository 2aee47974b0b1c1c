# SPDX-License-Identifier: GPL-2.0-or-later
foreach(test calibration sff8472 sff8636 cmis never_shown random_memories)
  diagd_unit_test(optics_${test}_test ${test}_test.cpp LIBS optics)
endforeach()
