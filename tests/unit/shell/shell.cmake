# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(diagsh_test telnet_decoder_test.cpp commands_test.cpp LIBS diagsh_parts)
# Its records are laid out by libfrr's own header.
diagd_unit_test(live_record_test live_record_test.cpp LIBS diagsh_parts deps::frr)
