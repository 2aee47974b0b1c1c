// SPDX-License-Identifier: GPL-2.0-or-later
// The per-alarm configuration, read from the XML text that the database library writes.
// Failure policy: an alarm counts when it was read to its end; elements that this version does not know, ids
// outside the catalogue and texts that are too long are passed over.
#include "base/owner.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>

namespace {

class Reader {
public:
    explicit Reader(tq_alarm_cfg_t *records) noexcept : records_(records) {}

    void open(std::string_view element) noexcept
    {
        if (depth_ == alarm_depth && element == "alarm") {
            id_.reset();
            alarm_ = {};
            in_alarm_ = true;
        }
        if (depth_ == value_depth)
            in_action_ = element == "action";
        ++depth_;
        text_length_ = 0;
    }

    void text(std::string_view part) noexcept
    {
        // What is longer than any value is kept as one that is no value.
        part = part.substr(0, sizeof text_ - text_length_);
        std::memcpy(text_ + text_length_, part.data(), part.size());
        text_length_ += part.size();
    }

    void close(std::string_view element) noexcept
    {
        --depth_;
        if (in_alarm_ && depth_ == alarm_depth) {
            if (id_)
                records_[*id_] = alarm_;
            in_alarm_ = false;
        } else if (in_alarm_ && depth_ == value_depth) {
            take_value(element);
        } else if (in_alarm_ && in_action_ && depth_ == switch_depth) {
            take_switch(element);
        }
        text_length_ = 0;
    }

private:
    // Elements around: alarm-log; alarm; and for the switches action.
    static constexpr int alarm_depth = 1;
    static constexpr int value_depth = 2;
    static constexpr int switch_depth = 3;

    [[nodiscard]] std::string_view value() const noexcept { return {text_, text_length_}; }

    void take_value(std::string_view element) noexcept
    {
        if (element == "id")
            take_id();
        else if (element == "level" && text_length_ < sizeof alarm_.level)
            *std::copy(value().begin(), value().end(), alarm_.level) = '\0';
    }

    void take_id() noexcept
    {
        const std::string_view digits = value();
        unsigned id = TQ_ALARM_COUNT;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
        if (error == std::errc{} && end == digits.data() + digits.size() && id < TQ_ALARM_COUNT)
            id_ = id;
    }

    void take_switch(std::string_view element) noexcept
    {
        struct Switch {
            std::string_view element;
            std::uint32_t tq_alarm_cfg_t::*field;
        };
        static constexpr Switch switches[] = {
            {"print", &tq_alarm_cfg_t::print},
            {"record", &tq_alarm_cfg_t::record},
            {"trap", &tq_alarm_cfg_t::trap},
            {"remote", &tq_alarm_cfg_t::remote},
        };
        for (const Switch &one : switches)
            if (one.element == element)
                alarm_.*one.field = value() == "true" ? 1 : 0;
    }

    tq_alarm_cfg_t *records_;
    tq_alarm_cfg_t alarm_{};
    std::optional<unsigned> id_;
    int depth_ = 0;
    bool in_alarm_ = false;
    bool in_action_ = false;
    char text_[64];
    std::size_t text_length_ = 0;
};

void XMLCALL element_opened(void *reader, const XML_Char *element, const XML_Char **)
{
    static_cast<Reader *>(reader)->open(element);
}

void XMLCALL element_closed(void *reader, const XML_Char *element)
{
    static_cast<Reader *>(reader)->close(element);
}

void XMLCALL text_read(void *reader, const XML_Char *text, int length)
{
    static_cast<Reader *>(reader)->text({text, static_cast<std::size_t>(length)});
}

int read(const char *xml, tq_alarm_cfg_t *records) noexcept
{
    if (!xml || !records)
        return TQ_ERR_INVALID;
    const base::Owner<std::remove_pointer_t<XML_Parser>, XML_ParserFree> parser{XML_ParserCreate(nullptr)};
    if (!parser)
        return TQ_ERR_NO_MEMORY;
    Reader reader{records};
    XML_SetUserData(parser.get(), &reader);
    XML_SetElementHandler(parser.get(), element_opened, element_closed);
    XML_SetCharacterDataHandler(parser.get(), text_read);
    const bool is_whole =
        XML_Parse(parser.get(), xml, static_cast<int>(std::strlen(xml)), 1) == XML_STATUS_OK;
    return is_whole ? TQ_OK : TQ_ERR_INVALID;
}

} // namespace

int parsing_alarm_list_xml_data(const char *xml, tq_alarm_cfg_t recs[TQ_ALARM_COUNT])
{
    return tq::traced("parsing_alarm_list_xml_data", [&] { return read(xml, recs); });
}
