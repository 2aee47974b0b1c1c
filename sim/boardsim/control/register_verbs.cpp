// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the CPLD's registers.
#include <memory>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

// Who is told of every change of a register.
class RegisterWatch {
public:
    void add(Cpld &cpld, std::uint8_t reg, ControlClient &client)
    {
        watchers_.push_back({&client, reg});
        client.on_gone([this, &client] {
            std::erase_if(watchers_, [&](const Watcher &watcher) { return watcher.client == &client; });
        });
        client.send("0\n" + format("reg %u: 0x%02x\n", reg, cpld.read(reg)));
    }
    void tell(std::uint8_t reg, std::uint8_t before, std::uint8_t after) const
    {
        for (const Watcher &watcher : watchers_)
            if (watcher.reg == reg)
                watcher.client->send(format("reg %u: 0x%02x -> 0x%02x\n", reg, before, after));
    }

private:
    struct Watcher {
        ControlClient *client;
        std::uint8_t reg;
    };
    std::vector<Watcher> watchers_;
};

} // namespace

std::vector<Verb> register_verbs(SimulatedBoard &board)
{
    Cpld &cpld = board.cpld;
    const auto watch = std::make_shared<RegisterWatch>();
    cpld.on_change([watch](std::uint8_t reg, std::uint8_t before, std::uint8_t after) {
        watch->tell(reg, before, after);
    });
    const auto set = [&cpld](std::uint8_t reg) {
        return [&cpld, reg](const Words &words) {
            cpld.set(reg, to_byte(words[0]));
            return std::string();
        };
    };
    return {
        {"reg get", 1, 1, "R",
         [&cpld](const Words &words) { return format("0x%02x\n", cpld.read(to_byte(words[0]))); }},
        {"reg set", 2, 2, "R V",
         [&cpld](const Words &words) {
             cpld.set(to_byte(words[0]), to_byte(words[1]));
             return std::string();
         },
         true},
        {"reg plain", 1, 1, "on|off",
         [&cpld](const Words &words) {
             cpld.set_plain(to_flag(words[0]));
             return std::string();
         },
         true},
        {"reg watch", 1, 1, "R",
         [&cpld, watch](const Words &words, ControlClient &client) {
             watch->add(cpld, to_byte(words[0]), client);
         }},
        {"power", 1, 1, "STATUS", set(board.description.cpld.power_register), true},
        {"logic", 1, 1, "VERSION", set(board.description.cpld.logic_version_register), true},
        {"devtype", 1, 1, "TYPE", set(board.description.cpld.device_type_register), true},
    };
}

} // namespace sim
