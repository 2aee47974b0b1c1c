// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/bus/transaction.hpp"

#include <cstring>

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

} // namespace sim
