# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(dump_reader_test dump_reader_test.cpp LIBS module_files)
