// SPDX-License-Identifier: GPL-2.0-or-later
// Syslog messages (RFC 5424): whoever files an alarm chooses its text, and must not forge a second message
// with it. Input: alarm id, level, what the alarm is about, offset from UTC; host, program and message.
#include "platform/sinks/syslog_message.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <regex.h>

namespace {

// HEADER and STRUCTURED-DATA of section 6, as far as they are the same for every alarm.
bool has_form(const std::string &message)
{
    static const regex_t form = [] {
        regex_t made;
        const char *pattern = "^<1(8[4-9]|9[01])>1 -?[0-9]{4,}-[0-9-]+T[0-9:-]+\\.[0-9-]{6,}[+-][0-9:-]+ "
                              "[!-~]{1,255} [!-~]{1,48} "
                              "-?[0-9]+ [!-~]{1,32} \\[alarm@32473 id=\"[0-9]+\"( name=\"[^\"]*\" "
                              "class=\"[a-z]+\")? pon=\"[0-9]+\" "
                              "onu=\"[0-9]+\"\\]( |$)";
        fuzz::expect(regcomp(&made, pattern, REG_EXTENDED | REG_NOSUB) == 0, "the form is a pattern");
        return made;
    }();
    return regexec(&form, message.c_str(), 0, nullptr, 0) == 0;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    tq::Alarm alarm{.id = input.u16(),
                    .level = static_cast<std::uint8_t>(input.u8() % TQ_ALARM_LEVEL_COUNT),
                    .time = {},
                    .message = nullptr};
    alarm.request.pon = input.u32();
    alarm.request.onu = input.u32();
    alarm.microseconds = static_cast<int>(input.u32() % 1'000'000);
    alarm.time.tm_year = input.u16();
    alarm.time.tm_sec = input.u8() % 61;
    alarm.time.tm_gmtoff = static_cast<std::int16_t>(input.u16()) * 60L;
    const tq::SyslogOrigin origin{std::string(input.word()), std::string(input.word()), input.u16()};
    const std::string message(input.word());
    alarm.message = message.c_str();

    const std::string sent = tq::syslog_message(alarm, origin);
    fuzz::expect(sent.size() <= 2048, "a message fits its datagram");
    fuzz::expect(std::ranges::none_of(sent, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }),
                 "no control character leaves the box");
    fuzz::expect(has_form(sent), "header and structured data have their form");
    return 0;
}
