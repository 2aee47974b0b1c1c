// SPDX-License-Identifier: GPL-2.0-or-later
// The shared RSSI/TXDIS pin (see rssi_txdis.hpp).
#include "diagd/transceiver/memory/rssi_txdis.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/core/text.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/memory_map.hpp"
#include "diagd/transceiver/show/text_rows.hpp"

namespace diagd {

using namespace sff8472;

namespace {

// Does work(handle) on the port's module, unless it cannot be reached.
template <typename Work>
void on_module(const char *reason, PortKind kind, int port, Work work)
{
    const BoardSession board{reason, SessionPolicy::lower_then_release};
    if (!board)
        return;
    if (const ModuleSession module{board, kind, port})
        work(module.handle());
}

} // namespace

std::uint8_t read_extended_control(std::uint32_t handle) noexcept
{
    return transceiver_read_byte(handle, first_path.diagnostics, extended_control);
}

void write_extended_control_bit(std::uint32_t handle, std::uint8_t bit, bool on) noexcept
{
    const std::uint8_t control = read_extended_control(handle);
    transceiver_write_byte(handle, first_path.diagnostics, extended_control,
                           static_cast<std::uint8_t>(on ? control | bit : control & ~bit));
}

void select_shared_pin(PortKind kind, int port, SharedPin pin)
{
    on_module("transceiver_rssi_txids_set", kind, port, [pin](std::uint32_t handle) {
        write_extended_control_bit(handle, rssi_input_bit, pin == SharedPin::rssi);
    });
}

std::optional<std::uint8_t> read_pin_control(PortKind kind, int port)
{
    std::optional<std::uint8_t> control;
    on_module("transceiver_rssi_txids_show", kind, port,
              [&control](std::uint32_t handle) { control = read_extended_control(handle); });
    return control;
}

std::string pin_control_text(std::uint8_t control)
{
    const auto choice = [control](std::uint8_t bit, const char *set, const char *clear) {
        return (control & bit) != 0 ? set : clear;
    };
    std::string out;
    append(out, "Extended Control/Status Register value : 0x%X%s", control, line_end);
    append(out, "  RSSI Select         : %s%s",
           choice(gpon_rssi_bit, "GPON RSSI Monitor", "XGPON RSSI Monitor"), line_end);
    append(out, "  RSSI/TXDIS Select   : %s%s", choice(rssi_input_bit, "RSSI input", "TXDIS input"),
           line_end);
    append(out, "  XGSPON TXDIS Select : %s%s", choice(no_xgpon_txdis_bit, "", "XGPON TXDIS"), line_end);
    append(out, "  GPON TXDIS Select   : %s%s", choice(no_gpon_txdis_bit, "", "GPON TXDIS"), line_end);
    return out;
}

} // namespace diagd
