# SPDX-License-Identifier: GPL-2.0-or-later
# What every part of the tree uses.
diagd_unit_test(printable_test printable_test.cpp)
