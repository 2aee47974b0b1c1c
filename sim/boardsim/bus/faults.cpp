// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/bus/faults.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

#include "sim/modules/text.hpp"

namespace sim {

namespace {

constexpr long no_end = 1'000'000'000;

template <class T>
bool fits(const std::optional<T> &wanted, T actual)
{
    return !wanted || *wanted == actual;
}

bool has_register(board::SimOp op)
{
    using board::SimOp;
    return op != SimOp::open && op != SimOp::select && op != SimOp::deselect;
}

bool is_phy(board::SimOp op)
{
    return op == board::SimOp::phy_read || op == board::SimOp::phy_write;
}

} // namespace

bool Fault::matches(const Transaction &t) const
{
    if (!fits(op, t.op) || !fits(bus, static_cast<int>(t.bus)) || !fits(channel, static_cast<int>(t.channel)))
        return false;
    if (address && *address != (is_phy(t.op) ? static_cast<int>(t.phy) : static_cast<int>(t.address)))
        return false;
    if (reg && (!has_register(t.op) ||
                *reg != (is_phy(t.op) ? static_cast<int>(t.phy_reg) : static_cast<int>(t.reg))))
        return false;
    return thread.empty() || thread == t.thread_name();
}

std::string Fault::text() const
{
    std::string line = std::to_string(id) + " ";
    line += op ? op_names[static_cast<std::size_t>(*op)] : "any";
    const auto field = [&line](const char *name, const std::optional<int> &value) {
        if (value)
            line += std::string(" ") + name + "=" + std::to_string(*value);
    };
    field("bus", bus);
    field("addr", address);
    field("reg", reg);
    field("ch", channel);
    if (!thread.empty())
        line += " thread=" + thread;
    line += " nth=" + std::to_string(nth) + " count=" + std::to_string(count);
    line += " errno=" + std::to_string(error) + " delay=" + std::to_string(delay_ms);
    return line + " (" + std::to_string(hits) + " of " + std::to_string(seen) + " hit)";
}

Faults::Effect Faults::evaluate(const Transaction &transaction)
{
    Effect effect;
    for (Fault &fault : faults_) {
        if (!fault.matches(transaction))
            continue;
        ++fault.seen;
        if (fault.seen < fault.nth || (fault.count != 0 && fault.hits >= fault.count))
            continue;
        ++fault.hits;
        effect.delay_ms += fault.delay_ms;
        if (effect.result == 0)
            effect.result = -fault.error;
    }
    return effect;
}

unsigned Faults::add(Fault fault)
{
    fault.id = ++last_id_;
    faults_.push_back(std::move(fault));
    return last_id_;
}

bool Faults::remove(unsigned id)
{
    return std::erase_if(faults_, [id](const Fault &fault) { return fault.id == id; }) != 0;
}

Fault parse_fault(const std::vector<std::string> &words)
{
    Fault fault;
    if (words.empty())
        throw std::invalid_argument("operation missing");
    if (words[0] != "any") {
        const auto name = std::find(op_names.begin(), op_names.end(), words[0]);
        if (name == op_names.end())
            throw std::invalid_argument("no operation " + words[0]);
        fault.op = static_cast<board::SimOp>(name - op_names.begin());
    }
    bool error_given = false;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const auto equals = word->find('=');
        if (equals == std::string::npos)
            throw std::invalid_argument("not NAME=VALUE: " + *word);
        const std::string name = word->substr(0, equals);
        const std::string value = word->substr(equals + 1);
        if (name == "thread")
            fault.thread = value;
        else if (name == "bus")
            fault.bus = static_cast<int>(parse_number(value, 0, 19));
        else if (name == "addr")
            fault.address = static_cast<int>(parse_number(value, 0, 127));
        else if (name == "reg")
            fault.reg = static_cast<int>(parse_number(value, 0, 0x7fffffff));
        else if (name == "ch")
            fault.channel = static_cast<int>(parse_number(value, 0, 15));
        else if (name == "nth")
            fault.nth = static_cast<unsigned long>(parse_number(value, 1, no_end));
        else if (name == "count")
            fault.count = static_cast<unsigned long>(parse_number(value, 0, no_end));
        else if (name == "errno")
            error_given = true, fault.error = static_cast<int>(parse_number(value, 0, 4095));
        else if (name == "delay")
            fault.delay_ms = static_cast<int>(parse_number(value, 0, 3'600'000));
        else
            throw std::invalid_argument("no option " + name);
    }
    if (!error_given && fault.delay_ms == 0)
        fault.error = EIO;
    return fault;
}

} // namespace sim
