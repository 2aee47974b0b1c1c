// SPDX-License-Identifier: GPL-2.0-or-later
// Keeping a database connected, on the keeper's thread.
//
// Failure policy: a repository that cannot be reached is waited for, with the connection as it is.  One that
// was replaced, or whose shared state is gone, is connected to anew: at every change that is asked for and
// every look, unless the last attempt took long.  A state that was cut, or whose locks died with their holder
// while nobody else is connected, is made anew.  What it had then comes from the mirror.
#include "platform/database/engine/database.hpp"

#include "tq_errno.h"

#include <algorithm>
#include <utility>

namespace tq::db {

namespace {
// Attempts take a tenth of the time at most: a wrecked state is tried for 15 seconds and more.
constexpr int pause_factor = 10;
constexpr std::chrono::seconds longest_pause{60};

int subscribe_to(Repository &repository, const tq_db_module &module)
{
    for (const tq_db_entry *entry = module.entries; entry->xpath; ++entry)
        if (const int code = repository.subscribe(module.name, *entry); code != TQ_OK)
            return code;
    return TQ_OK;
}
} // namespace

int Database::add_module(const tq_db_module &module)
{
    modules_.push_back(module);
    return subscribe_to(*repository_, module);
}

int Database::ready()
{
    if (!is_kept_)
        return TQ_ERR_NO_DB;
    if (repository_) {
        int code = TQ_OK;
        switch (repository_->standing(code)) {
        case Standing::firm:
            is_suspect_ = is_suspect_ || repository_->is_stuck();
            if (is_suspect_ && Repository::is_alone()) {
                drop(Trust::stuck);
                break;
            }
            repository_->try_again();
            if (is_away_) // what others changed meanwhile may have gone by
                code = repository_->reload();
            is_away_ = code != TQ_OK;
            is_reachable_ = !is_away_;
            return code;
        case Standing::away:
            is_away_ = true;
            is_reachable_ = false;
            return code;
        case Standing::replaced:
            drop(is_suspect_ ? Trust::stuck : Trust::usual);
            break;
        case Standing::broken:
            drop(Trust::none);
            break;
        }
    }
    return Clock::now() < next_attempt_ ? last_failure_ : make_connection();
}

int Database::make_connection()
{
    const auto begin = Clock::now();
    std::unique_ptr<Repository> made;
    last_failure_ = Repository::open(mirror_, std::exchange(trust_, Trust::usual), made);
    if (last_failure_ != TQ_OK) {
        const auto end = Clock::now();
        next_attempt_ = end + std::min<Clock::duration>(pause_factor * (end - begin), longest_pause);
        return last_failure_;
    }
    next_attempt_ = {};
    for (const tq_db_module &module : modules_)
        subscribe_to(*made, module);
    for (auto &[vty, session] : sessions_)
        made->start_session(session);
    const std::lock_guard lock(schema_);
    repository_ = std::move(made);
    is_away_ = is_suspect_ = false;
    is_reachable_ = true;
    return TQ_OK;
}

void Database::drop(Trust trust)
{
    is_reachable_ = false;
    for (auto &[vty, session] : sessions_)
        if (trust == Trust::usual)
            session.reset();
        else
            leave_behind(session.release());
    std::unique_ptr<Repository> dropped;
    {
        const std::lock_guard lock(schema_);
        dropped = std::move(repository_);
    }
    if (dropped && trust != Trust::usual)
        dropped->abandon();
    trust_ = trust;
}

} // namespace tq::db
