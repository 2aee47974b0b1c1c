# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(optical_values_test optical_values_test.cpp LIBS transceiver_decode)
diagd_unit_test(sff_text_test sff_text_test.cpp LIBS transceiver_decode)
diagd_unit_test(vendor_text_test vendor_text_test.cpp LIBS transceiver_decode)
