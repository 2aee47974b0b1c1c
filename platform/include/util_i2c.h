/* SPDX-License-Identifier: GPL-2.0-or-later */
/* libutil_i2c: raw access to devices on the board's I2C buses. */
#ifndef UTIL_I2C_H
#define UTIL_I2C_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Opens I2C bus `bus`.  File descriptor (closed with close(2)), or negative with errno set. */
int misc_i2c_device_init(int bus);
/* Reads `len` bytes from register `reg` on of the device with 7-bit address `addr7`, in one transaction; a
 * read wraps inside the device's 256-byte page.  On a CPLD handle the access goes to the module on the
 * selected channel; with none selected, to nothing.  `zero` is 0.  0 or more, or negative. */
int misc_i2c_read(int handle, uint8_t addr7, uint8_t reg, uint8_t *buf, int len, int zero);
int misc_i2c_write(int handle, uint8_t addr7, uint8_t reg, uint8_t *buf, int len, int zero);
int misc_i2c_debug_get(void);
int misc_i2c_debug_set(int on);

#ifdef __cplusplus
}
#endif
#endif
