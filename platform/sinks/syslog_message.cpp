// SPDX-License-Identifier: GPL-2.0-or-later
// Syslog messages (RFC 5424; see syslog_message.hpp).
#include "platform/sinks/syslog_message.hpp"

#include "base/utf8.hpp"
#include "platform/sinks/syslog_severity.hpp"
#include "tq_api.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tq {

namespace {

constexpr std::size_t max_size = 2048;
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// A header field of printable ASCII without blanks, "-" when there is nothing to say (section 6).
std::string header_field(std::string_view text, std::size_t max_length)
{
    std::string field(text.substr(0, max_length));
    for (char &c : field)
        if (c < '!' || c > '~')
            c = '_';
    return field.empty() ? "-" : field;
}

// DATE-TIME of section 6.2.3: microseconds, the offset from UTC, and no leap second.
std::string timestamp(const Alarm &alarm)
{
    const std::tm &time = alarm.time;
    const long offset_min = time.tm_gmtoff / 60;
    char text[128];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06d%c%02ld:%02ld", time.tm_year + 1900,
                  time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, std::min(time.tm_sec, 59),
                  alarm.microseconds, offset_min < 0 ? '-' : '+', std::labs(offset_min) / 60,
                  std::labs(offset_min) % 60);
    return text;
}

// SD-PARAM of section 6.3.3.
std::string parameter(std::string_view name, std::string_view value)
{
    std::string text = " " + std::string(name) + "=\"";
    for (const char c : value) {
        if (c == '"' || c == '\\' || c == ']')
            text += '\\';
        text += c;
    }
    return text + '"';
}

std::string structured_data(const Alarm &alarm)
{
    std::string text =
        "[alarm@" + std::to_string(enterprise_number) + parameter("id", std::to_string(alarm.id));
    if (alarm.id < TQ_ALARM_COUNT) {
        const tq_alarm_info_t &info = tq_alarm_log_info[alarm.id];
        text += parameter("name", info.name) + parameter("class", tq_alarm_log_class[info.class_]);
    }
    return text + parameter("pon", std::to_string(alarm.request.pon)) +
           parameter("onu", std::to_string(alarm.request.onu)) + ']';
}

// Bytes of well-formed UTF-8 at the beginning of the text.
std::size_t utf8_prefix(std::string_view text)
{
    std::size_t size = 0;
    while (size < text.size()) {
        const std::size_t length = base::utf8_length(text.substr(size));
        if (length == 0)
            break;
        size += length;
    }
    return size;
}

// MSG of section 6.4 in at most `room` bytes; a character that a cut has halved goes as a whole.
std::string message_part(std::string_view text, std::size_t room)
{
    const bool is_ascii = std::ranges::all_of(text, [](char c) { return (c & 0x80) == 0; });
    text = text.substr(0, room - (is_ascii ? 0 : byte_order_mark.size()));
    const std::size_t well_formed = utf8_prefix(text);
    const bool is_utf8 = well_formed == text.size() || base::utf8_is_cut(text.substr(well_formed));
    if (is_utf8)
        text = text.substr(0, well_formed);
    std::string part(is_utf8 && !is_ascii ? byte_order_mark : "");
    part += text;
    for (char &c : part)
        if ((c >= 0 && c < ' ') || c == '\x7F')
            c = ' ';
    return part;
}

} // namespace

std::string syslog_message(const Alarm &alarm, const SyslogOrigin &origin)
{
    constexpr std::size_t max_host = 255, max_program = 48, max_id = 32; // section 6
    const std::string name = alarm.id < TQ_ALARM_COUNT ? tq_alarm_log_info[alarm.id].name : "";
    std::string message = "<" + std::to_string(LOG_LOCAL7 | syslog_severity[alarm.level]) + ">1 " +
                          timestamp(alarm) + ' ' + header_field(origin.host, max_host) + ' ' +
                          header_field(origin.program, max_program) + ' ' + std::to_string(origin.process) +
                          ' ' + header_field(name, max_id) + ' ' + structured_data(alarm);
    if (*alarm.message)
        message += ' ' + message_part(alarm.message, max_size - message.size() - 1);
    return message;
}

} // namespace tq
