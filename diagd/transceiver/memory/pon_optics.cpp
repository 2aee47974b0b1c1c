// SPDX-License-Identifier: GPL-2.0-or-later
// Optical readings of a PON port (see pon_optics.hpp).
//
// Failure policy: a CPLD that cannot be opened, an empty cage and a channel that cannot be selected are all
// -1, with nothing written and the board given back.  Behind them a failed read is 0 and flows into the
// values.
#include "diagd/transceiver/memory/pon_optics.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/diagnostics.hpp"
#include "diagd/transceiver/memory/memory_map.hpp"

using namespace diagd;

namespace {

struct Outputs {
    float &temperature_c, &voltage_v, &bias_ma, &tx_power_dbm, &rx_power_dbm;
};

void read_into(std::uint32_t handle, PathAddress path, PortKind wanted, const Outputs &out) noexcept
{
    const std::optional<OpticalValues> values = read_path_of(wanted, handle, path, threshold_policy).values;
    if (!values)
        return;
    out.temperature_c = values->temperature_c;
    out.voltage_v = values->voltage_v;
    out.bias_ma = values->bias_ma;
    out.tx_power_dbm = values->tx_power_dbm;
    out.rx_power_dbm = values->rx_power_dbm;
}

void read_first_lane(std::uint32_t handle, const Outputs &out) noexcept
{
    out.temperature_c = read_sff8636_temperature_c(handle);
    out.voltage_v = read_sff8636_voltage_v(handle);
    read_sff8636_bias_ma(handle, {&out.bias_ma, 1});
    read_sff8636_tx_power_dbm(handle, {&out.tx_power_dbm, 1});
}

} // namespace

int pon_intf_optical_transceiver_get(std::uint8_t type, std::uint8_t port, float *temperature_c,
                                     float *voltage_v, float *bias_ma, float *tx_power_dbm,
                                     float *rx_power_dbm) noexcept
{
    const BoardSession board{"pon_intf_optical_transceiver_get", SessionPolicy::lower_then_release};
    if (!board)
        return -1;
    const ModuleSession module{board, PortKind::gpon, port};
    if (!module)
        return -1;

    const Outputs out{*temperature_c, *voltage_v, *bias_ma, *tx_power_dbm, *rx_power_dbm};
    const std::uint32_t handle = module.handle();
    switch (module_family(transceiver_read_byte(handle, first_path.id, identifier_byte))) {
    case ModuleFamily::sff8472:
        // Of a combo module one path matches; when both do, the second one's values stand.
        for (const PathAddress path : {first_path, second_path})
            read_into(handle, path, static_cast<PortKind>(type), out);
        break;
    case ModuleFamily::sff8636:
        read_first_lane(handle, out);
        break;
    case ModuleFamily::unsupported:
        break;
    }
    return 0;
}
