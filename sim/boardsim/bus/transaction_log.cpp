// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/bus/transaction_log.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/printable.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::string bytes(const Transaction &t)
{
    const std::string text = hex_text(std::span(t.data).first(t.data_size));
    return t.length > t.data_size ? text + ".." : text;
}

} // namespace

std::string Transaction::text() const
{
    using board::SimOp;
    std::string line(op_names[static_cast<std::size_t>(op)]);
    line += format(" h=%u", handle);
    const bool read = op == SimOp::i2c_read || op == SimOp::cpld_read || op == SimOp::phy_read;
    switch (op) {
    case SimOp::open:
        line += format(" bus=%d", bus);
        break;
    case SimOp::i2c_read:
    case SimOp::i2c_write:
        line += channel != no_channel ? format(" ch=%d", channel) : format(" bus=%d", bus);
        line += format(" addr=0x%02x reg=%u len=%u", address, reg, length);
        break;
    case SimOp::cpld_read:
    case SimOp::cpld_write:
        line += format(" reg=%u", reg);
        break;
    case SimOp::select:
        line += format(" ch=%d", channel);
        break;
    case SimOp::deselect:
        break;
    case SimOp::phy_read:
    case SimOp::phy_write:
        line += format(" phy=%u reg=0x%x", phy, phy_reg);
        break;
    }
    if (data_size != 0 && !read)
        line += " val=0x" + bytes(*this);
    line += " -> ";
    if (result < 0)
        return line + std::to_string(result) + " " + std::strerror(-result);
    return line + (read ? "0x" + bytes(*this) : "0");
}

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
    // A thread names itself as it likes.
    return head + base::printable(transaction.thread_name()) + " " + transaction.text();
}

void TransactionLog::each(std::uint64_t since, const std::function<void(const std::string &line)> &use) const
{
    const std::uint64_t kept = next_ > capacity_ ? next_ - capacity_ : 1;
    for (std::uint64_t i = std::max({since, first_, kept}); i < next_; ++i)
        use(line(entries_[i % capacity_]));
}

} // namespace sim
