// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/bus/transaction_log.hpp"

#include <algorithm>
#include <cstdio>

namespace sim {

void TransactionLog::add_entry(std::variant<Transaction, std::string> what)
{
    Entry entry{next_, Clock::now(), std::move(what)};
    const std::size_t place = next_ % capacity_;
    if (place < entries_.size())
        entries_[place] = std::move(entry);
    else {
        while (entries_.size() < place)
            entries_.push_back({0, {}, std::string()});
        entries_.push_back(std::move(entry));
    }
    ++next_;
    if (added_)
        added_();
}

void TransactionLog::clear()
{
    first_ = next_;
}

std::string TransactionLog::line(const Entry &entry)
{
    char head[64];
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(entry.time.time_since_epoch()).count();
    std::snprintf(head, sizeof head, "%06lu %ld ", entry.sequence, static_cast<long>(ms));
    if (const auto *text = std::get_if<std::string>(&entry.what))
        return head + *text;
    const auto &transaction = std::get<Transaction>(entry.what);
    return head + std::string(transaction.thread_name()) + " " + transaction.text();
}

void TransactionLog::each(std::uint64_t since, const std::function<void(const std::string &line)> &use) const
{
    const std::uint64_t kept = next_ > capacity_ ? next_ - capacity_ : 1;
    for (std::uint64_t i = std::max({since, first_, kept}); i < next_; ++i)
        use(line(entries_[i % capacity_]));
}

} // namespace sim
