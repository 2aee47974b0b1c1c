// SPDX-License-Identifier: GPL-2.0-or-later
// One pass of the threshold monitor: read, judge, report.
// Failure policy: board thresholds that cannot be read are 0 for the pass; what a sampler cannot read is 0; a
// port whose module cannot be reached is skipped, each of its alarms trying anew.  A pass is never given up,
// and the next comes three seconds after its end.
#include "diagd/alarm_log/thresholds/threshold_monitor.hpp"

#include "base/owner.hpp"
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/thresholds/threshold_parser.hpp"
#include "diagd/alarm_log/thresholds/threshold_report.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/board/lm75.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/state.hpp"
#include "diagd/system_cli/usage_samplers.hpp"
#include "diagd/transceiver/memory/pon_optics.hpp"

namespace diagd {

namespace {

constexpr long period_s = 3;

std::array<AlarmState, board_alarms.size()> board_states;
std::array<std::array<std::array<AlarmState, pon_alarm_count>, pon_port_count>, pon_type_count> pon_states;
struct thread *timer;

// Judges the value, keeps the new state and gives what there is to report.
Report follow(AlarmState &state, float value, const Thresholds &thresholds, Direction direction)
{
    const Verdict verdict = judge(value, thresholds, direction, state);
    state = verdict.state;
    return verdict.report;
}

BoardThresholds read_board_thresholds()
{
    char *xml = nullptr;
    const int code = db_olt_alarm_log_show_xml_threshold(&g_diagd_db, &xml);
    const base::MallocText owner{xml};
    return code == 0 && xml != nullptr ? parse_board_thresholds(xml) : BoardThresholds{};
}

// Whether any action is taken; one that cannot be read counts as switched off.
bool is_watched(std::uint16_t id)
{
    bool any = false;
    for (const ActionSwitch &one : action_switches) {
        std::uint8_t on = 0;
        int length = sizeof on;
        one.get(id, &g_diagd_db, &on, &length);
        any = any || on != 0;
    }
    return any;
}

float board_temperature_c()
{
    return value_from_tenths(lm75_temperature_get());
}

float cpu_usage_percent()
{
    float percent = 0.0F;
    get_cpu_usage(nullptr, &percent);
    return percent;
}

float memory_usage_percent()
{
    float percent = 0.0F;
    system_memory_usage_get(&percent);
    return percent;
}

// In the order of the alarms.
constexpr auto board_samplers = std::to_array<float (*)()>(
    {board_temperature_c, board_temperature_c, cpu_usage_percent, memory_usage_percent});
static_assert(board_samplers.size() == board_alarms.size());

void watch_board()
{
    const BoardThresholds thresholds = read_board_thresholds();
    for (std::size_t i = 0; i < board_alarms.size(); ++i) {
        const ThresholdAlarm &alarm = board_alarms[i];
        if (!is_watched(alarm.id))
            continue;
        const float value = board_samplers[i]();
        const Report report = follow(board_states[i], value, thresholds[i], alarm.direction);
        report_board_alarm(alarm, report, value, thresholds[i].alarm);
    }
}

struct Optics {
    float temperature_c, voltage_v, bias_ma, tx_power_dbm, rx_power_dbm;
};

// What the optical alarms compare, in their order.
constexpr auto compared = std::to_array<float Optics::*>(
    {&Optics::tx_power_dbm, &Optics::tx_power_dbm, &Optics::bias_ma, &Optics::bias_ma, &Optics::voltage_v,
     &Optics::voltage_v, &Optics::temperature_c, &Optics::temperature_c});
static_assert(compared.size() == pon_alarm_count && pon_alarms_with_threshold.size() == pon_alarm_count);

// One optical read serves all alarms of the port.
void watch_port(PortKind kind, std::size_t port)
{
    const PonPort name{kind == PortKind::xgpon ? "XGPON" : "GPON", static_cast<unsigned>(port + 1)};
    Optics optics{};
    bool is_read = false;
    for (std::size_t i = 0; i < pon_alarm_count; ++i) {
        const PonThreshold &threshold = diagm.pon_thresholds[pon_index(kind)][port][i];
        if (threshold.enabled == 0)
            continue;
        is_read = is_read || pon_intf_optical_transceiver_get(
                                 static_cast<std::uint8_t>(kind), static_cast<std::uint8_t>(name.number),
                                 &optics.temperature_c, &optics.voltage_v, &optics.bias_ma,
                                 &optics.tx_power_dbm, &optics.rx_power_dbm) == 0;
        if (!is_read)
            continue;
        const ThresholdAlarm &alarm = pon_alarms_with_threshold[i];
        const float value = optics.*compared[i];
        const Report report = follow(pon_states[pon_index(kind)][port][i], value,
                                     {threshold.alarm, threshold.clear}, alarm.direction);
        report_pon_alarm(alarm, name, report, value, threshold.alarm);
    }
}

void watch_ports(PortKind kind)
{
    for (std::size_t port = 0; port < pon_port_count; ++port) {
        if (diagm.transceiver_monitor.load(std::memory_order_relaxed) == 0)
            return;
        watch_port(kind, port);
    }
}

void alarm_log_threshold_monitor(struct thread *) noexcept;

void arm()
{
    thread_add_timer(diagm.master, alarm_log_threshold_monitor, nullptr, period_s, &timer);
}

void alarm_log_threshold_monitor(struct thread *) noexcept
{
    watch_board();
    for (const PortKind kind : {PortKind::gpon, PortKind::xgpon})
        watch_ports(kind);
    arm();
}

} // namespace

void start_threshold_monitor()
{
    board_states.fill(AlarmState::unknown);
    for (auto &ports : pon_states)
        for (auto &states : ports)
            states.fill(AlarmState::unknown);
    diagm.transceiver_monitor.store(1, std::memory_order_relaxed);
    arm();
}

} // namespace diagd
