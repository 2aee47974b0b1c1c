// SPDX-License-Identifier: GPL-2.0-or-later
// What the box says of itself beside its displays: where alarms go, why the fans run.
#include "shell/verbs.hpp"

#include "base/json.hpp"
#include "shell/alarm_actions.hpp"
#include "shell/failure.hpp"
#include "shell/fan_reason.hpp"
#include "shell/modes.hpp"
#include "shell/nodes.hpp"
#include "shell/text_lines.hpp"

#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace diagsh {

namespace {

constexpr const char *show_configuration = "show alarm-log all configuration";
constexpr const char *sinks_path = "/etc/olt/trap-sinks.conf";

void refuse_words(const Words &words, const char *verb)
{
    if (!words.empty())
        throw Failure(EX_USAGE, std::string(verb) + " takes no words");
}

std::string answer_of(VtySession &session, const std::string &command)
{
    VtyAnswer answer = session.run(command);
    if (answer.status != 0)
        throw Failure(EX_UNAVAILABLE, "the daemon refuses: " + command);
    return std::move(answer.text);
}

// The file as the daemon sees it, which may live in a box of its own; who may not look there sees the
// machine's.
std::ifstream open_sinks(const VtySession &session)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(session.socket(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.pid > 0)
        if (std::ifstream file("/proc/" + std::to_string(peer.pid) + "/root" + sinks_path); file)
            return file;
    return std::ifstream(sinks_path);
}

unsigned tell_sinks(std::istream &file)
{
    unsigned sinks = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string sink;
        if (!(words >> sink) || sink.starts_with('#'))
            continue;
        std::printf("traps go to %s\n", sink.c_str()); // its community is a secret
        ++sinks;
    }
    return sinks;
}

} // namespace

int tell_receivers(const OltPaths &olt, const Words &words)
{
    refuse_words(words, "traps");
    VtySession session(olt.vty_socket);
    if (const auto failed = enter_node(session, "config"))
        return report_failed(failed->command, failed->answer);
    std::ifstream file = open_sinks(session);
    if (tell_sinks(file) == 0)
        std::printf("traps go nowhere: %s %s\n", sinks_path,
                    file.is_open() ? "names no sink" : "is not there");
    for (const std::string &line : split_lines(answer_of(session, "show alarm-log remote server")))
        std::printf("%s\n", line.c_str());
    const std::string table = answer_of(session, show_configuration);
    std::printf("%u alarms and events are sent as traps, %u to log servers: %s\n",
                count_enabled(table, "trap"), count_enabled(table, "remote"), show_configuration);
    return EXIT_SUCCESS;
}

int explain_fans(const OltPaths &olt, const Words &words)
{
    refuse_words(words, "fans");
    VtySession session(olt.vty_socket);
    if (const auto failed = enter_node(session, "config"))
        return report_failed(failed->command, failed->answer);
    const base::Json shown(json_tokener_parse(answer_of(session, "show fan json").c_str()));
    const auto text = [&](const char *key) -> std::string {
        const char *value = json_object_get_string(json_object_object_get(shown.get(), key));
        return value ? value : "";
    };
    FanState fans{0,
                  std::strtod(text("fanTemperature").c_str(), nullptr),
                  text("fanMode"),
                  text("fanSpeed"),
                  text("currentFanMode"),
                  text("currentFanSpeed"),
                  true};
    const std::string temperature = answer_of(session, "show temperature");
    const std::size_t number = temperature.find_first_of("-0123456789");
    if (fans.mode.empty() || number == std::string::npos)
        throw Failure(EX_PROTOCOL, "the daemon tells nothing of its fans");
    fans.temperature_c = std::strtod(temperature.c_str() + number, nullptr);
    if (session.run("diagnose").status == 0)
        for (const std::string &line : split_lines(answer_of(session, "show diag monitor")))
            if (line.starts_with("FAN Monitor"))
                fans.watched = line.find("Enable") != std::string::npos;
    write_out(fan_reason(fans));
    return EXIT_SUCCESS;
}

} // namespace diagsh
