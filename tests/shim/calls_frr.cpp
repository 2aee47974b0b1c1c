// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's calls of libfrr, as they are recorded.
#include "diagd/core/frr.hpp"
#include "tests/shim/recording.hpp"

#include <cstdlib>
#include <cstring>

using shim::leaf;
using shim::nested;
using shim::recorded;

extern "C" {

// --- libfrr: life of the daemon.  frr_run and frr_config_fork are shown when they are entered: frr_run never
// returns.

void frr_preinit(struct frr_daemon_info *daemon, int argc, char **argv)
{
    NEXT(frr_preinit);
    recorded<nested>(
        "frr_preinit", [&] { real(daemon, argc, argv); }, tq::arg("name", daemon->name),
        tq::arg("vty_port", daemon->vty_port));
}

struct thread_master *frr_init(void)
{
    NEXT(frr_init);
    return recorded<nested>("frr_init", [] { return real(); });
}

void frr_config_fork(void)
{
    NEXT(frr_config_fork);
    recorded<leaf>("frr_config_fork", [] {});
    real();
}

void frr_run(struct thread_master *master)
{
    NEXT(frr_run);
    recorded<leaf>("frr_run", [] {});
    real(master);
}

bool vty_read_config(struct nb_config *config, const char *config_file, char *config_default_dir)
{
    NEXT(vty_read_config);
    return recorded<nested>(
        "vty_read_config", [&] { return real(config, config_file, config_default_dir); },
        tq::arg("config", config != nullptr ? 1 : 0), tq::arg("config_file", config_file),
        tq::arg("default", config_default_dir));
}

// --- libfrr: nodes and commands

void install_node(struct cmd_node *node)
{
    NEXT(install_node);
    recorded<leaf>(
        "install_node", [&] { real(node); }, tq::arg("node", static_cast<int>(node->node)),
        tq::arg("name", node->name), tq::arg("parent", static_cast<int>(node->parent_node)),
        tq::arg("prompt", node->prompt));
}

void _install_element(enum node_type node, const struct cmd_element *element)
{
    NEXT(_install_element);
    recorded<leaf>(
        "install_element", [&] { real(node, element); }, tq::arg("node", static_cast<int>(node)),
        tq::token("cmd", element->name), tq::arg("hidden", element->attr == CMD_ATTR_HIDDEN ? 1 : 0),
        tq::arg("str", element->string), tq::arg("doc", element->doc));
}

// --- libfrr: privileges and peers

struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    NEXT(_zprivs_raise);
    return recorded<leaf>(
        "raise", [&] { return real(privs, reason); }, tq::arg("reason", reason));
}

void _zprivs_lower(struct zebra_privs_t **privs)
{
    NEXT(_zprivs_lower);
    recorded<leaf>("lower", [&] { real(privs); });
}

struct zclient *zclient_new(struct thread_master *master, struct zclient_options *options,
                            zclient_handler *const *handlers, size_t handler_count)
{
    NEXT(zclient_new);
    return recorded<leaf>("zclient_new", [&] { return real(master, options, handlers, handler_count); });
}

void zclient_init(struct zclient *client, int route_type, unsigned short instance,
                  struct zebra_privs_t *privs)
{
    NEXT(zclient_init);
    recorded<leaf>(
        "zclient_init", [&] { real(client, route_type, instance, privs); }, tq::arg("route_type", route_type),
        tq::arg("instance", static_cast<int>(instance)));
}

// libfrr stops a client itself when its connection fails.
void zclient_stop(struct zclient *client)
{
    NEXT(zclient_stop);
    if (!OF_THE_DAEMON())
        return real(client);
    recorded<leaf>("zclient_stop", [&] { real(client); });
}

void zclient_free(struct zclient *client)
{
    NEXT(zclient_free);
    recorded<leaf>("zclient_free", [&] { real(client); });
}

// A message's command is the last word of its header of ten bytes.
enum zclient_send_status zclient_send_message(struct zclient *client)
{
    NEXT(zclient_send_message);
    constexpr std::size_t command_at = 8;
    const struct stream *const message = client->obuf;
    const int command = stream_get_endp(message) < command_at + 2
                            ? -1
                            : message->data[command_at] << 8 | message->data[command_at + 1];
    return recorded<leaf>(
        "zclient_send_message", [&] { return real(client); }, tq::arg("command", command));
}

// --- libfrr: timers.  CALL_SHIM_TIMER names a timer's function and the milliseconds that it is to wait
// instead of its own seconds ("function=20"), so that what needs many of its rounds is tested in little time.

void _thread_add_timer(const struct xref_threadsched *where, struct thread_master *master,
                       void (*function)(struct thread *), void *argument, long seconds, struct thread **timer)
{
    NEXT(_thread_add_timer);
    static const char *const hurried = std::getenv("CALL_SHIM_TIMER");
    const std::size_t length = std::strlen(where->funcname);
    recorded<leaf>(
        "thread_add_timer",
        [&] {
            if (hurried && std::strncmp(hurried, where->funcname, length) == 0 && hurried[length] == '=')
                _thread_add_timer_msec(where, master, function, argument,
                                       std::strtol(hurried + length + 1, nullptr, 10), timer);
            else
                real(where, master, function, argument, seconds, timer);
        },
        tq::arg("function", where->funcname), tq::arg("seconds", static_cast<long long>(seconds)),
        tq::arg("argument", argument != nullptr ? 1 : 0));
}

} // extern "C"
