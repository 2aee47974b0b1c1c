/* SPDX-License-Identifier: GPL-2.0-or-later */
/* libutil_phy: Ethernet PHY registers over the MDIO bus of an interface (IEEE 802.3 clause 22). */
#ifndef UTIL_PHY_H
#define UTIL_PHY_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

int misc_phy_read(const char *ifname, uint32_t phy, uint32_t reg, uint32_t *value);
int misc_phy_write(const char *ifname, uint32_t phy, uint32_t reg, uint32_t value);
/* Identity from registers 2 and 3: organisation, model, revision. */
int misc_phy_info(const char *ifname, uint32_t phy, uint32_t *oui, uint8_t *model, uint8_t *rev);
int misc_phy_reset(const char *ifname, uint32_t phy);
int misc_phy_debug_get(void);
int misc_phy_debug_set(int on);

#ifdef __cplusplus
}
#endif
#endif
