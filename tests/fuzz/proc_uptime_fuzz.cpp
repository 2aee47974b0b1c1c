// SPDX-License-Identifier: GPL-2.0-or-later
// /proc/uptime, and the texts and the shell line of the clock.
// Input: six numbers of a date, eight bytes each, then the text of the file.
#include "diagd/system_cli/clock_parser.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    diagd::CalendarTime time;
    for (long &number : time)
        number = static_cast<long>(std::uint64_t{input.u32()} << 32 | input.u32());
    const std::string line = diagd::set_clock_line(time);
    fuzz::expect(line.find_first_not_of("date -s'0123456789:>/vnul") == line.npos,
                 "the line that sets the clock holds numbers and nothing of the operator's");
    std::tm calendar{};
    calendar.tm_year = static_cast<int>(time[0]);
    calendar.tm_mon = static_cast<int>(time[1]);
    calendar.tm_wday = static_cast<int>(time[2]);
    static_cast<void>(diagd::calendar_text(calendar));
    if (const auto running = diagd::parse_uptime(input.rest()))
        fuzz::expect(running->seconds < 60 && running->minutes < 60 && running->hours < 24 &&
                         !diagd::running_time_text(*running).empty(),
                     "seconds, minutes and hours carry over");
    return 0;
}
