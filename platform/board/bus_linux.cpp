// SPDX-License-Identifier: GPL-2.0-or-later
// Transport to the board below the kernel.
//
// Failure policy: the kernel's errno as it is (a device that does not acknowledge is mostly ENXIO or
// EREMOTEIO), ETIMEDOUT after a second of a bus that hangs.  Nothing is retried.
#include "platform/board/bus_linux.hpp"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <linux/mdio.h>
#include <linux/mii.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "base/fd.hpp"

namespace board {

namespace {

constexpr unsigned long timeout_10ms = 100; // I2C_TIMEOUT counts in these
constexpr std::uint32_t clause45_mark = 1U << 30;
constexpr std::uint32_t last_phy = 31;
constexpr std::uint32_t last_register = 31; // of clause 22

int transfer(int handle, std::span<i2c_msg> messages)
{
    i2c_rdwr_ioctl_data request{messages.data(), static_cast<std::uint32_t>(messages.size())};
    const int done = ::ioctl(handle, I2C_RDWR, &request);
    if (done < 0)
        return -errno;
    return done == static_cast<int>(messages.size()) ? 0 : -EIO;
}

i2c_msg message(std::uint8_t address, std::uint16_t flags, std::span<std::uint8_t> data)
{
    return {address, flags, static_cast<std::uint16_t>(data.size()), data.data()};
}

// Writes these bytes in one message.
int send(int handle, std::uint8_t address, std::span<std::uint8_t> bytes)
{
    i2c_msg one = message(address, 0, bytes);
    return transfer(handle, {&one, 1});
}

// Asks the driver of a network interface for its MDIO bus.
int mii(unsigned long what, const char *interface, std::uint32_t phy, std::uint32_t reg, std::uint16_t &value)
{
    ifreq request{};
    const std::string_view name = interface;
    if (name.size() >= sizeof request.ifr_name)
        return -ENODEV;
    std::ranges::copy(name, request.ifr_name);
    // Drivers look at the bits they know: a higher number would be taken for another.
    const bool is_clause45 = (reg & clause45_mark) != 0;
    if (phy > last_phy || (reg > last_register && !is_clause45))
        return -EINVAL;
    mii_ioctl_data data{};
    if (is_clause45)
        data.phy_id = static_cast<std::uint16_t>(
            mdio_phy_id_c45(static_cast<int>(phy), static_cast<int>(reg >> 16 & 0x1f)));
    else
        data.phy_id = static_cast<std::uint16_t>(phy);
    data.reg_num = static_cast<std::uint16_t>(reg);
    data.val_in = value;
    static_assert(sizeof data <= sizeof request.ifr_ifru);
    std::memcpy(&request.ifr_ifru, &data, sizeof data);

    const base::Fd any(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!any || ::ioctl(any.get(), what, &request) < 0)
        return -errno;
    std::memcpy(&data, &request.ifr_ifru, sizeof data);
    value = data.val_out;
    return 0;
}

} // namespace

LinuxBus::LinuxBus(const Cpld &cpld, const Multiplexer &multiplexer)
    : cpld_address_(cpld.address), multiplexer_(multiplexer)
{
}

int LinuxBus::open(int bus, HandleKind) const
{
    std::array<char, 24> path{};
    std::snprintf(path.data(), path.size(), "/dev/i2c-%d", bus);
    base::Fd fd(::open(path.data(), O_RDWR | O_CLOEXEC));
    // They count for everybody on the adapter, from now on.
    if (!fd || ::ioctl(fd.get(), I2C_TIMEOUT, timeout_10ms) < 0 || ::ioctl(fd.get(), I2C_RETRIES, 0UL) < 0)
        return -errno;
    return fd.release();
}

int LinuxBus::read(int handle, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data) const
{
    std::array messages{message(address, 0, {&reg, 1}), message(address, I2C_M_RD, data)};
    return transfer(handle, messages);
}

int LinuxBus::write(int handle, std::uint8_t address, std::uint8_t reg,
                    std::span<const std::uint8_t> data) const
{
    std::array<std::uint8_t, 1 + max_transfer> bytes;
    if (data.size() > max_transfer)
        return -EINVAL;
    bytes[0] = reg;
    std::copy(data.begin(), data.end(), bytes.begin() + 1);
    return send(handle, address, std::span(bytes).first(1 + data.size()));
}

int LinuxBus::cpld_read(int handle, std::uint8_t reg, std::uint8_t &value) const
{
    std::uint8_t byte = 0;
    const int result = read(handle, cpld_address_, reg, {&byte, 1});
    if (result == 0)
        value = byte;
    return result;
}

int LinuxBus::cpld_write(int handle, std::uint8_t reg, std::uint8_t value) const
{
    return write(handle, cpld_address_, reg, {&value, 1});
}

int LinuxBus::select(int handle, int channel) const
{
    if (channel < 0 || channel >= multiplexer_.channels)
        return -EINVAL;
    return switch_to(handle, 1U << channel);
}

int LinuxBus::deselect(int handle) const
{
    return switch_to(handle, 0);
}

// The control bytes: a bit for each channel, the first eight channels in the first byte.
int LinuxBus::switch_to(int handle, unsigned channels) const
{
    std::array bytes{static_cast<std::uint8_t>(channels), static_cast<std::uint8_t>(channels >> 8)};
    return send(handle, multiplexer_.address, std::span(bytes).first(multiplexer_.channels > 8 ? 2 : 1));
}

int LinuxBus::phy_read(const char *interface, std::uint32_t phy, std::uint32_t reg,
                       std::uint32_t &value) const
{
    std::uint16_t word = 0;
    const int result = mii(SIOCGMIIREG, interface, phy, reg, word);
    if (result == 0)
        value = word;
    return result;
}

int LinuxBus::phy_write(const char *interface, std::uint32_t phy, std::uint32_t reg,
                        std::uint32_t value) const
{
    auto word = static_cast<std::uint16_t>(value);
    return mii(SIOCSMIIREG, interface, phy, reg, word);
}

} // namespace board
