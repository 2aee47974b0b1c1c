/* SPDX-License-Identifier: GPL-2.0-or-later */
/* Result codes of the platform libraries; tq_strerror gives their texts.  0 is success. */
#ifndef TQ_ERRNO_H
#define TQ_ERRNO_H

enum {
    TQ_OK = 0,
    TQ_ERR = -1,           /* unspecified failure */
    TQ_ERR_NOT_FOUND = -2, /* no such object */
    TQ_ERR_INVALID = -3,   /* bad argument or value */
    TQ_ERR_NO_DB = -4,     /* database not reachable */
    TQ_ERR_LOCKED = -5,    /* database locked by somebody else for too long */
    TQ_ERR_TIMEOUT = -6,   /* no answer in time */
    TQ_ERR_NO_SPACE = -7,  /* storage full */
    TQ_ERR_ACCESS = -8,    /* permission denied */
    TQ_ERR_NO_MEMORY = -9,
    TQ_ERR_STORE = -10, /* alarm store cannot be attached */
    TQ_ERR_PEER = -11,  /* peer not reachable */
};

#endif
