# SPDX-License-Identifier: GPL-2.0-or-later
# What every part of the tree uses.
diagd_unit_test(printable_test printable_test.cpp)
diagd_unit_test(owners_test owners_test.cpp LIBS deps::jsonc)
diagd_unit_test(shell_word_test shell_word_test.cpp)
diagd_unit_test(utf8_test utf8_test.cpp)
diagd_unit_test(json_writer_test json_writer_test.cpp)
diagd_unit_test(whole_file_test whole_file_test.cpp)
