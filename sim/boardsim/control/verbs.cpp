// SPDX-License-Identifier: GPL-2.0-or-later
// The table of verbs and their dispatch.  Failure policy: a mistake changes nothing and is one line.
#include "sim/boardsim/control/verbs.hpp"

#include <exception>
#include <stdexcept>

#include "sim/modules/text.hpp"

namespace sim {

struct Verbs::Row {
    const char *verb;   // one or two words
    unsigned min_words; // after the verb
    unsigned max_words;
    const char *usage;
    std::string (Verbs::*now)(const Words &);
    void (Verbs::*later)(const Words &, ControlClient &) = nullptr;
    bool writes = false; // changes what the state folder keeps
};

constexpr unsigned any_number = 64;

const Verbs::Row Verbs::rows[] = {
    {"show", 0, 0, "", &Verbs::show},
    {"help", 0, 0, "", &Verbs::help},
    {"reg get", 1, 1, "R", &Verbs::reg_get},
    {"reg set", 2, 2, "R V", &Verbs::reg_set, nullptr, true},
    {"reg plain", 1, 1, "on|off", &Verbs::reg_plain, nullptr, true},
    {"reg watch", 1, 1, "R", nullptr, &Verbs::reg_watch},
    {"power", 1, 1, "STATUS", &Verbs::power, nullptr, true},
    {"logic", 1, 1, "VERSION", &Verbs::logic, nullptr, true},
    {"devtype", 1, 1, "TYPE", &Verbs::devtype, nullptr, true},
    {"temp set", 1, 1, "TENTHS", &Verbs::temp_set, nullptr, true},
    {"temp raw", 1, 1, "WORD", &Verbs::temp_raw, nullptr, true},
    {"temp fail", 1, 1, "N|always|off", &Verbs::temp_fail},
    {"heat", 1, 1, "WATTS|off", &Verbs::heat},
    {"plug", 3, 4, "gpon|xgpon|ge PORT FILE... [--no-presence] [--pad]", &Verbs::plug, nullptr, true},
    {"unplug", 2, 3, "gpon|xgpon|ge PORT [--keep-presence]", &Verbs::unplug, nullptr, true},
    {"module get", 5, 5, "gpon|xgpon|ge PORT ADDRESS REG LENGTH", &Verbs::module_get},
    {"module set", 5, 5, "gpon|xgpon|ge PORT ADDRESS REG HEXBYTES", &Verbs::module_set, nullptr, true},
    {"module die", 2, 2, "gpon|xgpon|ge PORT", &Verbs::module_die},
    {"module revive", 2, 2, "gpon|xgpon|ge PORT", &Verbs::module_revive},
    {"channel show", 0, 0, "", &Verbs::channel_show},
    {"button", 1, 2, "press|release|samples N", &Verbs::button},
    {"gpio show", 0, 0, "", &Verbs::gpio_show},
    {"gpio get", 1, 1, "LINE", &Verbs::gpio_get},
    {"gpio fail", 1, any_number, "open|req3|req1 [N] [errno=E] [count=M] | off", &Verbs::gpio_fail},
    {"fault add", 1, any_number, "OP|any [bus= addr= reg= ch= thread= nth= count= errno= delay=]",
     &Verbs::fault_add},
    {"fault list", 0, 0, "", &Verbs::fault_list},
    {"fault delete", 1, 1, "ID", &Verbs::fault_delete},
    {"fault clear", 0, 0, "", &Verbs::fault_clear},
    {"fru get", 4, 4, "BUS ADDRESS REG LENGTH", &Verbs::fru_get},
    {"fru set", 4, 4, "BUS ADDRESS REG HEXBYTES", &Verbs::fru_set, nullptr, true},
    {"fru", 0, 0, "", &Verbs::fru},
    {"phy get", 3, 3, "INTERFACE PHY REG", &Verbs::phy_get},
    {"phy set", 4, 4, "INTERFACE PHY REG VALUE", &Verbs::phy_set},
    {"phy link", 3, 3, "INTERFACE PHY up|down", &Verbs::phy_link},
    {"bus send", 1, 1, "VALUE", &Verbs::bus_send},
    {"bus raw", 1, 1, "HEXBYTES", &Verbs::bus_raw},
    {"bus clients", 0, 0, "", &Verbs::bus_clients},
    {"bus log", 0, 0, "", &Verbs::bus_log},
    {"bus clear", 0, 0, "", &Verbs::bus_clear},
    {"bus up", 0, 0, "", &Verbs::bus_up},
    {"bus down", 0, 0, "", &Verbs::bus_down},
    {"time scale", 1, 1, "FACTOR", &Verbs::time_scale},
    {"drift", 1, 1, "on|off", &Verbs::drift},
    {"log dump", 0, 1, "[SINCE]", nullptr, &Verbs::log_dump},
    {"log next", 0, 0, "", &Verbs::log_next},
    {"log clear", 0, 0, "", &Verbs::log_clear},
    {"log mark", 1, any_number, "TEXT", &Verbs::log_mark},
    {"log wait", 2, 3, "REGEX SECONDS [SINCE]", nullptr, &Verbs::log_wait},
};

Verbs::Verbs(EventLoop &loop, SimulatedBoard &board, FrontPanel &panel, const BusService &bus,
             ServiceBus &service_bus, Drift &drift)
    : loop_(loop), board_(board), panel_(panel), bus_(bus), service_bus_(service_bus), drift_(drift)
{
    board_.cpld.on_change([this](std::uint8_t reg, std::uint8_t before, std::uint8_t after) {
        for (const Watcher &watcher : watchers_)
            if (watcher.reg == reg)
                watcher.client->send(format("reg %u: 0x%02x -> 0x%02x\n", reg, before, after));
    });
}

void Verbs::run(const Words &words, ControlClient &client)
{
    try {
        dispatch(words, client);
    } catch (const std::exception &error) {
        client.send(std::string("1\nerror: ") + error.what() + "\n");
        client.finish();
    }
}

void Verbs::dispatch(const Words &words, ControlClient &client)
{
    if (words.empty())
        throw std::invalid_argument("no verb");
    for (const Row &row : rows) {
        const std::string verb = row.verb;
        const bool two = verb.find(' ') != std::string::npos;
        if (verb != (two && words.size() > 1 ? words[0] + " " + words[1] : words[0]))
            continue;
        const Words rest(words.begin() + (two ? 2 : 1), words.end());
        if (rest.size() < row.min_words || rest.size() > row.max_words)
            throw std::invalid_argument("usage: boardctl " + verb + " " + row.usage);
        if (row.later != nullptr) {
            (this->*row.later)(rest, client);
            return;
        }
        const std::string text = (this->*row.now)(rest);
        if (row.writes && written_)
            written_();
        client.send("0\n" + (text.empty() ? "ok\n" : text));
        client.finish();
        return;
    }
    std::string known;
    for (const Row &row : rows)
        if (const std::string verb = row.verb; verb.substr(0, verb.find(' ')) == words[0])
            known += std::string(known.empty() ? "" : "\n       ") + "boardctl " + verb + " " + row.usage;
    throw std::invalid_argument(known.empty() ? "no verb \"" + words[0] + "\"" : "usage: " + known);
}

std::string Verbs::help(const Words &)
{
    std::string text;
    for (const Row &row : rows)
        text += std::string(row.verb) + (*row.usage != '\0' ? " " : "") + row.usage + "\n";
    return text + "module make FILE.json [OPTIONS]\n";
}

std::chrono::microseconds Verbs::scaled(double milliseconds) const
{
    return std::chrono::microseconds(static_cast<long>(milliseconds * 1000 / time_scale_));
}

} // namespace sim
