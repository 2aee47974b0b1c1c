# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(diagsh_test telnet_decoder_test.cpp script_test.cpp LIBS diagsh_parts)
