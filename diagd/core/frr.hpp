// SPDX-License-Identifier: GPL-2.0-or-later
// The one door to libfrr: every file of the daemon that needs the library includes this header and no header
// of the library itself.  Two of its macros name struct members out of declaration order, which C++ refuses;
// they are repeated here in order.
#pragma once

#include <zebra.h> // first: it sets up the feature macros of the system headers

#include <buffer.h>
#include <command.h>
#include <frrcu.h>
#include <json.h>
#include <libfrr.h>
#include <log.h>
#include <privs.h>
#include <stream.h>
#include <thread.h>
#include <version.h>
#include <vty.h>
#include <zclient.h>

// A command whose header says `extern const struct cmd_element x_cmd;` can be installed from another file;
// any other stays private to its file, as every const object of a namespace does.
#undef DEFUN_CMD_ELEMENT
#define DEFUN_CMD_ELEMENT(funcname, cmdname, cmdstr, helpstr, attrs, dnum)                                   \
    const struct cmd_element cmdname = {                                                                     \
        .string = (cmdstr),                                                                                  \
        .doc = (helpstr),                                                                                    \
        .daemon = (dnum),                                                                                    \
        .attr = (attrs),                                                                                     \
        .func = (funcname),                                                                                  \
        .name = #cmdname,                                                                                    \
        .xref = XREF_INIT(XREFT_DEFUN, nullptr, #funcname),                                                  \
    };                                                                                                       \
    XREF_LINK(cmdname.xref);

// Handlers are called from C, so nothing may unwind through them.
#undef DEFUN_CMD_FUNC_DECL
#define DEFUN_CMD_FUNC_DECL(funcname)                                                                        \
    static int funcname(const struct cmd_element *, struct vty *, int, struct cmd_token *[]) noexcept;

#undef DEFUN_CMD_FUNC_TEXT
#define DEFUN_CMD_FUNC_TEXT(funcname)                                                                        \
    static int funcname([[maybe_unused]] const struct cmd_element *self, [[maybe_unused]] struct vty *vty,   \
                        [[maybe_unused]] int argc, [[maybe_unused]] struct cmd_token *argv[]) noexcept

// `<execname>_di` has external linkage: the start order and the signal handlers both need it.
#undef FRR_DAEMON_INFO
#define FRR_DAEMON_INFO(execname, constname, ...)                                                            \
    struct frr_daemon_info execname##_di = {                                                                 \
        .name = #execname, .logname = #constname, .module = THIS_MODULE, __VA_ARGS__};                       \
    FRR_COREMOD_SETUP(.name = #execname, .version = FRR_VERSION, .description = #execname " daemon")
