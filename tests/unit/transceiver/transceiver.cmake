# SPDX-License-Identifier: GPL-2.0-or-later
diagd_unit_test(optical_values_test optical_values_test.cpp LIBS transceiver_decode)
diagd_unit_test(sff_text_test sff_text_test.cpp LIBS transceiver_decode)

# The unit as it is, on the simulated board below recording doubles of the platform libraries.
foreach(test access commands pon_optics module_listing show_text show_json idprom idprom_text rssi_txdis
        optical_readout)
  diagd_unit_test(transceiver_${test}_test ${test}_test.cpp module_board_double.cpp
                  LIBS diagd_transceiver diagd_board diagd_core sim_board platform_headers deps::frr deps::jsonc)
  target_compile_definitions(transceiver_${test}_test PRIVATE OLT8_JSON="${CMAKE_SOURCE_DIR}/sim/boards/olt8.json")
endforeach()
