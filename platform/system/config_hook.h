/* SPDX-License-Identifier: GPL-2.0-or-later */
/* The moment at which libfrr has read a daemon's configuration, which names the log file. */
#ifndef CONFIG_HOOK_H
#define CONFIG_HOOK_H

#ifdef __cplusplus
extern "C" {
#endif

/* Has `done` called then, by the event loop; never in a program that reads none. */
void tq_config_hook_register(void (*done)(void));

#ifdef __cplusplus
}
#endif
#endif
