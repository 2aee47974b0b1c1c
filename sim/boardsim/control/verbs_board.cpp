// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on registers, sensor, front panel, faults, time.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

constexpr double button_sample_ms = 200; // the push-button is looked at five times a second
constexpr double drift_step_ms = 1000;

std::uint8_t to_byte(const std::string &word)
{
    return static_cast<std::uint8_t>(parse_number(word, 0, 255));
}

bool to_flag(const std::string &word)
{
    if (word != "on" && word != "off")
        throw std::invalid_argument("\"" + word + "\" is neither on nor off");
    return word == "on";
}

} // namespace

std::string Verbs::reg_get(const Words &words)
{
    return format("0x%02x\n", board_.cpld.read(to_byte(words[0])));
}

std::string Verbs::reg_set(const Words &words)
{
    board_.cpld.set(to_byte(words[0]), to_byte(words[1]));
    return {};
}

std::string Verbs::reg_plain(const Words &words)
{
    board_.cpld.set_plain(to_flag(words[0]));
    return {};
}

void Verbs::reg_watch(const Words &words, ControlClient &client)
{
    const std::uint8_t reg = to_byte(words[0]);
    watchers_.push_back({&client, reg});
    client.on_gone([this, &client] {
        std::erase_if(watchers_, [&](const Watcher &watcher) { return watcher.client == &client; });
    });
    client.send("0\n" + format("reg %u: 0x%02x\n", reg, board_.cpld.read(reg)));
}

std::string Verbs::power(const Words &words)
{
    board_.cpld.set(board_.description.cpld.power_register, to_byte(words[0]));
    return {};
}

std::string Verbs::logic(const Words &words)
{
    board_.cpld.set(board_.description.cpld.logic_version_register, to_byte(words[0]));
    return {};
}

std::string Verbs::devtype(const Words &words)
{
    board_.cpld.set(board_.description.cpld.device_type_register, to_byte(words[0]));
    return {};
}

std::string Verbs::temp_set(const Words &words)
{
    board_.lm75.set_tenths(static_cast<int>(parse_number(words[0], -1280, 1279)));
    return {};
}

std::string Verbs::temp_raw(const Words &words)
{
    board_.lm75.set_raw(static_cast<std::uint16_t>(parse_number(words[0], 0, 0xffff)));
    return {};
}

// The next N reads of the sensor fail, or all of them.
std::string Verbs::temp_fail(const Words &words)
{
    Fault fault;
    if (words[0] != "off" && words[0] != "always")
        fault.count = static_cast<unsigned long>(parse_number(words[0], 1, 1'000'000));
    if (temperature_fault_)
        board_.faults.remove(*temperature_fault_);
    temperature_fault_.reset();
    if (words[0] == "off")
        return {};
    fault.op = board::SimOp::i2c_read;
    fault.bus = board_.description.lm75.bus;
    fault.address = board_.description.lm75.address;
    fault.error = ENXIO;
    temperature_fault_ = board_.faults.add(fault);
    return {};
}

std::string Verbs::button(const Words &words)
{
    const bool samples = words[0] == "samples";
    if ((samples && words.size() != 2) || (!samples && words.size() != 1) ||
        (!samples && words[0] != "press" && words[0] != "release"))
        throw std::invalid_argument("usage: boardctl button press|release|samples N");
    const long count = samples ? parse_number(words[1], 1, 1000) : 0;
    if (button_timer_)
        loop_.cancel(*button_timer_);
    button_timer_.reset();
    panel_.press_button(words[0] != "release");
    if (samples)
        button_timer_ = loop_.after(scaled(button_sample_ms * static_cast<double>(count)),
                                    [this] { panel_.press_button(false); });
    return {};
}

std::string Verbs::gpio_show(const Words &)
{
    GpioFile &gpio = panel_.gpio();
    std::string text =
        format("opened %lu  request 3 %lu  request 1 %lu  last word 0x%x\n", gpio.opened.load(),
               gpio.get_requests.load(), gpio.set_requests.load(), gpio.last_word.load());
    for (unsigned line = 0; line < 256; ++line)
        if (gpio.set_count[line] != 0)
            text += format("gpio %u: value %u, set %u times\n", line, unsigned{gpio.value[line].load()},
                           gpio.set_count[line].load());
    return text;
}

std::string Verbs::gpio_get(const Words &words)
{
    return format("%u\n", unsigned{panel_.gpio().value[parse_number(words[0], 0, 255)].load()});
}

// "fail req1 5": the fifth request from now on fails, and all after it unless a count is given.
std::string Verbs::gpio_fail(const Words &words)
{
    GpioFile &gpio = panel_.gpio();
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

std::string Verbs::fault_add(const Words &words)
{
    return format("fault %u\n", board_.faults.add(parse_fault(words)));
}

std::string Verbs::fault_list(const Words &)
{
    std::string text;
    for (const Fault &fault : board_.faults.all())
        text += fault.text() + "\n";
    return text.empty() ? "no faults\n" : text;
}

std::string Verbs::fault_delete(const Words &words)
{
    if (!board_.faults.remove(static_cast<unsigned>(parse_number(words[0], 1, 0x7fffffff))))
        throw std::invalid_argument("no fault " + words[0]);
    return {};
}

std::string Verbs::fault_clear(const Words &)
{
    board_.faults.clear();
    temperature_fault_.reset();
    return {};
}

std::string Verbs::time_scale(const Words &words)
{
    time_scale_ = parse_real(words[0], 0.01, 1000);
    return {};
}

void Verbs::drift_step()
{
    drift_.step();
    drift_timer_ = loop_.after(scaled(drift_step_ms), [this] { drift_step(); });
}

void Verbs::set_drift(bool on)
{
    if (drift_timer_)
        loop_.cancel(*drift_timer_);
    drift_timer_.reset();
    if (on)
        drift_timer_ = loop_.after(scaled(drift_step_ms), [this] { drift_step(); });
    else if (drifting_)
        drift_.settle();
    drifting_ = on;
}

std::string Verbs::drift(const Words &words)
{
    set_drift(to_flag(words[0]));
    return {};
}

std::string Verbs::channel_show(const Words &)
{
    std::string text;
    for (const std::string &line : bus_.handles())
        text += line + "\n";
    return text.empty() ? "no open handles\n" : text;
}

} // namespace sim
