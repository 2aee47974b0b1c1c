/* SPDX-License-Identifier: GPL-2.0-or-later */
/*
 * Types shared by the platform libraries: database handle, alarm store and catalogue layouts,
 * port and base-information records.  Layouts marked "fixed" are shared memory or wire formats that
 * other programs of the box read, too.
 */
#ifndef TQ_TYPES_H
#define TQ_TYPES_H

#include "tq_alarms.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define TQ_STATIC_ASSERT static_assert
extern "C" {
#else
#define TQ_STATIC_ASSERT _Static_assert
#endif

struct vty;
struct stream;
struct thread_master;
struct zebra_privs_t;
struct cmd_token;

/* Handle of the configuration database.  `conn` is what db_apply_changes and db_discard_changes take;
 * the rest belongs to the library. */
typedef struct tq_database {
    void *conn;
    void *priv[15];
} tq_database_t;

enum {
    TQ_ALARM_CAPACITY = 4096, /* records that the store holds before the oldest is replaced */
    TQ_ALARM_LEVEL_COUNT = 8, /* debug .. emerg */
    TQ_ALARM_LEVEL_ALL = 8,   /* "all": no level given */
    TQ_ALARM_MESSAGE_SIZE = 128,
};
#define TQ_ALARM_NONE 0xFFFFFFFFu /* index of no slot */

/* Bits of an alarm's default actions. */
enum { TQ_ACTION_PRINT = 1, TQ_ACTION_RECORD = 2, TQ_ACTION_TRAP = 4, TQ_ACTION_REMOTE = 8 };

/* Alarm request handed to cli_log, fixed layout. */
typedef struct tq_alarm_req {
    uint16_t alarm_id;
    uint16_t pad0;
    uint32_t uplink_port;
    uint32_t pon;
    uint32_t onu;
    uint32_t onu_port;
    uint8_t mac[6]; /* text as typed, not converted */
    uint8_t pad1[2];
    uint32_t state;
} tq_alarm_req_t;
TQ_STATIC_ASSERT(sizeof(tq_alarm_req_t) == 32, "alarm request is 32 bytes");
TQ_STATIC_ASSERT(offsetof(tq_alarm_req_t, mac) == 20, "mac at 20");
TQ_STATIC_ASSERT(offsetof(tq_alarm_req_t, state) == 28, "state at 28");

/* One record of the shared alarm store, fixed layout.  The time is stored as it is printed:
 * month 1..12, full year. */
typedef struct tq_alarm_slot {
    uint8_t valid;
    uint8_t level;
    uint16_t alarm_id;
    uint32_t prev;
    uint32_t next;
    uint8_t lib[4];
    int32_t sec, min, hour, mday, mon, year;
    uint8_t tm_rest[32];
    char message[TQ_ALARM_MESSAGE_SIZE];
} tq_alarm_slot_t;
TQ_STATIC_ASSERT(sizeof(tq_alarm_slot_t) == 200, "alarm slot is 200 bytes");
TQ_STATIC_ASSERT(offsetof(tq_alarm_slot_t, sec) == 16, "time at 16");
TQ_STATIC_ASSERT(offsetof(tq_alarm_slot_t, message) == 72, "message at 72");

/* Head of the shared alarm store, fixed layout; slot i follows at 16 + 200 * i. */
typedef struct tq_alarm_store {
    uint32_t head, tail, count, lib;
    tq_alarm_slot_t slot[];
} tq_alarm_store_t;
TQ_STATIC_ASSERT(sizeof(tq_alarm_store_t) == 16, "store head is 16 bytes");

/* Entry of the alarm catalogue, fixed layout. */
typedef struct tq_alarm_info {
    uint16_t id;
    char name[32];
    char description[32];
    uint8_t pad[2];
    uint32_t default_level;
    uint32_t type;            /* index into tq_alarm_log_type */
    uint32_t default_actions; /* TQ_ACTION_ bits */
    uint32_t class_;          /* 0 alarm, 1 event; index into tq_alarm_log_class */
    uint32_t group;           /* 0 global, 1 onu, 2 pon, 3 route */
} tq_alarm_info_t;
TQ_STATIC_ASSERT(sizeof(tq_alarm_info_t) == 88, "catalogue entry is 88 bytes");
TQ_STATIC_ASSERT(offsetof(tq_alarm_info_t, name) == 2, "name at 2");
TQ_STATIC_ASSERT(offsetof(tq_alarm_info_t, description) == 34, "description at 34");
TQ_STATIC_ASSERT(offsetof(tq_alarm_info_t, type) == 72, "type at 72");
TQ_STATIC_ASSERT(offsetof(tq_alarm_info_t, class_) == 80, "class at 80");

/* One alarm of the configuration XML: level text and the four action switches. */
typedef struct tq_alarm_cfg {
    char level[16];
    uint32_t print, record, trap, remote;
} tq_alarm_cfg_t;

/* 16-byte port-count record of the device.  Byte 10: GPON ports, byte 11: XG-PON ports (a port that takes
 * both kinds of module counts in both). */
typedef struct tq_port_info {
    uint8_t b[16];
} tq_port_info_t;
TQ_STATIC_ASSERT(sizeof(tq_port_info_t) == 16, "port record is 16 bytes");

/* Interface table built by port_init: the PON interfaces are numbered from first_port to last_port; all zero
 * means no ports. */
typedef struct tq_intf_table {
    uint32_t first_port, last_port;
    uint8_t rest[248];
} tq_intf_table_t;

/* Base information of the device: NUL-terminated texts, each running at most to the next. */
typedef struct tq_base_info {
    uint8_t b0[65];
    char device_model[17];
    char device_mac[20];
    char serial_number[81];
    char hardware_version[16];
    char software_version[16];
    char software_created[256];
    char copyright[553];
} tq_base_info_t;
TQ_STATIC_ASSERT(sizeof(tq_base_info_t) == 1024, "base information is 1024 bytes");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, device_model) == 65, "model at 65");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, device_mac) == 82, "MAC at 82");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, serial_number) == 102, "serial number at 102");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, hardware_version) == 183, "hardware version at 183");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, software_version) == 199, "software version at 199");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, software_created) == 215, "creation time at 215");
TQ_STATIC_ASSERT(offsetof(tq_base_info_t, copyright) == 471, "copyright at 471");

#ifdef __cplusplus
}
#endif
#endif
