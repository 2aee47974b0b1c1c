// SPDX-License-Identifier: GPL-2.0-or-later
// The configuration of the alarms as XML.  Whatever comes before a mistake may count; nothing else is
// touched.
#include "tests/fuzz/fuzz.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <array>
#include <cstring>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string xml(fuzz::as_text(data, size));
    std::array<tq_alarm_cfg_t, TQ_ALARM_COUNT> records{};
    const int result = parsing_alarm_list_xml_data(xml.c_str(), records.data());
    fuzz::expect(result == TQ_OK || result == TQ_ERR_INVALID, "XML is read or invalid");
    for (const tq_alarm_cfg_t &record : records) {
        fuzz::expect(std::memchr(record.level, '\0', sizeof record.level) != nullptr, "a level is a text");
        fuzz::expect(record.print <= 1 && record.record <= 1 && record.trap <= 1 && record.remote <= 1,
                     "a switch is on or off");
    }
    return 0;
}
