/* SPDX-License-Identifier: GPL-2.0-or-later */
/*
 * libtqapi: semaphores, the shared alarm store and its catalogue, shell runners, port tables and the
 * service-bus client.
 */
#ifndef TQ_API_H
#define TQ_API_H

#include "tq_board.h"
#include "tq_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* System V semaphores, for root and members of the box's group.  A process that dies while holding one gives
 * it back. */

/* Creates or opens the one-member semaphore set of `key` and stores its identifier.  A set that root or the
 * daemon's user made is taken as it stands, with access for the group alone; a new one, which only these two
 * make, gets the value `count`.  One that anybody else made is removed by root and EPERM for others.  0, or
 * negative with errno set. */
int semaphore_create(int *id, int key, int count);
/* Takes / gives back the semaphore; waits as long as it takes, and names who has it in the log when that is
 * long: the thread must be one that libfrr knows.  0, or negative with errno set. Taking the alarm store's
 * semaphore also repairs what a killed writer left half done. */
int semaphore_p(int id);
int semaphore_v(int id);

/* Text of a platform error code; never NULL. */
const char *tq_strerror(int code);

/* Runs a shell line with no input and writes what it prints (standard output and error) to the vty, line by
 * line.  While it waits for more, the operator sees what there is.  For tools that show something: one that
 * takes more than a minute, or prints more than 16 MiB, is killed with all it started.  Returns the wait
 * status, or -1 when it cannot be started. */
int system_cmd(struct vty *vty, const char *line);
/* Runs a shell line and waits for it, as long as it takes.  Returns the wait status, or -1 when it cannot be
 * started. */
int pal_system(const char *line);

/* Builds the interface table from the port record: PON ports 1 to the larger of the two numbers.  0, or
 * negative (table empty) when an argument is NULL or there are more ports than a board can have. */
int port_init(const tq_port_info_t *info, tq_intf_table_t *intf);
/* PON mode of the OLT as the board description names it: 1 GPON, 2 XG-PON, 3 combo.  Negative without a
 * description. */
int pon_mode_get(void);
/* Argument that follows the keyword of the syntax in a parsed command, as it was typed; NULL when the
 * keyword is absent.  It lives as long as the command line. */
const char *cmd_parase_parameters(int argc, struct cmd_token **argv, const char *keyword);

/* Alarm store and catalogue. */
extern int alarm_log_sem_id;
extern tq_alarm_store_t *tq_alarm_log_shm_pointer; /* NULL until fetched */
extern tq_alarm_info_t tq_alarm_log_info[TQ_ALARM_COUNT];
extern char tq_alarm_log_level[TQ_ALARM_LEVEL_COUNT][16];
extern char tq_alarm_log_type[][16];
extern char tq_alarm_log_class[][8];

/* Creates or opens the store's semaphore and makes the store ready.  0, or negative with errno set. */
int tq_alarm_log_init(void);
/* Attaches the store (made when there is none) and returns its address; NULL with errno set on failure.
 * A store of another size or magic is refused with EPROTO.  The caller holds alarm_log_sem_id.  The address
 * stays good while the process lives: when the store is deleted and made again, the new one appears there at
 * the next semaphore_p of alarm_log_sem_id. */
tq_alarm_store_t *tq_alarm_log_get_shm_pointer(void);
/* Removes one record from the chain.  The caller holds alarm_log_sem_id.  0, or negative when `slot` is no
 * slot of this store. */
int tq_alarm_log_delete_by_index(tq_alarm_store_t *store, tq_alarm_slot_t *slot0, tq_alarm_slot_t *slot);
/* 0..7 for a level keyword, 8 for anything else. */
int get_level_num_by_string(const char *keyword);
/* Lowest alarm id of that name, -1 when there is none. */
int get_alarm_id_by_name(const char *name);
/* Level of the flash file: 0..7, 8 when none is set, -1 on error. */
int get_flash_level_from_database(tq_database_t *db);
/* Files an alarm: acts on its print, record, trap and remote switches.  Takes alarm_log_sem_id itself; the
 * thread must be one that libfrr knows.  Nothing waits for the network: what cannot leave at once is an
 * error, and said in the log when that begins and ends.  A record keeps the first 127 characters of the
 * message.  An id that the catalogue does not have is recorded and printed at level info. 0, or a platform
 * error code when an action failed; one failed action never keeps the others. */
int cli_log(tq_database_t *db, tq_alarm_req_t *req, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
/* Reads the per-alarm configuration XML into the array. */
int parsing_alarm_list_xml_data(const char *xml, tq_alarm_cfg_t recs[TQ_ALARM_COUNT]);

/* Service bus client.  A message is: u16 length of the whole, u16 command, body; network order.  The client
 * connects from the event loop, and again after the bus was away. */
struct sclient {
    struct stream *ibuf, *obuf; /* obuf: the message to send */
    /* Called by the event loop with each message, its read position at the body.  The result is not used. */
    int (*message_handler)(struct sclient *, struct stream *);
    void *priv;
};
/* NULL when there is no memory or no event loop.  A client is not given back. */
struct sclient *sclient_new(struct thread_master *m, uint32_t instance, struct zebra_privs_t *privs);
/* Starts looking for the bus, as a client of that type and instance. */
void sclient_init(struct sclient *c, int client_type, uint16_t instance, struct zebra_privs_t *privs);
/* Appends the header of a message without a body; with one, its length is to be written at the start. */
void sclient_create_header(struct stream *s, uint16_t command);
/* Sends what is in obuf, from any thread and without waiting.  0, or -1 when the bus is away. */
int sclient_send_message(struct sclient *c);

#ifdef __cplusplus
}
#endif
#endif
