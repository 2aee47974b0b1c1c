// SPDX-License-Identifier: GPL-2.0-or-later
// Devices of the simulated board's I2C buses that only people ask, and the inventory in their memories.
#include "sim/boardsim/devices/i2c_devices.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <numeric>

#include "sim/boardsim/board_state.hpp"
#include "sim/boardsim/simulated_board.hpp"
#include "sim/modules/module_file.hpp"
#include "tests/unit/temporary_folder.hpp"

namespace {

using testing::Each;
using testing::ElementsAre;

class Devices : public testing::Test {
protected:
    sim::SimulatedBoard board{board::load(OLT8_JSON)};

    std::vector<std::uint8_t> read(int bus, std::uint8_t address, std::uint8_t reg, std::size_t size)
    {
        std::vector<std::uint8_t> data(size);
        EXPECT_EQ(board.read_device(bus, address, reg, data), 0);
        return data;
    }
    int write(int bus, std::uint8_t address, std::uint8_t reg, std::vector<std::uint8_t> data)
    {
        return board.write_device(bus, address, reg, data);
    }
    int probe(int bus, std::uint8_t address)
    {
        std::uint8_t byte = 0;
        return board.read_device(bus, address, 0, {&byte, 1});
    }
};

const board::Fru unit = {.manufacturer = "Maker",
                         .product = "Thing",
                         .serial_number = "",
                         .part_number = std::string(40, 'p'),
                         .made = std::chrono::year(2027) / 11 / 24};

TEST(Fru, has_header_and_board_area_whose_bytes_add_up_to_0)
{
    const sim::Memory memory = sim::encode_fru(unit);
    EXPECT_EQ(std::accumulate(memory.begin(), memory.begin() + 8, 0) % 256, 0);
    EXPECT_THAT(std::vector(memory.begin(), memory.begin() + 7), ElementsAre(1, 0, 0, 1, 0, 0, 0));
    const int length = memory[9] * 8;
    EXPECT_EQ(std::accumulate(memory.begin() + 8, memory.begin() + 8 + length, 0) % 256, 0);
    EXPECT_EQ(memory[14], 0xc0 | 5) << "5 characters of 8 bits";
    EXPECT_EQ(std::string(memory.begin() + 15, memory.begin() + 20), "Maker");
    EXPECT_THAT(std::vector(memory.begin() + 8 + length, memory.end()), Each(0xff));
}

TEST(Fru, counts_minutes_from_1996)
{
    board::Fru old = unit;
    old.made = std::chrono::year(1996) / 1 / 2;
    const sim::Memory memory = sim::encode_fru(old);
    EXPECT_EQ(memory[11] | memory[12] << 8 | memory[13] << 16, 24 * 60);
}

TEST(Fru, is_read_as_it_was_written)
{
    const auto fru = sim::decode_fru(sim::encode_fru(unit));
    ASSERT_TRUE(fru);
    EXPECT_EQ(fru->manufacturer, unit.manufacturer);
    EXPECT_EQ(fru->product, unit.product);
    EXPECT_EQ(fru->serial_number, unit.serial_number);
    EXPECT_EQ(fru->part_number, unit.part_number);
    EXPECT_EQ(fru->made, unit.made);
}

TEST(Fru, with_any_wrong_byte_is_none_and_harms_nothing)
{
    const sim::Memory sound = sim::encode_fru(unit);
    const std::size_t used = 8 + sound[9] * std::size_t{8};
    for (std::size_t at = 0; at < used; ++at) {
        sim::Memory memory = sound;
        memory[at] ^= 0x10;
        EXPECT_FALSE(sim::decode_fru(memory)) << at;
    }
    sim::Memory blank;
    blank.fill(0xff);
    EXPECT_FALSE(sim::decode_fru(blank));
    blank.fill(0);
    EXPECT_FALSE(sim::decode_fru(blank));
}

TEST_F(Devices, memories_hold_the_inventory_of_their_units)
{
    const std::vector<std::uint8_t> data = read(1, 0x51, 0, 256);
    sim::Memory memory;
    std::ranges::copy(data, memory.begin());
    const auto fru = sim::decode_fru(memory);
    ASSERT_TRUE(fru);
    EXPECT_EQ(fru->product, "PSU-150-AC");
    EXPECT_EQ(fru->serial_number, "PS24050112");
}

TEST_F(Devices, memory_goes_on_at_its_start_and_writes_stay_in_their_page)
{
    EXPECT_EQ(write(1, 0x50, 0xfe, {1, 2, 3}), 0);
    EXPECT_THAT(read(1, 0x50, 0xfe, 3), ElementsAre(1, 2, 1)) << "behind the end comes byte 0";
    EXPECT_THAT(read(1, 0x50, 0xf8, 1), ElementsAre(3));
}

TEST_F(Devices, further_sensors_have_their_temperature)
{
    EXPECT_THAT(read(3, 0x49, 0, 2), ElementsAre(0x1f, 0x80)) << "31.5 degrees";
    EXPECT_THAT(read(2, 0x48, 0, 2), ElementsAre(0x19, 0x00));
}

TEST_F(Devices, a_sensor_keeps_its_limits_and_its_configuration_but_not_a_temperature)
{
    EXPECT_EQ(write(2, 0x48, 3, {0x50, 0x80}), 0);
    EXPECT_THAT(read(2, 0x48, 3, 2), ElementsAre(0x50, 0x80));
    EXPECT_EQ(write(2, 0x48, 1, {0x02}), 0);
    EXPECT_THAT(read(2, 0x48, 1, 1), ElementsAre(0x02));
    EXPECT_EQ(write(2, 0x48, 0, {0x7f, 0x00}), 0);
    EXPECT_THAT(read(2, 0x48, 0, 2), ElementsAre(0x19, 0x00));
}

TEST_F(Devices, an_address_belongs_to_one_bus)
{
    EXPECT_EQ(probe(0, 0x51), -ENXIO);
    EXPECT_EQ(probe(2, 0x49), -ENXIO);
    EXPECT_EQ(probe(3, 0x48), -ENXIO);
    EXPECT_EQ(probe(0, 0x60), 0);
}

TEST_F(Devices, channels_switched_on_by_hand_bring_their_modules_to_the_bus)
{
    const auto image = sim::read_module({std::string(MODULES) + "/gpon-1490.json"}, false).image;
    board.cages.find(sim::CageKind::pon, 3)->plug(image);
    board.cages.find(sim::CageKind::ge, 2)->plug(image); // channel 9
    EXPECT_EQ(probe(0, 0x50), -ENXIO);
    EXPECT_EQ(write(0, 0x70, 0, {1 << 2}), 0);
    EXPECT_EQ(read(0, 0x50, 20, 1)[0], image.devices.at(0x50).read(20));
    EXPECT_EQ(probe(1, 0x58), -ENXIO) << "the switch is on bus 0";
    EXPECT_EQ(write(0, 0x51, 118, {0x80}), 0);
    EXPECT_THAT(read(0, 0x51, 118, 1), ElementsAre(0x80));
    EXPECT_EQ(write(0, 0x70, 0, {0}), 0);
    EXPECT_EQ(probe(0, 0x50), -ENXIO);
    EXPECT_EQ(write(0, 0x70, 1, {1 << 1}), 0);
    EXPECT_EQ(probe(0, 0x50), 0);
    EXPECT_THAT(read(0, 0x70, 0, 2), ElementsAre(0, 2));
}

TEST_F(Devices, memories_survive_in_the_state_folder)
{
    const TemporaryFolder folder;
    EXPECT_EQ(write(1, 0x53, 0x80, {0x5a}), 0);
    save_state(board, folder.path());
    sim::SimulatedBoard later{board::load(OLT8_JSON)};
    load_state(later, folder.path());
    std::uint8_t byte = 0;
    EXPECT_EQ(later.read_device(1, 0x53, 0x80, {&byte, 1}), 0);
    EXPECT_EQ(byte, 0x5a);
}

} // namespace
