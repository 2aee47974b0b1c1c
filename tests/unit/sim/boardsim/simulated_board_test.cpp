// SPDX-License-Identifier: GPL-2.0-or-later
// The parts of the simulated board, without a process: registers, cages, faults, log, state, drift.
#include "sim/boardsim/simulated_board.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <sstream>

#include "sim/boardsim/board_state.hpp"
#include "sim/boardsim/bus/bus_handle.hpp"
#include "sim/boardsim/physics/drift.hpp"
#include "sim/modules/module_file.hpp"
#include "tests/unit/temporary_folder.hpp"

namespace {

using sim::CageKind;
using testing::ElementsAre;
using testing::HasSubstr;

class Board : public testing::Test {
protected:
    sim::SimulatedBoard board{board::load(OLT8_JSON)};
    sim::EventLoop loop;
    sim::BoardTime time{loop};

    static sim::ModuleImage image(const std::string &name = "gpon-1490")
    {
        return sim::read_module({std::string(MODULES) + "/" + name + ".json"}, false).image;
    }
    sim::Cage &pon(int port) { return *board.cages.find(CageKind::pon, port); }
    sim::Cage &ge(int port) { return *board.cages.find(CageKind::ge, port); }
};

TEST_F(Board, channels_lead_to_their_cages)
{
    EXPECT_EQ(board.cages.on_channel(0)->name(), "pon 1");
    EXPECT_EQ(board.cages.on_channel(7)->name(), "pon 8");
    EXPECT_EQ(board.cages.on_channel(8)->name(), "ge 1");
    EXPECT_EQ(board.cages.on_channel(11)->name(), "ge 4");
    EXPECT_EQ(board.cages.on_channel(12), nullptr);
    EXPECT_EQ(board.cages.on_channel(-1), nullptr);
}

TEST_F(Board, presence_bit_cannot_be_set_for_an_empty_cage)
{
    board.cpld.write(11, 0xff);
    board.cpld.write(12, 0x3f);
    EXPECT_EQ(board.cpld.read(11), 0);
    EXPECT_EQ(board.cpld.read(12), 0);
}

TEST_F(Board, plugging_powers_up_and_unplugging_clears)
{
    pon(2).plug(image());
    EXPECT_EQ(board.cpld.read(11), 0x02);
    EXPECT_EQ(board.cpld.read(12), 0);
    pon(2).unplug();
    EXPECT_EQ(board.cpld.read(11), 0);
    ge(4).plug(image());
    EXPECT_EQ(board.cpld.read(12), 0x08);
}

TEST_F(Board, power_bit_switches_plugged_cages_only)
{
    pon(1).plug(image());
    pon(3).plug(image());
    board.cpld.write(11, 0xfe);
    EXPECT_EQ(board.cpld.read(11), 0x04);
    EXPECT_EQ(board.module_on(0), nullptr);
    EXPECT_NE(board.module_on(2), nullptr);
    board.cpld.write(11, 0xff);
    EXPECT_EQ(board.cpld.read(11), 0x05);
}

TEST_F(Board, power_cycle_brings_the_module_back_as_it_was_plugged)
{
    pon(1).plug(image());
    const std::uint8_t on = 0x80;
    EXPECT_EQ(board.module_on(0)->write(0x51, 118, {&on, 1}), 0);
    board.cpld.write(11, 0);
    board.cpld.write(11, 1);
    std::uint8_t value = 0xff;
    EXPECT_EQ(board.module_on(0)->read(0x51, 118, {&value, 1}), 0);
    EXPECT_EQ(value, 0);
}

TEST_F(Board, plain_registers_keep_what_is_written)
{
    pon(1).plug(image());
    board.cpld.set_plain(true);
    EXPECT_EQ(board.cpld.read(11), 0x01);
    board.cpld.write(11, 0xa0);
    EXPECT_EQ(board.cpld.read(11), 0xa0);
    EXPECT_NE(board.module_on(0), nullptr) << "nothing switches the module off";
    board.cpld.set_plain(false);
    EXPECT_EQ(board.cpld.read(11), 0x01);
}

TEST_F(Board, stuck_presence_lines_lie)
{
    pon(1).plug(image());
    pon(1).presence = sim::Presence::stuck_off;
    pon(2).presence = sim::Presence::stuck_on;
    EXPECT_EQ(board.cpld.read(11), 0x02);
    EXPECT_NE(board.module_on(0), nullptr);
    EXPECT_EQ(board.module_on(1), nullptr);
}

TEST_F(Board, identity_registers_ignore_the_bus)
{
    board.cpld.write(board.description.cpld.device_type_register, 0x77);
    EXPECT_EQ(board.cpld.read(board.description.cpld.device_type_register), 0x05);
    board.cpld.set(board.description.cpld.device_type_register, 0x77);
    EXPECT_EQ(board.cpld.read(board.description.cpld.device_type_register), 0x77);
}

TEST_F(Board, change_of_a_register_is_told_once)
{
    std::vector<std::string> seen;
    board.cpld.on_change([&](std::uint8_t reg, std::uint8_t before, std::uint8_t after) {
        std::ostringstream line;
        line << +reg << ":" << +before << ">" << +after;
        seen.push_back(line.str());
    });
    board.cpld.write(5, 2);
    board.cpld.write(5, 2);
    board.cpld.write(5, 1);
    EXPECT_THAT(seen, ElementsAre("5:0>2", "5:2>1"));
}

TEST_F(Board, sensor_rounds_to_its_word_and_repeats_it)
{
    board.lm75.set_tenths(355);
    EXPECT_EQ(board.lm75.raw(), 0x2380);
    board.lm75.set_tenths(-25);
    EXPECT_EQ(board.lm75.raw(), 0xfd80);
    std::array<std::uint8_t, 4> data{};
    EXPECT_EQ(board.read_device(2, 0x48, 0, data), 0);
    EXPECT_THAT(data, ElementsAre(0xfd, 0x80, 0xfd, 0x80));
    EXPECT_EQ(board.read_device(2, 0x48, 9, data), -ENXIO);
    EXPECT_EQ(board.read_device(1, 0x48, 0, data), -ENXIO);
}

sim::Transaction transaction(board::SimOp op, std::uint8_t address, std::uint8_t reg)
{
    sim::Transaction t;
    t.op = op;
    t.address = address;
    t.reg = reg;
    std::copy_n("fan_monitor", 11, t.thread.begin());
    return t;
}

TEST(Faults, nth_and_count_bound_the_hits)
{
    sim::Faults faults;
    faults.add(sim::parse_fault({"i2c_read", "addr=0x51", "nth=2", "count=2", "errno=6"}));
    const auto read = transaction(board::SimOp::i2c_read, 0x51, 0);
    std::vector<int> results;
    for (int i = 0; i < 5; ++i)
        results.push_back(faults.evaluate(read).result);
    EXPECT_THAT(results, ElementsAre(0, -6, -6, 0, 0));
    EXPECT_EQ(faults.evaluate(transaction(board::SimOp::i2c_read, 0x50, 0)).result, 0);
    EXPECT_EQ(faults.evaluate(transaction(board::SimOp::i2c_write, 0x51, 0)).result, 0);
}

TEST(Faults, delays_add_up_and_the_first_error_decides)
{
    sim::Faults faults;
    faults.add(sim::parse_fault({"any", "delay=20"}));
    faults.add(sim::parse_fault({"any", "thread=fan_monitor", "errno=5", "delay=1"}));
    faults.add(sim::parse_fault({"any", "errno=7"}));
    const auto effect = faults.evaluate(transaction(board::SimOp::cpld_read, 0, 4));
    EXPECT_EQ(effect.result, -5);
    EXPECT_EQ(effect.delay_ms, 21);
}

TEST(Faults, fault_without_error_or_delay_is_an_io_error)
{
    EXPECT_EQ(sim::parse_fault({"any"}).error, EIO);
    EXPECT_EQ(sim::parse_fault({"any", "delay=5"}).error, 0);
}

TEST(Faults, mistakes_are_named)
{
    EXPECT_THROW(sim::parse_fault({}), std::invalid_argument);
    EXPECT_THROW(sim::parse_fault({"i2c_raed"}), std::invalid_argument);
    EXPECT_THROW(sim::parse_fault({"any", "nth"}), std::invalid_argument);
    EXPECT_THROW(sim::parse_fault({"any", "nth=0"}), std::invalid_argument);
    EXPECT_THROW(sim::parse_fault({"any", "addr=0x80"}), std::invalid_argument);
    EXPECT_THROW(sim::parse_fault({"any", "reg=4x"}), std::invalid_argument);
}

TEST(Faults, removed_fault_hits_no_more)
{
    sim::Faults faults;
    const unsigned id = faults.add(sim::parse_fault({"any"}));
    EXPECT_TRUE(faults.remove(id));
    EXPECT_FALSE(faults.remove(id));
    EXPECT_EQ(faults.evaluate(transaction(board::SimOp::select, 0, 0)).result, 0);
}

std::vector<std::string> lines(const sim::TransactionLog &log, std::uint64_t since = 0)
{
    std::vector<std::string> all;
    log.each(since, [&](const std::string &line) { all.push_back(line); });
    return all;
}

TEST(Log, ring_keeps_the_last_entries)
{
    sim::TransactionLog log(4);
    for (int i = 1; i <= 6; ++i)
        log.add_text("- mark " + std::to_string(i));
    const auto kept = lines(log);
    ASSERT_EQ(kept.size(), 4U);
    EXPECT_THAT(kept.front(), HasSubstr("mark 3"));
    EXPECT_THAT(kept.back(), HasSubstr("000006 "));
    EXPECT_EQ(lines(log, 6).size(), 1U);
    log.clear();
    EXPECT_TRUE(lines(log).empty());
    EXPECT_EQ(log.next(), 7U);
}

TEST(Log, transaction_line_says_who_what_and_result)
{
    sim::TransactionLog log;
    auto read = transaction(board::SimOp::i2c_read, 0x51, 96);
    read.handle = 3;
    read.channel = 8;
    read.length = 1;
    read.data_size = 1;
    read.data[0] = 0x1a;
    log.add(read);
    read.data_size = 0;
    read.result = -ENXIO;
    log.add(read);
    const auto kept = lines(log);
    EXPECT_THAT(kept[0], testing::EndsWith(" fan_monitor i2c_read h=3 ch=8 addr=0x51 reg=96 len=1 -> 0x1a"));
    EXPECT_THAT(kept[1], testing::EndsWith(" len=1 -> -6 No such device or address"));
}

TEST(Log, a_threads_name_does_not_end_the_line)
{
    sim::TransactionLog log;
    auto read = transaction(board::SimOp::cpld_read, 0, 5);
    std::copy_n("a\nb", 4, read.thread.begin());
    log.add(read);
    EXPECT_THAT(lines(log)[0], testing::HasSubstr(" a?b cpld_read "));
}

TEST_F(Board, a_handle_reaches_modules_only_while_their_channel_is_selected)
{
    pon(1).plug(image());
    sim::BusHandle handle{.opened = true, .kind = board::HandleKind::cpld};
    const auto result = [&](const board::SimRequest &request) {
        sim::BusAnswer answer;
        sim::transact(board, handle, request, {}, answer);
        return answer.result;
    };
    const board::SimRequest read{.op = board::SimOp::i2c_read, .address = 0x50, .reg = 0, .value = 1};
    EXPECT_EQ(result(read), -ENXIO);
    EXPECT_EQ(result({.op = board::SimOp::select, .number = 0}), 0);
    EXPECT_EQ(result(read), 0);
    EXPECT_EQ(result({.op = board::SimOp::deselect}), 0);
    EXPECT_EQ(result(read), -ENXIO);
}

TEST_F(Board, state_survives_in_its_folder)
{
    const TemporaryFolder folder;
    pon(1).plug(image());
    pon(4).plug(image("combo-1490-1577"));
    board.cpld.write(11, 0x08);
    board.cpld.write(10, 0x5a);
    board.lm75.set_tenths(415);
    ge(2).presence = sim::Presence::stuck_on;
    save_state(board, folder.path());

    sim::SimulatedBoard later{board::load(OLT8_JSON)};
    load_state(later, folder.path());
    EXPECT_EQ(later.cpld.read(11), 0x08);
    EXPECT_EQ(later.cpld.read(10), 0x5a);
    EXPECT_EQ(later.cpld.read(12), 0x02);
    EXPECT_EQ(later.lm75.raw(), board.lm75.raw());
    EXPECT_EQ(later.cages.find(CageKind::pon, 1)->module->stored.name, "gpon-1490");
    EXPECT_TRUE(later.module_on(3)->stored.devices.contains(0x59));
}

TEST_F(Board, plain_registers_survive_in_the_state_folder)
{
    const TemporaryFolder folder;
    board.cpld.set_plain(true);
    board.cpld.write(11, 0xa0);
    save_state(board, folder.path());
    sim::SimulatedBoard later{board::load(OLT8_JSON)};
    load_state(later, folder.path());
    EXPECT_TRUE(later.cpld.plain());
    EXPECT_EQ(later.cpld.read(11), 0xa0);
}

TEST_F(Board, damaged_state_is_refused_with_its_line)
{
    const TemporaryFolder folder;
    folder.write("board.state", "state 1\nlm75 0x1900\nnonsense\n");
    try {
        load_state(board, folder.path());
        FAIL();
    } catch (const std::exception &error) {
        EXPECT_EQ(error.what(), folder.file("board.state") + ": line 3: not understood");
    }
}

TEST_F(Board, drift_stays_small_and_is_repeatable)
{
    pon(1).plug(image());
    ge(1).plug(image("qsfp28-lr4"));
    sim::SimulatedBoard twin{board::load(OLT8_JSON)};
    twin.cages.find(CageKind::pon, 1)->plug(image());
    twin.cages.find(CageKind::ge, 1)->plug(image("qsfp28-lr4"));
    sim::Drift drift(time, board, 5), other(time, twin, 5);
    bool moved = false;
    for (int step = 0; step < 500; ++step) {
        drift.step();
        other.step();
        ASSERT_NEAR(board.lm75.celsius(), 25.0, 1.2);
        const auto &live = pon(1).module->live.devices.at(0x51).lower;
        const double celsius = static_cast<std::int16_t>(live[96] << 8 | live[97]) / 256.0;
        ASSERT_NEAR(celsius, 38.5, 1.6);
        moved = moved || std::abs(celsius - 38.5) > 0.1;
        ASSERT_EQ(live, twin.cages.find(CageKind::pon, 1)->module->live.devices.at(0x51).lower);
    }
    EXPECT_TRUE(moved);
    drift.settle();
    EXPECT_EQ(board.lm75.raw(), 0x1900);
    EXPECT_EQ(pon(1).module->live.devices.at(0x51).lower, pon(1).module->stored.devices.at(0x51).lower);
    EXPECT_EQ(ge(1).module->live.devices.at(0x50).lower, ge(1).module->stored.devices.at(0x50).lower);
}

TEST_F(Board, drift_moves_every_value_of_a_qsfp_and_nothing_else)
{
    ge(1).plug(image("qsfp28-lr4"));
    const auto &live = ge(1).module->live.devices.at(0x50).lower;
    std::set<std::size_t> moved;
    sim::Drift drift(time, board, 5);
    for (int step = 0; step < 500; ++step) {
        drift.step();
        for (std::size_t reg = 0; reg < live.size(); ++reg)
            if (live[reg] != ge(1).module->stored.devices.at(0x50).lower[reg])
                moved.insert(reg & ~1U); // words at even bytes
    }
    // SFF-8636: temperature, voltage, then receive power, bias and transmit power of four lanes.
    EXPECT_EQ(moved, (std::set<std::size_t>{22, 26, 34, 36, 38, 40, 42, 44, 46, 48, 50, 52, 54, 56}));
}

TEST_F(Board, drift_leaves_modules_without_diagnostics_alone)
{
    ge(1).plug(image("sfp-1310-no-diagnostics"));
    sim::Drift drift(time, board, 1);
    drift.step();
    EXPECT_EQ(ge(1).module->live.devices.at(0x50).lower, ge(1).module->stored.devices.at(0x50).lower);
}

} // namespace
