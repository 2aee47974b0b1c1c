/* SPDX-License-Identifier: GPL-2.0-or-later */
/* libutil_cpld: the CPLD that fronts the board's I2C buses and front-panel functions. */
#ifndef UTIL_CPLD_H
#define UTIL_CPLD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

extern uint8_t cpld_debug;

/* Stores where the board's CPLD sits: I2C bus number and 7-bit address.  `max_bus` bounds the search.
 * 0, or negative when the board has none. */
int misc_cpld_i2c_init(uint8_t *bus, uint8_t *addr, int max_bus);
/* Opens the CPLD on I2C bus `bus`.  Handle, or negative with errno set. */
int misc_cpld_i2c_open(int bus);
int misc_cpld_i2c_close(int handle);
/* One register.  0, or negative with errno set. */
int misc_cpld_i2c_read_byte(int handle, uint8_t reg, uint8_t *value);
/* Takes a handle of misc_i2c_device_init, too. */
int misc_cpld_i2c_set_byte(int handle, uint8_t reg, uint8_t value);
/* Status byte of the two supplies (bit 0, bit 1: good) / logic version / device type. 0, or negative. */
int misc_cpld_i2c_power_state_get(int handle, uint8_t *state);
int misc_cpld_i2c_logic_version_get(int handle, uint8_t *version);
int misc_cpld_i2c_device_type_get(int handle, uint8_t *type);
/* Tells the board whether its monitors may operate it: 1 on, 0 off.  0, or negative. */
int misc_cpld_oper_set(int on);
/* Connects the handle to module channel `channel` (0-based) of the multiplexer / disconnects it.
 * 0, or negative. */
int misc_cpld_channel_select(int handle, int channel);
int misc_cpld_channel_select_end(int handle);
int misc_cpld_debug_get(void);
int misc_cpld_debug_set(int on);

#ifdef __cplusplus
}
#endif
#endif
