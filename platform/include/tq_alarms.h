/* SPDX-License-Identifier: GPL-2.0-or-later */
/* Ids of the alarms and events, from the rows of tq_alarms.def. */
#ifndef TQ_ALARMS_H
#define TQ_ALARMS_H

enum tq_alarm_id {
#define TQ_ROW(id, ID, name, description, class_, type, group, actions, bulk) TQ_ALARM_##ID = id,
#include "tq_alarms.def"
    TQ_ALARM_COUNT /* entries of the catalogue */
};

#endif
