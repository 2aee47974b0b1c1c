// SPDX-License-Identifier: GPL-2.0-or-later
// The three C libraries on device nodes: what they ask of i2c-dev and of the MII ioctls.  The kernel's side
// is here: I2C adapters with a CPLD, a multiplexer, modules and a sensor, and a network interface with PHYs.
#include "platform/board/bus_linux.hpp"
#include "tests/unit/temporary_folder.hpp"
#include "util_cpld.h"
#include "util_i2c.h"
#include "util_phy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <linux/mii.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Registers = std::map<unsigned, std::uint8_t>;
using Address = std::pair<int, int>; // bus, device

constexpr Address cpld{0, 0x60};
constexpr Address multiplexer{0, 0x70};
constexpr Address sensor{2, 0x48};
constexpr int module_address = 0x50;

struct Kernel {
    std::map<int, int> adapters;           // bus of each descriptor
    std::map<Address, Registers> devices;  // but for modules
    std::map<unsigned, Registers> modules; // by channel
    unsigned channels = 0;                 // that the multiplexer lets through
    std::map<unsigned, unsigned> phys;     // values, by number of the PHY << 16 | register
    std::vector<std::string> calls;
    int transfer_error = 0, option_error = 0;
    bool is_short = false; // only the first message of a transfer is done

    Registers *device(int bus, int address)
    {
        if (const auto found = devices.find({bus, address}); found != devices.end())
            return &found->second;
        for (auto &[channel, registers] : modules)
            if (bus == multiplexer.first && address == module_address && (channels >> channel & 1U) != 0)
                return &registers;
        return nullptr;
    }

    int transfer(int bus, std::span<i2c_msg> messages)
    {
        unsigned reg = 0;
        for (i2c_msg &message : messages) {
            std::ostringstream call;
            call << std::hex << bus << ' ' << message.addr
                 << (message.flags == I2C_M_RD ? " read" : " write");
            if (message.flags == I2C_M_RD)
                call << ' ' << message.len;
            else
                for (int k = 0; k < message.len && k < 8; ++k)
                    call << ' ' << static_cast<unsigned>(message.buf[k]);
            calls.push_back(call.str());
            if (Address{bus, message.addr} == multiplexer) {
                channels = message.buf[0] | (message.len > 1 ? message.buf[1] << 8U : 0U);
                continue;
            }
            Registers *const registers = device(bus, message.addr);
            if (registers == nullptr)
                return -ENXIO;
            if (message.flags == I2C_M_RD) {
                for (unsigned k = 0; k < message.len; ++k)
                    message.buf[k] = (*registers)[(reg + k) % 256];
                continue;
            }
            reg = message.buf[0];
            for (unsigned k = 1; k < message.len; ++k)
                (*registers)[(reg + k - 1) % 256] = message.buf[k];
        }
        return static_cast<int>(messages.size());
    }

    int mii(unsigned long request, ifreq &interface)
    {
        if (std::strcmp(interface.ifr_name, "aux") != 0)
            return -ENODEV;
        mii_ioctl_data data{};
        std::memcpy(&data, &interface.ifr_ifru, sizeof data);
        const unsigned key = static_cast<unsigned>(data.phy_id) << 16 | data.reg_num;
        if (request == SIOCSMIIREG)
            phys[key] = data.val_in;
        else
            data.val_out = static_cast<std::uint16_t>(phys.contains(key) ? phys[key] : 0xffff);
        std::memcpy(&interface.ifr_ifru, &data, sizeof data);
        return 0;
    }
};

Kernel kernel;

int answer(int result)
{
    if (result >= 0)
        return result;
    errno = -result;
    return -1;
}

} // namespace

