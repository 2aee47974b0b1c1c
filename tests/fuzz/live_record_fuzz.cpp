// SPDX-License-Identifier: GPL-2.0-or-later
// Records of the live log, as the shell gets them.
#include "shell/live_record.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view packet = fuzz::as_text(data, size);
    const auto record = diagsh::parse_live_record(packet);
    if (!record)
        return 0;
    fuzz::expect(record->text.size() <= packet.size(), "the text is within the packet");
    fuzz::expect(diagsh::log_line(*record).ends_with('\n'), "a record is a line");
    return 0;
}
