// SPDX-License-Identifier: GPL-2.0-or-later
// The level keywords in the grammar and the help of commands, as literals to be joined with others.
#pragma once

#define LEVEL_WORDS "<debug|info|notice|warning|major|critical|alert|emerg>"

// Help of "level" and of the keywords.
#define LEVEL_STR                                                                                            \
    "Specify log level.\n"                                                                                   \
    "Specify log debug level.\n"                                                                             \
    "Specify log info level.\n"                                                                              \
    "Specify log notice level.\n"                                                                            \
    "Specify log warning level.\n"                                                                           \
    "Specify log major level.\n"                                                                             \
    "Specify log critical level.\n"                                                                          \
    "Specify log alert level.\n"                                                                             \
    "Specify log emerg level.\n"
