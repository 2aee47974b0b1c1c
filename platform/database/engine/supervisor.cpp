// SPDX-License-Identifier: GPL-2.0-or-later
// Keeping a database connected (see supervisor.hpp).
#include "platform/database/engine/supervisor.hpp"

#include "tq_errno.h"

#include <algorithm>
#include <utility>

namespace tq::db {

namespace {
// Attempts take a tenth of the time at most: a wrecked state is tried for 15 seconds and more.
constexpr int pause_factor = 10;
constexpr std::chrono::seconds longest_pause{60};
} // namespace

int Supervisor::connect()
{
    cache_.load({}); // of an earlier life
    const int code = make_connection();
    is_wanted_ = code == TQ_OK;
    return code;
}

void Supervisor::disconnect()
{
    int code = TQ_OK;
    const bool is_broken = repository_ && repository_->condition(code) == Condition::broken;
    const bool is_stuck = is_suspect_ || (repository_ && repository_->is_stuck());
    drop(is_broken ? Trust::none : is_stuck ? Trust::stuck : Trust::usual);
    is_wanted_ = false;
    sessions_.clear();
    modules_.clear();
}

void Supervisor::note(int code, bool is_in_time)
{
    if (code == TQ_ERR_TIMEOUT || !is_in_time)
        is_suspect_ = true;
    else if (code == TQ_OK)
        is_suspect_ = false;
}

int Supervisor::subscribe(const tq_db_module &module)
{
    modules_.push_back(module);
    return repository_->subscribe(module);
}

int Supervisor::open_session(const struct vty *vty)
{
    Session &session = sessions_[vty];
    const int code = ready();
    return code == TQ_OK && !session ? repository_->start_session(session) : code;
}

int Supervisor::close_session(const struct vty *vty)
{
    return sessions_.erase(vty) ? TQ_OK : TQ_ERR_NOT_FOUND;
}

int Supervisor::validate(Slot slot, const char *text)
{
    const std::lock_guard lock(exchange_);
    if (!repository_)
        return TQ_ERR_NO_DB;
    return repository_->is_valid(slot, text) ? TQ_OK : TQ_ERR_INVALID;
}

int Supervisor::ready()
{
    if (!is_wanted_)
        return TQ_ERR_NO_DB;
    if (repository_) {
        int code = TQ_OK;
        switch (repository_->condition(code)) {
        case Condition::sound:
            is_suspect_ = is_suspect_ || repository_->is_stuck();
            if (is_suspect_ && is_state_unused()) {
                drop(Trust::stuck);
                break;
            }
            repository_->try_again();
            if (is_away_) // what others changed meanwhile may have gone by
                code = repository_->reload();
            is_away_ = code != TQ_OK;
            is_reachable_ = !is_away_;
            return code;
        case Condition::away:
            is_away_ = true;
            is_reachable_ = false;
            return code;
        case Condition::replaced:
            drop(is_suspect_ ? Trust::stuck : Trust::usual);
            break;
        case Condition::broken:
            drop(Trust::none);
            break;
        }
    }
    return Clock::now() < next_attempt_ ? last_failure_ : make_connection();
}

int Supervisor::make_connection()
{
    const auto begin = Clock::now();
    std::unique_ptr<Repository> made;
    last_failure_ = Repository::open(cache_, std::exchange(trust_, Trust::usual), made);
    if (last_failure_ != TQ_OK) {
        const auto end = Clock::now();
        next_attempt_ = end + std::min<Clock::duration>(pause_factor * (end - begin), longest_pause);
        return last_failure_;
    }
    next_attempt_ = {};
    for (const tq_db_module &module : modules_)
        made->subscribe(module);
    for (auto &[vty, session] : sessions_)
        made->start_session(session);
    const std::lock_guard lock(exchange_);
    repository_ = std::move(made);
    is_away_ = is_suspect_ = false;
    is_reachable_ = true;
    return TQ_OK;
}

void Supervisor::drop(Trust trust)
{
    is_reachable_ = false;
    for (auto &[vty, session] : sessions_)
        if (trust == Trust::usual)
            session.reset();
        else
            leak(session.release());
    std::unique_ptr<Repository> dropped;
    {
        const std::lock_guard lock(exchange_);
        dropped = std::move(repository_);
    }
    if (dropped && trust != Trust::usual)
        dropped->abandon();
    trust_ = trust;
}

} // namespace tq::db
