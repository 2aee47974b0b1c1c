// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the push-button and the GPIO lines.
#include <cerrno>
#include <functional>
#include <memory>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

constexpr double button_sample_ms = 200; // the push-button is looked at five times a second

// A finger on the button.
class Finger {
public:
    Finger(FrontPanel &panel, BoardTime &time) : panel_(panel), release_(time) {}

    // press, release, samples N
    std::string move(const Words &words)
    {
        const bool samples = words[0] == "samples";
        if ((samples && words.size() != 2) || (!samples && words.size() != 1) ||
            (!samples && words[0] != "press" && words[0] != "release"))
            throw std::invalid_argument("usage: boardctl button press|release|samples N");
        const long count = samples ? parse_number(words[1], 1, 1000) : 0;
        release_.stop();
        panel_.press_button(words[0] != "release");
        if (samples)
            release_.start(button_sample_ms * static_cast<double>(count),
                           [this] { panel_.press_button(false); });
        return {};
    }

private:
    FrontPanel &panel_;
    BoardTimer release_;
};

std::string gpio_show(FrontPanel &panel, const Words &)
{
    GpioFile &gpio = panel.gpio();
    std::string text =
        format("opened %lu  request 3 %lu  request 1 %lu  last word 0x%x\n", gpio.opened.load(),
               gpio.get_requests.load(), gpio.set_requests.load(), gpio.last_word.load());
    for (unsigned line = 0; line < 256; ++line)
        if (gpio.set_count[line] != 0)
            text += format("gpio %u: value %u, set %u times\n", line, unsigned{gpio.value[line].load()},
                           gpio.set_count[line].load());
    return text;
}

std::string gpio_get(FrontPanel &panel, const Words &words)
{
    return format("%u\n", unsigned{panel.gpio().value[to_byte(words[0])].load()});
}

// "fail req1 5": the fifth request from now on fails, and all after it unless a count is given.
std::string gpio_fail(FrontPanel &panel, const Words &words)
{
    GpioFile &gpio = panel.gpio();
    if (words[0] == "off") {
        for (GpioFault *fault : {&gpio.fail_open, &gpio.fail_get, &gpio.fail_set})
            fault->left = 0;
        return {};
    }
    GpioFault *fault = words[0] == "open"   ? &gpio.fail_open
                       : words[0] == "req3" ? &gpio.fail_get
                       : words[0] == "req1" ? &gpio.fail_set
                                            : nullptr;
    if (fault == nullptr)
        throw std::invalid_argument("\"" + words[0] + "\" is none of open, req3, req1, off");
    long nth = 1, count = -1, error = EIO;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (word->starts_with("errno="))
            error = parse_number(word->substr(6), 1, 4095);
        else if (word->starts_with("count="))
            count = parse_number(word->substr(6), 1, 1'000'000'000);
        else
            nth = parse_number(*word, 1, 1'000'000'000);
    }
    fault->left = 0;
    fault->error = static_cast<std::int32_t>(error);
    fault->skip = static_cast<std::int32_t>(nth - 1);
    fault->left = static_cast<std::int32_t>(count);
    return {};
}

} // namespace

std::vector<Verb> panel_verbs(FrontPanel &panel, BoardTime &time)
{
    const auto on = std::ref(panel);
    return {
        {"button", 1, 2, "press|release|samples N",
         [finger = std::make_shared<Finger>(panel, time)](const Words &words) {
             return finger->move(words);
         }},
        {"gpio show", 0, 0, "", std::bind_front(gpio_show, on)},
        {"gpio get", 1, 1, "LINE", std::bind_front(gpio_get, on)},
        {"gpio fail", 1, any_number, "open|req3|req1 [N] [errno=E] [count=M] | off",
         std::bind_front(gpio_fail, on)},
    };
}

} // namespace sim
