// SPDX-License-Identifier: GPL-2.0-or-later
// XML texts, printed from the paths of the settings.
#include "platform/database/model/xml.hpp"

#include <string_view>
#include <vector>

namespace tq::db {

namespace {
constexpr std::string_view root_tag = "alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"";
constexpr std::string_view root_path = "/olt-alarm-log:alarm-log/";

// Opens and closes elements as the paths of the values ask for it; an element without content is not written.
class Printer {
public:
    Printer() : out_("<") { out_.append(root_tag); }

    // `path` is that of a leaf, below the root; elements of an earlier path that it shares stay open.
    void leaf(std::string_view path, std::string_view value)
    {
        if (is_empty_) {
            out_ += ">\n";
            is_empty_ = false;
        }
        std::size_t depth = 0;
        while (path.find('/') != path.npos) {
            const std::string_view name = path.substr(0, path.find('/'));
            path.remove_prefix(name.size() + 1);
            if (depth < open_.size() && open_[depth] != name)
                close_down_to(depth);
            if (depth == open_.size()) {
                indent();
                out_.append("<").append(name).append(">\n");
                open_.push_back(name);
            }
            ++depth;
        }
        close_down_to(depth);
        indent();
        out_.append("<").append(path).append(">");
        escaped(value);
        out_.append("</").append(path).append(">\n");
    }

    void close_down_to(std::size_t depth)
    {
        while (open_.size() > depth) {
            const std::string_view name = open_.back();
            open_.pop_back();
            indent();
            out_.append("</").append(name).append(">\n");
        }
    }

    std::string finish() &&
    {
        close_down_to(0);
        out_ += is_empty_ ? "/>\n" : "</alarm-log>\n";
        return std::move(out_);
    }

private:
    void indent() { out_.append(2 * (open_.size() + 1), ' '); }

    void escaped(std::string_view text)
    {
        for (const char c : text) {
            switch (c) {
            case '&':
                out_ += "&amp;";
                break;
            case '<':
                out_ += "&lt;";
                break;
            case '>':
                out_ += "&gt;";
                break;
            default:
                out_ += c;
            }
        }
    }

    std::string out_;
    std::vector<std::string_view> open_;
    bool is_empty_ = true;
};

std::string_view below_root(const Setting &setting)
{
    return std::string_view(setting.schema_path).substr(root_path.size());
}
} // namespace

std::string xml_of_alarms(Values values)
{
    Printer printer;
    for (std::size_t id = 0; id < TQ_ALARM_COUNT; ++id) {
        const Slot first = slot_of(Field::alarm_name, id);
        bool is_listed = false;
        for (Slot slot = first; slot < first + per_alarm_count; ++slot) {
            if (!values[slot])
                continue;
            if (!is_listed)
                printer.leaf("alarm/id", std::to_string(id));
            is_listed = true;
            printer.leaf(below_root(setting_of(slot)), *values[slot]);
        }
        printer.close_down_to(0);
    }
    return std::move(printer).finish();
}

std::string xml_of_thresholds(Values values)
{
    Printer printer;
    for (Slot slot = slot_of(Field::temp_high_alarm); slot <= slot_of(Field::mem_usage_high_clear); ++slot)
        if (values[slot])
            printer.leaf(below_root(setting_of(slot)), *values[slot]);
    return std::move(printer).finish();
}

} // namespace tq::db
