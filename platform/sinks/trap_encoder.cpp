// SPDX-License-Identifier: GPL-2.0-or-later
// SNMPv2c notifications (RFC 3416 section 4.2.6; see trap_encoder.hpp).
//
// net-snmp encodes; it opens no session.  A session would bring its initialisation, which reads the machine's
// configuration files and changes the process's locale, and a socket whose sending may wait.
#include "platform/sinks/trap_encoder.hpp"

#include "base/owner.hpp"
#include "tq_api.h"

// The first must come before the others.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace tq {

namespace {

constexpr std::size_t max_text = 1023; // OltAlarmText
// The longest text and community leave some 300 bytes of it, so the encoder never fails; it would say so on
// standard error.
constexpr std::size_t max_size = 2048;

constexpr oid sys_uptime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};                   // SNMPv2-MIB sysUpTime.0
constexpr oid trap_oid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};               // SNMPv2-MIB snmpTrapOID.0
constexpr oid olt_alarm[] = {1, 3, 6, 1, 4, 1, enterprise_number, 1, 0, 1}; // OLT-ALARM-MIB oltAlarm

// Last number of each object of oltAlarmObjects.
enum Object : oid {
    object_id = 1,
    object_name,
    object_class,
    object_level,
    object_description,
    object_message,
    object_time,
    object_uplink_port,
    object_pon,
    object_onu,
    object_onu_port,
};

using Pdu = base::Owner<netsnmp_pdu, snmp_free_pdu>;
using Buffer = base::Owner<u_char, std::free>;

// Values of a notification; remembers when one could not be added.
class Values {
public:
    explicit Values(netsnmp_pdu *pdu) : pdu_(pdu) {}

    template <std::size_t N>
    void add(const oid (&name)[N], u_char type, const void *value, std::size_t size)
    {
        is_complete_ = is_complete_ && snmp_pdu_add_variable(pdu_, name, N, type, value, size) != nullptr;
    }
    void add(Object object, u_char type, const void *value, std::size_t size)
    {
        // Object and instance; each is a scalar.
        const oid name[] = {1, 3, 6, 1, 4, 1, enterprise_number, 1, 1, object, 0};
        add(name, type, value, size);
    }
    void number(Object object, unsigned long value) { add(object, ASN_UNSIGNED, &value, sizeof value); }
    void choice(Object object, long value) { add(object, ASN_INTEGER, &value, sizeof value); }
    void text(Object object, std::string_view value)
    {
        add(object, ASN_OCTET_STR, value.data(), value.size());
    }

    [[nodiscard]] bool is_complete() const { return is_complete_; }

private:
    netsnmp_pdu *pdu_;
    bool is_complete_ = true;
};

// DateAndTime of SNMPv2-TC (RFC 2579).
std::array<char, 11> date_and_time(const Alarm &alarm)
{
    const std::tm &time = alarm.time;
    const int year = time.tm_year + 1900;
    const long offset_min = time.tm_gmtoff / 60;
    const auto octet = [](auto value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    return {octet(year >> 8),
            octet(year),
            octet(time.tm_mon + 1),
            octet(time.tm_mday),
            octet(time.tm_hour),
            octet(time.tm_min),
            octet(time.tm_sec),
            octet(alarm.microseconds / 100'000),
            offset_min < 0 ? '-' : '+',
            octet(std::labs(offset_min) / 60),
            octet(std::labs(offset_min) % 60)};
}

bool add_values(netsnmp_pdu *pdu, const Alarm &alarm, unsigned long uptime)
{
    constexpr long class_event = 1;
    const tq_alarm_info_t *info = alarm.id < TQ_ALARM_COUNT ? &tq_alarm_log_info[alarm.id] : nullptr;
    const auto time = date_and_time(alarm);
    Values values(pdu);
    values.add(sys_uptime, ASN_TIMETICKS, &uptime, sizeof uptime);
    values.add(trap_oid, ASN_OBJECT_ID, olt_alarm, sizeof olt_alarm);
    values.number(object_id, alarm.id);
    values.text(object_name, info ? info->name : "");
    values.choice(object_class, info ? static_cast<long>(info->class_) : class_event);
    values.choice(object_level, alarm.level);
    values.text(object_description, info ? info->description : "");
    values.text(object_message, std::string_view(alarm.message).substr(0, max_text));
    values.text(object_time, {time.data(), time.size()});
    values.number(object_uplink_port, alarm.request.uplink_port);
    values.number(object_pon, alarm.request.pon);
    values.number(object_onu, alarm.request.onu);
    values.number(object_onu_port, alarm.request.onu_port);
    return values.is_complete();
}

// Empty when it cannot be made.
std::string encode(const Alarm &alarm, const std::string &community, unsigned long uptime)
{
    const Pdu pdu(snmp_pdu_create(SNMP_MSG_TRAP2));
    if (!pdu || !add_values(pdu.get(), alarm, uptime))
        return {};
    netsnmp_session session{};
    session.version = pdu->version = SNMP_VERSION_2c;
    session.community = reinterpret_cast<u_char *>(const_cast<char *>(community.data())); // copied
    session.community_len = community.size();

    // The encoder may take a larger buffer in place of this one.
    Buffer buffer(static_cast<u_char *>(std::malloc(max_size)));
    if (!buffer)
        return {};
    std::size_t size = max_size, used = 0;
    u_char *start = buffer.release();
    const int result = snmp_build(&start, &size, &used, &session, pdu.get());
    buffer.reset(start);
    if (result != 0)
        return {};
    // Forwards, the size becomes that of the message; backwards, which the program around may have chosen, it
    // stays that of the buffer, whose end the message fills.
    if (!netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_REVERSE_ENCODE))
        return {reinterpret_cast<char *>(start), size};
    return {reinterpret_cast<char *>(start + (size - used)), used};
}

} // namespace

} // namespace tq

void tq_trap_encode(const tq::Alarm &alarm, const std::string &community, unsigned long uptime,
                    std::string &message)
{
    message = tq::encode(alarm, community, uptime);
}
