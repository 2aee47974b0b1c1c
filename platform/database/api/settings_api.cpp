// SPDX-License-Identifier: GPL-2.0-or-later
// Exported setters, getters and deleters: one line for each, over the table of settings.
#include "platform/database/api/api.hpp"

#include <cstring>

namespace tq::db {

void ValueArg::append_to(TraceLine &line) const noexcept
{
    if (!value) {
        line.token("val", "NULL");
        return;
    }
    if (is_output && !line.has_result_values())
        return;
    std::uint16_t port = 0;
    std::int32_t number = 0;
    switch (kind) {
    case Kind::text:
        line.text("val", static_cast<const char *>(value));
        break;
    case Kind::flag:
        line.integer("val", *static_cast<const std::uint8_t *>(value));
        break;
    case Kind::u16:
        std::memcpy(&port, value, sizeof port);
        line.integer("val", port);
        break;
    case Kind::i32:
        std::memcpy(&number, value, sizeof number);
        line.integer("val", number);
        break;
    }
}

namespace {
using Handle = tq_database_t *;

int set_plain(const char *op, Field field, Handle db, const void *value, int width, int apply)
{
    const Slot slot = slot_of(field);
    return exported(
        op, db, [&](Database &database) { return database.set(slot, value, width, apply != 0); },
        ValueArg{setting_of(slot).kind, value, false}, arg("width", width), arg("apply", apply));
}

int get_plain(const char *op, Field field, Handle db, void *buffer, int *len)
{
    const Slot slot = slot_of(field);
    return exported(
        op, db, [&](const Database &database) { return database.get(slot, buffer, len); },
        ValueArg{setting_of(slot).kind, buffer, true});
}

int set_of_alarm(const char *op, Field field, std::uint16_t id, Handle db, const void *value, int size,
                 int apply)
{
    return exported(
        op, db,
        [&](Database &database) {
            return id < TQ_ALARM_COUNT ? database.set(slot_of(field, id), value, size, apply != 0)
                                       : TQ_ERR_NOT_FOUND;
        },
        arg("id", id), ValueArg{settings[static_cast<std::size_t>(field)].kind, value, false},
        arg("size", size), arg("apply", apply));
}

int get_of_alarm(const char *op, Field field, std::uint16_t id, Handle db, void *buffer, int *len)
{
    return exported(
        op, db,
        [&](const Database &database) {
            return id < TQ_ALARM_COUNT ? database.get(slot_of(field, id), buffer, len) : TQ_ERR_NOT_FOUND;
        },
        arg("id", id), ValueArg{settings[static_cast<std::size_t>(field)].kind, buffer, true});
}

// A server is removed at once; thresholds together with the other changes of their alarm.
int remove_now(const char *op, Field field, Handle db)
{
    return exported(op, db, [&](Database &database) { return database.remove(slot_of(field)); });
}

int remove_pending(const char *op, Field field, Handle db)
{
    return exported(op, db, [&](Database &database) { return database.remove_pending(slot_of(field)); });
}
} // namespace
} // namespace tq::db

using namespace tq::db;

