// SPDX-License-Identifier: GPL-2.0-or-later
#include "tests/unit/platform/database_getters_double.hpp"
#include "tq_database.h"

#include <cstring>

DatabaseDouble database_double;

namespace {

int give_text(const std::string &text, void *buffer, int *length)
{
    if (database_double.result != 0)
        return database_double.result;
    const std::size_t size = std::min(text.size(), static_cast<std::size_t>(*length) - 1);
    std::memcpy(buffer, text.data(), size);
    static_cast<char *>(buffer)[size] = '\0';
    *length = static_cast<int>(size);
    return 0;
}

int give_switch(const std::map<int, bool> &values, std::uint16_t id, void *buffer, int *length)
{
    ++database_double.calls;
    const auto found = values.find(id);
    if (database_double.result != 0 || found == values.end() || *length < 1)
        return database_double.result != 0 ? database_double.result : TQ_ERR_NOT_FOUND;
    *static_cast<std::uint8_t *>(buffer) = found->second;
    *length = 1;
    return 0;
}

template <class Number>
int give_number(int value, void *buffer, int *length)
{
    if (database_double.server_result != 0 || value < 0)
        return database_double.server_result != 0 ? database_double.server_result : TQ_ERR_NOT_FOUND;
    if (*length < static_cast<int>(sizeof(Number)))
        return TQ_ERR_INVALID;
    const auto number = static_cast<Number>(value);
    std::memcpy(buffer, &number, sizeof number);
    *length = sizeof number;
    return 0;
}

int give_address(const std::string &address, void *buffer, int *length)
{
    return address.empty() ? TQ_ERR_NOT_FOUND : give_text(address, buffer, length);
}

} // namespace

int db_olt_alarm_log_get_alarm_level(uint16_t id, tq_database_t *, void *buffer, int *length)
{
    ++database_double.calls;
    const auto found = database_double.level.find(id);
    return found == database_double.level.end() ? TQ_ERR_NOT_FOUND : give_text(found->second, buffer, length);
}

int db_olt_alarm_log_get_action_print(uint16_t id, tq_database_t *, void *buffer, int *length)
{
    return give_switch(database_double.print, id, buffer, length);
}

int db_olt_alarm_log_get_action_record(uint16_t id, tq_database_t *, void *buffer, int *length)
{
    return give_switch(database_double.record, id, buffer, length);
}

int db_olt_alarm_log_get_action_trap(uint16_t id, tq_database_t *, void *buffer, int *length)
{
    return give_switch(database_double.trap, id, buffer, length);
}

int db_olt_alarm_log_get_action_remote(uint16_t id, tq_database_t *, void *buffer, int *length)
{
    return give_switch(database_double.remote, id, buffer, length);
}

int db_olt_alarm_log_get_alarm_log_flash_level(tq_database_t *, void *buffer, int *length)
{
    return give_text(database_double.flash_level, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv4_enable(tq_database_t *, void *buffer, int *length)
{
    return give_number<std::uint8_t>(database_double.ipv4.enable, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr(tq_database_t *, void *buffer, int *length)
{
    return give_address(database_double.ipv4.address, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv4_port(tq_database_t *, void *buffer, int *length)
{
    return give_number<std::uint16_t>(database_double.ipv4.port, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv6_enable(tq_database_t *, void *buffer, int *length)
{
    return give_number<std::uint8_t>(database_double.ipv6.enable, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr(tq_database_t *, void *buffer, int *length)
{
    return give_address(database_double.ipv6.address, buffer, length);
}

int db_olt_alarm_log_get_remote_server_ipv6_port(tq_database_t *, void *buffer, int *length)
{
    return give_number<std::uint16_t>(database_double.ipv6.port, buffer, length);
}
