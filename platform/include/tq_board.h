/* SPDX-License-Identifier: GPL-2.0-or-later */
/*
 * Board records of libtqapi: 13 regions of 2928 bytes that say which ports a board has.  They are
 * derived from the board description; readers work on byte offsets (the accessors of the daemon), the
 * struct here is for whoever fills them.
 */
#ifndef TQ_BOARD_H
#define TQ_BOARD_H

#include "tq_types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    BOARD_REGIONS = 13,
    BOARD_REC_SIZE = 2928,
    BOARD_PORT_ENTRIES = 32, /* entries of each port table; entry k is port k */
    BOARD_CAPABILITY_PON = 1 << 3,
    BOARD_CAPABILITY_SFP = 1 << 4,
};

/* Entry of a port table.  `present` matters in the SFP table only. */
typedef struct board_port {
    uint32_t slot;
    uint32_t in_use;
    uint8_t r1[16];
    uint8_t present;
    uint8_t r2[3];
} board_port_t;
TQ_STATIC_ASSERT(sizeof(board_port_t) == 28, "port entry is 28 bytes");

typedef struct board_record {
    uint8_t r0[8];
    uint32_t w8; /* 0 on a board that takes register commands */
    uint8_t r1[92];
    uint32_t capability; /* BOARD_CAPABILITY_ bits */
    uint32_t w108;       /* 6 on a board in service */
    uint8_t r2[124];
    board_port_t pon1[BOARD_PORT_ENTRIES];
    board_port_t pon2[BOARD_PORT_ENTRIES];
    board_port_t sfp[BOARD_PORT_ENTRIES];
    uint8_t r3[4];
} board_record_t;
TQ_STATIC_ASSERT(sizeof(board_record_t) == BOARD_REC_SIZE, "board record is 2928 bytes");
TQ_STATIC_ASSERT(offsetof(board_record_t, w8) == 8, "w8");
TQ_STATIC_ASSERT(offsetof(board_record_t, capability) == 104, "capability");
TQ_STATIC_ASSERT(offsetof(board_record_t, w108) == 108, "w108");
TQ_STATIC_ASSERT(offsetof(board_record_t, pon1) + offsetof(board_port_t, in_use) == 240, "pon1");
TQ_STATIC_ASSERT(offsetof(board_record_t, pon2) + offsetof(board_port_t, in_use) == 1136, "pon2");
TQ_STATIC_ASSERT(offsetof(board_record_t, sfp) + offsetof(board_port_t, in_use) == 2032, "sfp");

/* Reads the board description and builds the records.  regions and record_size must be the two
 * constants above.  0, or negative when there is no readable description. */
int board_mmap_init(int regions, int record_size);

/* Copies record `index` (0..12) into `record` (2928 bytes).  0, or negative when there is none. */
int board_mmap_read(int index, void *record);

#ifdef __cplusplus
}
#endif
#endif
