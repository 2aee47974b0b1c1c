// SPDX-License-Identifier: GPL-2.0-or-later
// Text displays of the module listing (see text.hpp).
#include "diagd/transceiver/show/text.hpp"

#include "diagd/core/text.hpp"
#include "diagd/transceiver/show/headings.hpp"
#include "diagd/transceiver/show/text_rows.hpp"

#include <string_view>

namespace diagd {

namespace {

constexpr const char *pon_word = "GPON";

void append_table_end(std::string &out)
{
    for (int i = 0; i < 3; ++i)
        out += line_end;
}

void append_name(std::string &out, const Interface &interface)
{
    append(out, "%-14s", interface_name(interface, pon_word).c_str());
}

void append_values(std::string &out, const std::optional<OpticalValues> &values)
{
    if (values)
        append(out, "%-24.3f %-18.3f %-15.3f %-31.3f %-27.3f", values->temperature_c, values->voltage_v,
               values->bias_ma, values->tx_power_dbm, values->rx_power_dbm);
}

struct DiagnosisTable {
    std::string &out;
    const Interface &interface;

    void operator()(std::monostate) const
    {
        append_line(out, headings::single);
        append_line(out, headings::single_rule);
        append(out, "%-13s %-24s %-18s %-15s %-31s %-27s", interface_name(interface, pon_word).c_str(), "N/A",
               "N/A", "N/A", "N/A", "N/A");
        append_table_end(out);
    }

    // A single path closes its table with one line end; only the second row of a combo module gets the blank
    // lines that the other tables end with.
    void operator()(const SfpReading &module) const
    {
        append_line(out, headings::single);
        append_line(out, headings::single_rule);
        append_name(out, interface);
        append_values(out, module.first.values);
        out += line_end;
        if (!module.second)
            return;
        append_name(out, interface);
        append_values(out, module.second->values);
        append_table_end(out);
    }

    void operator()(const QsfpReading &module) const
    {
        const bool gigabit = interface.kind == PortKind::gigabit_ethernet;
        append_line(out, headings::lanes);
        append_line(out, gigabit ? headings::lanes_gigabit : headings::lanes_pon);
        append_line(out, headings::lanes_rule);
        append_name(out, interface);
        append(out, "%-24.3f %-18.3f ", module.temperature_c, module.voltage_v);
        for (const Lanes &lanes : {module.bias_ma, module.tx_power_dbm})
            append(out, "%-6.3f %-6.3f %-6.3f %-10.3f ", lanes[0], lanes[1], lanes[2], lanes[3]);
        const Lanes &rx = module.rx_power_dbm;
        append(out, "%-6.3f %-6.3f %-6.3f %-6.3f", rx[0], rx[1], rx[2], rx[3]);
        out += line_end;
        append_table_end(out);
    }
};

} // namespace

std::string legend_text()
{
    std::string out;
    append_line(out, "");
    for (const std::string_view line : headings::legend)
        append_line(out, line);
    append_line(out, "");
    return out;
}

std::string diagnosis_text(std::span<const InterfaceReading> listing)
{
    std::string out;
    for (const InterfaceReading &reading : listing)
        std::visit(DiagnosisTable{out, reading.interface}, reading.module);
    return out;
}

std::string threshold_text(std::span<const InterfaceReading> listing)
{
    std::string out;
    for (const auto &[interface, module] : listing) {
        if (std::holds_alternative<std::monostate>(module))
            continue;
        const bool gigabit = interface.kind == PortKind::gigabit_ethernet;
        for (const headings::ThresholdTable &table : headings::threshold_tables) {
            append_line(out, headings::threshold_columns);
            append_line(out, table.quantity);
            append_line(out, gigabit ? table.unit_gigabit : table.unit_pon);
            append_line(out, headings::threshold_rule);
            append_name(out, interface);
            append_table_end(out);
        }
    }
    return out;
}

} // namespace diagd
