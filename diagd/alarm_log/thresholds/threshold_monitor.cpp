// SPDX-License-Identifier: GPL-2.0-or-later
// One pass of the threshold monitor: read, evaluate, report.
// Failure policy: board thresholds that cannot be read are 0 for the pass; what a sampler cannot read is 0; a
// port whose module cannot be reached is skipped, each of its alarms trying again.  A pass is never given up,
// and the next comes three seconds after its end.
#include "base/owner.hpp"
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/thresholds/thresholds.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/board/lm75.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"
#include "diagd/system_cli/usage_samplers.hpp"
#include "diagd/transceiver/memory/pon_optics.hpp"

#include "tq_api.h"

namespace diagd {

namespace {

constexpr long period_s = 3;

std::array<ThresholdState, board_alarms.size()> board_states;
std::array<std::array<std::array<ThresholdState, pon_alarm_count>, pon_port_count>, pon_type_count>
    pon_states;
struct thread *timer;

// Evaluates the value, keeps the new state and gives what there is to report.
Report follow(ThresholdState &state, float value, const Thresholds &thresholds, Direction direction)
{
    const Evaluation evaluation = evaluate(value, thresholds, direction, state);
    state = evaluation.state;
    return evaluation.report;
}

// Records of threshold alarms, unless there is nothing to report.  An action that fails is the alarm
// library's to report.
void report_board_alarm(const ThresholdAlarm &alarm, Report report, float value, float threshold)
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm.id;
    if (report != Report::nothing)
        diagd::await_free(alarm_log_sem_id);
    switch (report) {
    case Report::nothing:
        break;
    case Report::is_above:
        cli_log(&g_diagd_db, &request, "%.2f %s is above threshold %.2f %s", value, alarm.unit, threshold,
                alarm.unit);
        break;
    case Report::back_from_above:
        cli_log(&g_diagd_db, &request, "%.2f %s from above threshold returns to normal", value, alarm.unit);
        break;
    case Report::is_below:
        cli_log(&g_diagd_db, &request, "%.2f %s is below threshold %.2f %s", value, alarm.unit, threshold,
                alarm.unit);
        break;
    case Report::back_from_below:
        cli_log(&g_diagd_db, &request, "%.2f %s from below threshold returns to normal", value, alarm.unit);
        break;
    }
}

struct PonPort {
    const char *type; // "GPON" or "XGPON"
    unsigned number;  // 1 to 8
};

void report_pon_alarm(const ThresholdAlarm &alarm, const PonPort &port, Report report, float value,
                      float threshold)
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm.id;
    if (report != Report::nothing)
        diagd::await_free(alarm_log_sem_id);
    switch (report) {
    case Report::nothing:
        break;
    case Report::is_above:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s is above threshold %.2f %s", port.type, port.number,
                value, alarm.unit, threshold, alarm.unit);
        break;
    case Report::back_from_above:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s from above threshold returns to normal", port.type,
                port.number, value, alarm.unit);
        break;
    case Report::is_below:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s is below threshold %.2f %s", port.type, port.number,
                value, alarm.unit, threshold, alarm.unit);
        break;
    case Report::back_from_below:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s from below threshold returns to normal", port.type,
                port.number, value, alarm.unit);
        break;
    }
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
    board_states.fill(ThresholdState::unknown);
    for (auto &ports : pon_states)
        for (auto &states : ports)
            states.fill(ThresholdState::unknown);
    diagm.transceiver_monitor.store(1, std::memory_order_relaxed);
    arm();
}

} // namespace diagd
