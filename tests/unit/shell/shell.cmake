# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(diagsh_test alarm_actions_test.cpp fan_reason_test.cpp find_test.cpp key_map_test.cpp layout_test.cpp nodes_test.cpp
                port_modules_test.cpp session_line_test.cpp telnet_decoder_test.cpp viewer_test.cpp
                word_columns_test.cpp LIBS diagsh_parts)
# Its records are laid out by libfrr's own header.
diagd_unit_test(live_record_test live_record_test.cpp LIBS diagsh_parts deps::frr)
