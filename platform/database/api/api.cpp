// SPDX-License-Identifier: GPL-2.0-or-later
// Exported functions about the database itself: life, transactions, XML, subscriptions, sessions.
#include "platform/database/api/api.hpp"
#include "platform/database/engine/messages.hpp"
#include "platform/database/engine/subscriptions.hpp"

#include <map>
#include <memory>
#include <mutex>

using namespace tq::db;

namespace {
// Databases outlive everything: other threads may still ask them while the process ends.
Database &database_for(const tq_database_t *handle)
{
    static std::mutex mutex;
    static auto &all = *new std::map<const tq_database_t *, std::unique_ptr<Database>>;
    const std::lock_guard lock(mutex);
    auto &database = all[handle];
    if (!database)
        database = std::make_unique<Database>();
    return *database;
}
} // namespace

int database_init(tq_database_t *db)
{
    return tq::traced("database_init", [&]() -> int {
        if (!db)
            return TQ_ERR_INVALID;
        try {
            apply_log_setting();
            Database &database = database_for(db);
            const int code = database.connect();
            db->conn = code == TQ_OK ? &database : nullptr;
            return code;
        } catch (const std::bad_alloc &) {
            return TQ_ERR_NO_MEMORY;
        } catch (...) {
            return TQ_ERR;
        }
    });
}

void database_disconnect(tq_database_t *db)
{
    tq::traced("database_disconnect", [&] {
        if (Database *database = database_of(db))
            database->disconnect();
    });
}

int db_database_init(tq_database_t *db, const struct tq_db_module *const modules[])
{
    return exported("db_database_init", db, [&](Database &database) -> int {
        if (!modules)
            return TQ_ERR_INVALID;
        for (; *modules; ++modules)
            if (const int code = database.subscribe(**modules); code != TQ_OK)
                return code;
        return TQ_OK;
    });
}

int tq_db_get_change_next(void *session, void **iter, int *op, void **old_val, void **new_val)
{
    return tq::traced("tq_db_get_change_next", [&]() -> int {
        if (!session || !iter || !op || !old_val || !new_val)
            return TQ_ERR_INVALID;
        return next_change(session, iter, op, old_val, new_val);
    });
}

int db_connect_init_with_vty(struct vty *vty, tq_database_t *db)
{
    return exported("db_connect_init_with_vty", db,
                    [&](Database &database) { return database.open_session(vty); });
}

int db_disconnect_free_with_vty(struct vty *vty, tq_database_t *db)
{
    return exported("db_disconnect_free_with_vty", db,
                    [&](Database &database) { return database.close_session(vty); });
}

int db_apply_lock(tq_database_t *db)
{
    return exported("db_apply_lock", db, [](Database &database) { return database.lock(); });
}

int db_apply_unlock(tq_database_t *db)
{
    return exported("db_apply_unlock", db, [](Database &database) { return database.unlock(); });
}

int db_apply_changes(void *conn)
{
    return exported("db_apply_changes", conn, [](Database &database) { return database.apply_pending(); });
}

int db_discard_changes(void *conn)
{
    return exported("db_discard_changes", conn,
                    [](Database &database) { return database.discard_pending(); });
}

int db_olt_alarm_log_show_xml_alarm_id(tq_database_t *db, char **xml)
{
    return exported("db_olt_alarm_log_show_xml_alarm_id", db,
                    [&](const Database &database) { return database.alarms_as_xml(xml); });
}

int db_olt_alarm_log_show_xml_threshold(tq_database_t *db, char **xml)
{
    return exported("db_olt_alarm_log_show_xml_threshold", db,
                    [&](const Database &database) { return database.thresholds_as_xml(xml); });
}