extern "C" {
int open(const char *path, int flags, ...)
{
    constexpr std::string_view adapter = "/dev/i2c-";
    if (!std::string_view{path}.starts_with(adapter))
        return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0600));
    const long bus = std::strtol(path + adapter.size(), nullptr, 10);
    if (bus > 3)
        return answer(-ENOENT);
    EXPECT_EQ(flags & O_ACCMODE, O_RDWR);
    const int fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/dev/null", flags, 0));
    kernel.adapters[fd] = static_cast<int>(bus);
    return fd;
}
int ioctl(int fd, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == SIOCGMIIREG || request == SIOCSMIIREG)
        return answer(kernel.mii(request, *static_cast<ifreq *>(argument)));
    const auto adapter = kernel.adapters.find(fd);
    if (adapter == kernel.adapters.end())
        return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
    if (request == I2C_TIMEOUT || request == I2C_RETRIES) {
        kernel.calls.push_back((request == I2C_TIMEOUT ? "timeout " : "retries ") +
                               std::to_string(reinterpret_cast<std::uintptr_t>(argument)));
        return answer(-kernel.option_error);
    }
    EXPECT_EQ(request, I2C_RDWR);
    if (kernel.transfer_error != 0)
        return answer(-kernel.transfer_error);
    const auto &transfer = *static_cast<i2c_rdwr_ioctl_data *>(argument);
    return answer(
        kernel.transfer(adapter->second, std::span(transfer.msgs, kernel.is_short ? 1 : transfer.nmsgs)));
}
}

namespace {

class LinuxBus : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // The board of the simulator, but its buses are device nodes.
        std::ostringstream text;
        text << std::ifstream(OLT8_JSON).rdbuf();
        std::string description = text.str();
        const std::string simulated = R"("transport": "sim")";
        description.replace(description.find(simulated), simulated.size(), R"("transport": "linux")");
        std::ofstream(folder_->file("board.json")) << description;
        ::setenv("OLT_BOARD", folder_->file("board.json").c_str(), 1);
    }
    static void TearDownTestSuite() { folder_.reset(); }

    void SetUp() override
    {
        kernel = {};
        kernel.devices = {{cpld, {{0, 0x21}, {2, 3}}}, {sensor, {{0, 0x19}, {1, 0x80}}}};
        kernel.modules = {{0, {{0, 3}, {20, 'A'}}}, {13, {{0, 0x11}}}};
    }

    // A CPLD handle on bus 0; what opening it asked is forgotten.
    int open()
    {
        const int handle = misc_cpld_i2c_open(0);
        EXPECT_GE(handle, 0);
        handles_.push_back(handle);
        kernel.calls.clear();
        return handle;
    }
    void TearDown() override
    {
        for (const int handle : handles_)
            misc_cpld_i2c_close(handle);
    }

private:
    inline static std::unique_ptr<TemporaryFolder> folder_ = std::make_unique<TemporaryFolder>();
    std::vector<int> handles_;
};

int read_byte(int handle, std::uint8_t address, std::uint8_t reg)
{
    std::uint8_t value = 0;
    return misc_i2c_read(handle, address, reg, &value, 1, 0) == 0 ? value : -1;
}

} // namespace

