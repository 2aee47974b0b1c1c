/* SPDX-License-Identifier: GPL-2.0-or-later */
/*
 * libtqdatabase: the configuration database, kept by sysrepo.  Every call answers in bounded time: a
 * database that is absent, locked or full gives an error code.
 *
 * A database that goes away while it is open (its repository moved or forbidden, its shared state removed,
 * replaced, cut, or left locked by a program that died) is connected to again, at the next change that is
 * asked for or within two seconds.  Meanwhile
 *   - getters and the XML texts answer with the values last known;
 *   - whatever changes, locks or subscribes gives TQ_ERR_NO_DB, or TQ_ERR_ACCESS, at once; TQ_ERR_TIMEOUT
 *     after at most 2.5 seconds when sysrepo does not answer.  Such a change may come through later, and then
 *     shows; one that was refused does not.
 * Once it is back, subscriptions and the sessions of operators are there again.  A new shared state is given
 * the values last known, but for those that somebody has set in it already.  A change callback hears nothing
 * of what was changed meanwhile.
 *
 * Beyond help: shared memory that somebody writes garbage into, as sysrepo follows pointers that lie there.
 */
#ifndef TQ_DATABASE_H
#define TQ_DATABASE_H

#include "tq_errno.h"
#include "tq_types.h"

