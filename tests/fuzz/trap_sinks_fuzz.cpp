// SPDX-License-Identifier: GPL-2.0-or-later
// The file of trap sinks.
#include "platform/sinks/trap_message.hpp"
#include "platform/sinks/trap_sinks.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::as_text(data, size);
    const tq::TrapSinks sinks = tq::parse_trap_sinks(text);
    fuzz::expect(sinks.sinks.size() <= tq::max_trap_sinks, "there are no more sinks than there may be");
    for (const tq::TrapSink &sink : sinks.sinks)
        fuzz::expect(sink.port != 0 && !sink.community.empty() && sink.community.size() <= tq::max_community,
                     "a sink can be sent to");
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    fuzz::expect(sinks.sinks.size() + sinks.mistakes.size() <= lines, "a line is a sink or a mistake");
    return 0;
}
