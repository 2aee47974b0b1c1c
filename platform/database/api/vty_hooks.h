/* SPDX-License-Identifier: GPL-2.0-or-later */
/* Hears of every session of an operator: after it opened, and before it closes with its vty still valid. */
#ifndef TQ_VTY_HOOKS_H
#define TQ_VTY_HOOKS_H

struct vty;

#ifdef __cplusplus
extern "C" {
#endif

void tq_vty_hooks_register(void (*opened)(struct vty *vty), void (*closed)(struct vty *vty));

#ifdef __cplusplus
}
#endif
#endif
