// SPDX-License-Identifier: GPL-2.0-or-later
// A vty session that keeps what is printed to it.
#pragma once

#include <zebra.h>

#include <buffer.h>
#include <memory.h>
#include <vty.h>

#include <string>

class PrintingVty {
public:
    PrintingVty()
    {
        session.type = vty::VTY_SHELL_SERV;
        session.wfd = -1; // nobody to send it to
        session.obuf = buffer_new(0);
        session.lbuf = buffer_new(0);
    }
    ~PrintingVty()
    {
        buffer_free(session.obuf);
        buffer_free(session.lbuf);
    }
    PrintingVty(const PrintingVty &) = delete;
    PrintingVty &operator=(const PrintingVty &) = delete;

    // What was printed since the last call, which forgets it.
    std::string text()
    {
        char *bytes = buffer_getstr(session.obuf);
        std::string printed = bytes;
        XFREE(MTYPE_TMP, bytes);
        buffer_reset(session.obuf);
        return printed;
    }

    struct vty session {};
};