TEST_F(LinuxBus, opens_the_adapter_with_a_second_and_without_retries)
{
    const int handle = misc_i2c_device_init(2);
    ASSERT_GE(handle, 0);
    EXPECT_EQ(kernel.adapters.at(handle), 2);
    EXPECT_THAT(kernel.calls, ElementsAre("timeout 100", "retries 0"));
    EXPECT_EQ(fcntl(handle, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(close(handle), 0);
}

TEST_F(LinuxBus, an_adapter_that_is_not_there_is_an_error)
{
    EXPECT_EQ(misc_cpld_i2c_open(7), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(misc_i2c_device_init(4), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(LinuxBus, an_adapter_that_takes_no_time_limit_is_closed_again)
{
    const int handle = misc_cpld_i2c_open(0);
    misc_cpld_i2c_close(handle);
    kernel.option_error = EIO;
    EXPECT_EQ(misc_cpld_i2c_open(0), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(fcntl(handle, F_GETFD), -1) << "the next descriptor is of the same number";
}

TEST_F(LinuxBus, a_read_is_one_transfer_of_the_register_and_a_repeated_start)
{
    const int handle = misc_i2c_device_init(2);
    kernel.calls.clear();
    std::array<std::uint8_t, 2> bytes{};
    EXPECT_EQ(misc_i2c_read(handle, 0x48, 0, bytes.data(), 2, 0), 0);
    EXPECT_THAT(bytes, ElementsAre(0x19, 0x80));
    EXPECT_THAT(kernel.calls, ElementsAre("2 48 write 0", "2 48 read 2"));
    close(handle);
}

TEST_F(LinuxBus, a_write_is_one_message_of_the_register_and_the_bytes)
{
    const int handle = open();
    kernel.channels = 1;
    std::array<std::uint8_t, 3> bytes{1, 2, 3};
    EXPECT_EQ(misc_i2c_write(handle, module_address, 0x7b, bytes.data(), 3, 0), 0);
    EXPECT_THAT(kernel.calls, ElementsAre("0 50 write 7b 1 2 3"));
    EXPECT_EQ(kernel.modules[0][0x7d], 3);
}

TEST_F(LinuxBus, the_longest_transfers_go_as_one)
{
    const int handle = open();
    kernel.channels = 1;
    std::vector<std::uint8_t> bytes(board::Bus::max_transfer, 7);
    EXPECT_EQ(misc_i2c_write(handle, module_address, 0, bytes.data(), static_cast<int>(bytes.size()), 0), 0);
    EXPECT_EQ(misc_i2c_read(handle, module_address, 0, bytes.data(), static_cast<int>(bytes.size()), 0), 0);
    EXPECT_THAT(kernel.calls, ElementsAre("0 50 write 0 7 7 7 7 7 7 7", "0 50 write 0", "0 50 read 1000"));
    EXPECT_EQ(misc_i2c_write(handle, module_address, 0, bytes.data(), static_cast<int>(bytes.size()) + 1, 0),
              -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(LinuxBus, the_cpld_is_at_the_address_of_the_description)
{
    const int handle = open();
    std::uint8_t value = 0;
    EXPECT_EQ(misc_cpld_i2c_logic_version_get(handle, &value), 0);
    EXPECT_EQ(value, 0x21);
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 13, 1), 0);
    EXPECT_EQ(kernel.devices[cpld][13], 1);
    EXPECT_THAT(kernel.calls, ElementsAre("0 60 write 0", "0 60 read 1", "0 60 write d 1"));
}

TEST_F(LinuxBus, a_module_is_reached_through_its_channel_only)
{
    const int handle = open();
    EXPECT_EQ(read_byte(handle, module_address, 0), -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_EQ(misc_cpld_channel_select(handle, 0), 0);
    EXPECT_EQ(read_byte(handle, module_address, 20), 'A');
    EXPECT_EQ(misc_cpld_channel_select(handle, 13), 0);
    EXPECT_EQ(read_byte(handle, module_address, 0), 0x11);
    EXPECT_EQ(misc_cpld_channel_select_end(handle), 0);
    EXPECT_EQ(read_byte(handle, module_address, 0), -1);
}

TEST_F(LinuxBus, a_channel_is_a_bit_of_the_control_bytes)
{
    const int handle = open();
    for (const int channel : {0, 7, 8, 13})
        EXPECT_EQ(misc_cpld_channel_select(handle, channel), 0);
    EXPECT_EQ(misc_cpld_channel_select_end(handle), 0);
    EXPECT_THAT(kernel.calls, ElementsAre("0 70 write 1 0", "0 70 write 80 0", "0 70 write 0 1",
                                          "0 70 write 0 20", "0 70 write 0 0"));
    kernel.calls.clear();
    for (const int channel : {-1, 14, 64}) {
        EXPECT_EQ(misc_cpld_channel_select(handle, channel), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_THAT(kernel.calls, IsEmpty());
}

TEST_F(LinuxBus, a_multiplexer_of_eight_channels_has_one_control_byte)
{
    const int handle = open();
    const board::LinuxBus bus({}, {.bus = 0, .address = 0x70, .channels = 8});
    EXPECT_EQ(bus.select(handle, 7), 0);
    EXPECT_EQ(bus.deselect(handle), 0);
    EXPECT_THAT(kernel.calls, ElementsAre("0 70 write 80", "0 70 write 0"));
}

TEST_F(LinuxBus, a_multiplexer_of_nine_channels_has_two_control_bytes)
{
    const int handle = open();
    const board::LinuxBus bus({}, {.bus = 0, .address = 0x70, .channels = 9});
    EXPECT_EQ(bus.select(handle, 8), 0);
    EXPECT_EQ(bus.deselect(handle), 0);
    EXPECT_THAT(kernel.calls, ElementsAre("0 70 write 0 1", "0 70 write 0 0"));
}

TEST_F(LinuxBus, what_fails_leaves_the_value_alone_and_is_not_tried_again)
{
    const int handle = open();
    std::uint8_t value = 0x55;
    kernel.transfer_error = ETIMEDOUT;
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 2, &value), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(misc_cpld_i2c_set_byte(handle, 2, 1), -1);
    EXPECT_EQ(misc_cpld_channel_select(handle, 1), -1);
    kernel.transfer_error = 0;
    kernel.is_short = true;
    EXPECT_EQ(misc_cpld_i2c_read_byte(handle, 2, &value), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(value, 0x55);
    EXPECT_THAT(kernel.calls, ElementsAre("0 60 write 2"));
}

TEST_F(LinuxBus, phy_registers_go_by_the_ioctls_of_the_interface)
{
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_write("aux", 5, 9, 0x1234), 0);
    EXPECT_EQ(kernel.phys.at(5U << 16 | 9), 0x1234U);
    EXPECT_EQ(misc_phy_read("aux", 5, 9, &value), 0);
    EXPECT_EQ(value, 0x1234U);
    EXPECT_EQ(misc_phy_read("aux", 6, 9, &value), 0);
    EXPECT_EQ(value, 0xffffU) << "nobody drives the bus";
}

TEST_F(LinuxBus, the_last_phy_and_the_last_register_are_reached)
{
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_write("aux", 31, 31, 0x4321), 0);
    EXPECT_EQ(misc_phy_read("aux", 31, 31, &value), 0);
    EXPECT_EQ(value, 0x4321U);
}

TEST_F(LinuxBus, clause_45_registers_carry_their_device_beside_the_phy)
{
    // Bit 15 of the kernel's PHY number marks them; PHY in bits 5-9, device in bits 0-4.
    constexpr unsigned phy5_device7 = 0x8000 | 5U << 5 | 7U;
    kernel.phys[phy5_device7 << 16 | 0x8001] = 0xbeef;
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_read("aux", 5, 1U << 30 | 7U << 16 | 0x8001U, &value), 0);
    EXPECT_EQ(value, 0xbeefU);
    EXPECT_EQ(misc_phy_write("aux", 5, 1U << 30 | 7U << 16 | 0x8001U, 0x1111), 0);
    EXPECT_EQ(kernel.phys[phy5_device7 << 16 | 0x8001], 0x1111U);
}

TEST_F(LinuxBus, numbers_beyond_those_of_the_bus_never_reach_it)
{
    std::uint32_t value = 0;
    for (const auto &[phy, reg] :
         {std::pair{32U, 0U}, {1U, 32U}, {0x8005U, 1U}, {32U, 1U << 30 | 7U << 16}}) {
        EXPECT_EQ(misc_phy_read("aux", phy, reg, &value), -1);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(misc_phy_write("aux", phy, reg, 1), -1);
    }
    EXPECT_THAT(kernel.phys, IsEmpty());
}

TEST_F(LinuxBus, an_interface_that_is_not_there_is_an_error)
{
    std::uint32_t value = 0x77;
    for (const char *name : {"eth9", "a-name-of-16-chars", ""}) {
        EXPECT_EQ(misc_phy_read(name, 1, 0, &value), -1) << name;
        EXPECT_EQ(errno, ENODEV) << name;
        EXPECT_EQ(misc_phy_write(name, 1, 0, 0), -1) << name;
    }
    EXPECT_EQ(value, 0x77U);
}
