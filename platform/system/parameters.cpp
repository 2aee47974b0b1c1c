// SPDX-License-Identifier: GPL-2.0-or-later
// Arguments of a parsed command that follow a keyword.
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"

#include <zebra.h>

#include <command_graph.h>

#include <cstring>

// Only keywords of the syntax are looked at, by their whole text: a name or message that the operator typed
// may read like one, and a keyword may have been typed in part.
const char *cmd_parase_parameters(int argc, struct cmd_token **argv, const char *keyword)
{
    return tq::traced(
        "cmd_parase_parameters",
        [&]() -> const char * {
            for (int i = 0; argv && keyword && i + 1 < argc; ++i)
                if (argv[i]->type == WORD_TKN && std::strcmp(argv[i]->text, keyword) == 0)
                    return argv[i + 1]->arg;
            return nullptr;
        },
        tq::arg("keyword", keyword));
}
