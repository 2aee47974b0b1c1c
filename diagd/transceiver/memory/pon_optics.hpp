// SPDX-License-Identifier: GPL-2.0-or-later
// Optical readings of a PON port.
#pragma once

#include <cstdint>

// Reads the module of PON port `port` (from 1) in a session of its own with the board, so the caller must
// hold none. `type` is the module class wanted, 2 GPON or 3 XG-PON: of an SFP-class module the path whose
// wavelength is of that class is read, of a QSFP-class module the first lane, whatever its wavelength.
//
// Outputs: degrees Celsius without sign, volts, milliamperes, dBm, dBm.  Only what the module has is written
// (nothing from a path of another class or without calibration, no RX power from a QSFP-class module), so
// pre-fill them.  A power of zero gives -inf, a negative one NaN.
//
// 0 when the module was reached, -1 when the CPLD cannot be opened or the port holds no reachable module.
extern "C" int pon_intf_optical_transceiver_get(std::uint8_t type, std::uint8_t port, float *temperature_c,
                                                float *voltage_v, float *bias_ma, float *tx_power_dbm,
                                                float *rx_power_dbm) noexcept;