#ifdef __cplusplus
extern "C" {
#endif

int database_init(tq_database_t *db); /* negative on failure */
void database_disconnect(tq_database_t *db);
int database_dev_get_port_info(tq_database_t *db, tq_port_info_t *rec);
int database_dev_get_base_info(tq_database_t *db, tq_base_info_t *rec);

/* Hooks called with every vty that opens and closes: the daemon hands over its two, which forward to
 * db_connect_init_with_vty and db_disconnect_free_with_vty. */
typedef int (*tq_db_vty_cb)(struct vty *vty, tq_database_t *db);
void tq_db_cb_init_func(tq_db_vty_cb cb, tq_database_t *db);
void tq_db_cb_free_func(tq_db_vty_cb cb, tq_database_t *db);
int db_connect_init_with_vty(struct vty *vty, tq_database_t *db); /* non-zero = failure */
int db_disconnect_free_with_vty(struct vty *vty, tq_database_t *db);

/* Subscriptions, in sysrepo's manner.  A callback runs on a thread of the database library: it must not log.
 * The tables must last until database_disconnect. */
typedef int (*tq_db_change_cb)(void *session, const char *module, const char *xpath, int event /*1 = change*/,
                               uint32_t request, void *priv);
typedef int (*tq_db_get_cb)(void *session, const char *module, const char *xpath, uint32_t request,
                            void **parent, void *priv);
struct tq_db_entry {
    const char *xpath;
    tq_db_change_cb change;
    tq_db_get_cb get;
}; /* empty entry ends */
struct tq_db_module {
    const char *name;
    const struct tq_db_entry *entries;
};
int db_database_init(tq_database_t *db, const struct tq_db_module *const modules[]); /* NULL-terminated */
int tq_db_get_change_next(void *session, void **iter, int *op /*0 created 1 modified 2 deleted*/,
                          void **old_val, void **new_val); /* non-zero = end */
/* The iterator and the values are sysrepo's: freed with sr_free_change_iter and sr_free_val. */

/* Debug switch of the library (a word of bits) and sysrepo's log function: what the first of each pair
 * returns is handed back with the second, so that a daemon may put its own in between. */
void *db_debug_flag_return(void);
void db_debug_flag_reg(void *flag);
void *sysrepo_debug_func_return(void);
void sysrepo_debug_fun_reg(void *func);
uint32_t db_debug_get(void); /* bit 8: trace the apply lock */

/* Apply lock: held around the change of several values at once.  The wait is bounded. */
int db_apply_lock(tq_database_t *db);
int db_apply_unlock(tq_database_t *db);
int db_apply_changes(void *conn); /* conn of the handle */
int db_discard_changes(void *conn);

/* Plain settings.  Setter: value by address, its width in bytes, apply 1 = at once together with what is
 * pending for the same object, 0 = pending until db_apply_changes.  Getter: buffer and its size in, length
 * out; a pending value is not seen.  Texts are stored with at most `width` characters and read back
 * NUL-terminated. All: 0, or a platform error code (tq_strerror). */
int db_olt_alarm_log_set_remote_server_ipv4_enable(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv4_enable(tq_database_t *, void *, int *len);
int db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr(tq_database_t *, void *, int *len);
int db_olt_alarm_log_del_remote_server_ipv4_ipv4_addr(tq_database_t *);
int db_olt_alarm_log_set_remote_server_ipv4_port(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv4_port(tq_database_t *, void *, int *len);
int db_olt_alarm_log_del_remote_server_ipv4_port(tq_database_t *);
int db_olt_alarm_log_set_remote_server_ipv6_enable(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv6_enable(tq_database_t *, void *, int *len);
int db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr(tq_database_t *, void *, int *len);
int db_olt_alarm_log_del_remote_server_ipv6_ipv6_addr(tq_database_t *);
int db_olt_alarm_log_set_remote_server_ipv6_port(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_remote_server_ipv6_port(tq_database_t *, void *, int *len);
int db_olt_alarm_log_del_remote_server_ipv6_port(tq_database_t *);
int db_olt_alarm_log_set_alarm_log_flash_level(tq_database_t *, const void *, int width, int apply);
int db_olt_alarm_log_get_alarm_log_flash_level(tq_database_t *, void *, int *len);
int db_olt_ntp_set_ntp_diff_time(tq_database_t *, const void *, int width /*4*/, int apply /*1*/);

/* Per alarm.  Order of the arguments: id, db, value, size, apply; getter: id, db, result, in/out length. */
int db_olt_alarm_log_set_alarm_name(uint16_t id, tq_database_t *, const void *, int size /*32*/, int apply);
int db_olt_alarm_log_set_alarm_desc(uint16_t id, tq_database_t *, const void *, int size /*32*/, int apply);
int db_olt_alarm_log_set_alarm_type(uint16_t id, tq_database_t *, const void *, int size /*16*/, int apply);
int db_olt_alarm_log_set_alarm_class(uint16_t id, tq_database_t *, const void *, int size /*8*/, int apply);
int db_olt_alarm_log_set_alarm_level(uint16_t id, tq_database_t *, const void *, int size /*8 or 16*/,
                                     int apply);
int db_olt_alarm_log_get_alarm_level(uint16_t id, tq_database_t *, void *, int *len /*16*/);
int db_olt_alarm_log_set_action_print(uint16_t id, tq_database_t *, const void *, int size /*1 or -1*/,
                                      int apply);
int db_olt_alarm_log_set_action_record(uint16_t id, tq_database_t *, const void *, int size, int apply);
int db_olt_alarm_log_set_action_trap(uint16_t id, tq_database_t *, const void *, int size, int apply);
int db_olt_alarm_log_set_action_remote(uint16_t id, tq_database_t *, const void *, int size, int apply);
int db_olt_alarm_log_get_action_print(uint16_t id, tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_action_record(uint16_t id, tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_action_trap(uint16_t id, tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_action_remote(uint16_t id, tq_database_t *, void *, int *len);

/* Configuration as XML text, one element a line, two spaces of indentation; the caller frees it with free(3).
 * What was never set has no element; nothing set at all gives one empty <alarm-log .../> element.
 *
 *   <alarm-log xmlns="urn:norvale:yang:olt-alarm-log">     <alarm-log xmlns="urn:norvale:yang:olt-alarm-log">
 *     <alarm>                                                <threshold>
 *       <id>0</id>                                             <temp-high>
 *       <name>fan</name>                                         <alarm-threshold>70</alarm-threshold>
 *       <desc>...</desc>                                         <clear-threshold>65</clear-threshold>
 *       <type>equipment</type>                                 </temp-high>
 *       <class>alarm</class>                                   ... temp-low, cpu-usage-high, mem-usage-high
 *       <level>major</level>                                 </threshold>
 *       <action>                                           </alarm-log>
 *         <print>true</print>
 *         ... record, trap, remote: true or false
 *       </action>
 *     </alarm>
 *     ... ascending ids
 *   </alarm-log>
 */
int db_olt_alarm_log_show_xml_alarm_id(tq_database_t *, char **xml);  /* negative on failure */
int db_olt_alarm_log_show_xml_threshold(tq_database_t *, char **xml); /* 0 on success */

/* board thresholds */
int db_olt_alarm_log_get_temp_high_alarm_threshold(tq_database_t *, void * /*32*/, int *len);
int db_olt_alarm_log_get_temp_high_clear_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_temp_low_alarm_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_temp_low_clear_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_cpu_usage_high_alarm_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_cpu_usage_high_clear_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_mem_usage_high_alarm_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_get_mem_usage_high_clear_threshold(tq_database_t *, void *, int *len);
int db_olt_alarm_log_del_temp_high_alarm_threshold(tq_database_t *);
int db_olt_alarm_log_del_temp_high_clear_threshold(tq_database_t *);
int db_olt_alarm_log_del_temp_low_alarm_threshold(tq_database_t *);
int db_olt_alarm_log_del_temp_low_clear_threshold(tq_database_t *);
int db_olt_alarm_log_del_cpu_usage_high_alarm_threshold(tq_database_t *);
int db_olt_alarm_log_del_cpu_usage_high_clear_threshold(tq_database_t *);
int db_olt_alarm_log_del_mem_usage_high_alarm_threshold(tq_database_t *);
int db_olt_alarm_log_del_mem_usage_high_clear_threshold(tq_database_t *);
int db_olt_alarm_log_set_temp_high_alarm_threshold(tq_database_t *, const void *empty, int width, int apply);
int db_olt_alarm_log_set_temp_high_clear_threshold(tq_database_t *, const void *empty, int width, int apply);

#ifdef __cplusplus
}
#endif
#endif