#define SETTER(op, field)                                                                                    \
    int op(tq_database_t *db, const void *value, int width, int apply)                                       \
    {                                                                                                        \
        return set_plain(#op, Field::field, db, value, width, apply);                                        \
    }
#define GETTER(op, field)                                                                                    \
    int op(tq_database_t *db, void *buffer, int *len)                                                        \
    {                                                                                                        \
        return get_plain(#op, Field::field, db, buffer, len);                                                \
    }
#define DELETER(op, field, remover)                                                                          \
    int op(tq_database_t *db)                                                                                \
    {                                                                                                        \
        return remover(#op, Field::field, db);                                                               \
    }
#define ALARM_SETTER(op, field)                                                                              \
    int op(uint16_t id, tq_database_t *db, const void *value, int size, int apply)                           \
    {                                                                                                        \
        return set_of_alarm(#op, Field::field, id, db, value, size, apply);                                  \
    }
#define ALARM_GETTER(op, field)                                                                              \
    int op(uint16_t id, tq_database_t *db, void *buffer, int *len)                                           \
    {                                                                                                        \
        return get_of_alarm(#op, Field::field, id, db, buffer, len);                                         \
    }

// clang-format off
SETTER (db_olt_alarm_log_set_remote_server_ipv4_enable,    server_ipv4_enable)
GETTER (db_olt_alarm_log_get_remote_server_ipv4_enable,    server_ipv4_enable)
SETTER (db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr, server_ipv4_addr)
GETTER (db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr, server_ipv4_addr)
DELETER(db_olt_alarm_log_del_remote_server_ipv4_ipv4_addr, server_ipv4_addr, remove_now)
SETTER (db_olt_alarm_log_set_remote_server_ipv4_port,      server_ipv4_port)
GETTER (db_olt_alarm_log_get_remote_server_ipv4_port,      server_ipv4_port)
DELETER(db_olt_alarm_log_del_remote_server_ipv4_port,      server_ipv4_port, remove_now)
SETTER (db_olt_alarm_log_set_remote_server_ipv6_enable,    server_ipv6_enable)
GETTER (db_olt_alarm_log_get_remote_server_ipv6_enable,    server_ipv6_enable)
SETTER (db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr, server_ipv6_addr)
GETTER (db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr, server_ipv6_addr)
DELETER(db_olt_alarm_log_del_remote_server_ipv6_ipv6_addr, server_ipv6_addr, remove_now)
SETTER (db_olt_alarm_log_set_remote_server_ipv6_port,      server_ipv6_port)
GETTER (db_olt_alarm_log_get_remote_server_ipv6_port,      server_ipv6_port)
DELETER(db_olt_alarm_log_del_remote_server_ipv6_port,      server_ipv6_port, remove_now)
SETTER (db_olt_alarm_log_set_alarm_log_flash_level,        flash_level)
GETTER (db_olt_alarm_log_get_alarm_log_flash_level,        flash_level)
SETTER (db_olt_ntp_set_ntp_diff_time,                      ntp_diff_time)

ALARM_SETTER(db_olt_alarm_log_set_alarm_name,    alarm_name)
ALARM_SETTER(db_olt_alarm_log_set_alarm_desc,    alarm_desc)
ALARM_SETTER(db_olt_alarm_log_set_alarm_type,    alarm_type)
ALARM_SETTER(db_olt_alarm_log_set_alarm_class,   alarm_class)
ALARM_SETTER(db_olt_alarm_log_set_alarm_level,   alarm_level)
ALARM_GETTER(db_olt_alarm_log_get_alarm_level,   alarm_level)
ALARM_SETTER(db_olt_alarm_log_set_action_print,  action_print)
ALARM_GETTER(db_olt_alarm_log_get_action_print,  action_print)
ALARM_SETTER(db_olt_alarm_log_set_action_record, action_record)
ALARM_GETTER(db_olt_alarm_log_get_action_record, action_record)
ALARM_SETTER(db_olt_alarm_log_set_action_trap,   action_trap)
ALARM_GETTER(db_olt_alarm_log_get_action_trap,   action_trap)
ALARM_SETTER(db_olt_alarm_log_set_action_remote, action_remote)
ALARM_GETTER(db_olt_alarm_log_get_action_remote, action_remote)

SETTER (db_olt_alarm_log_set_temp_high_alarm_threshold,      temp_high_alarm)
SETTER (db_olt_alarm_log_set_temp_high_clear_threshold,      temp_high_clear)
GETTER (db_olt_alarm_log_get_temp_high_alarm_threshold,      temp_high_alarm)
GETTER (db_olt_alarm_log_get_temp_high_clear_threshold,      temp_high_clear)
GETTER (db_olt_alarm_log_get_temp_low_alarm_threshold,       temp_low_alarm)
GETTER (db_olt_alarm_log_get_temp_low_clear_threshold,       temp_low_clear)
GETTER (db_olt_alarm_log_get_cpu_usage_high_alarm_threshold, cpu_usage_high_alarm)
GETTER (db_olt_alarm_log_get_cpu_usage_high_clear_threshold, cpu_usage_high_clear)
GETTER (db_olt_alarm_log_get_mem_usage_high_alarm_threshold, mem_usage_high_alarm)
GETTER (db_olt_alarm_log_get_mem_usage_high_clear_threshold, mem_usage_high_clear)
DELETER(db_olt_alarm_log_del_temp_high_alarm_threshold,      temp_high_alarm,      remove_pending)
DELETER(db_olt_alarm_log_del_temp_high_clear_threshold,      temp_high_clear,      remove_pending)
DELETER(db_olt_alarm_log_del_temp_low_alarm_threshold,       temp_low_alarm,       remove_pending)
DELETER(db_olt_alarm_log_del_temp_low_clear_threshold,       temp_low_clear,       remove_pending)
DELETER(db_olt_alarm_log_del_cpu_usage_high_alarm_threshold, cpu_usage_high_alarm, remove_pending)
DELETER(db_olt_alarm_log_del_cpu_usage_high_clear_threshold, cpu_usage_high_clear, remove_pending)
DELETER(db_olt_alarm_log_del_mem_usage_high_alarm_threshold, mem_usage_high_alarm, remove_pending)
DELETER(db_olt_alarm_log_del_mem_usage_high_clear_threshold, mem_usage_high_clear, remove_pending)
