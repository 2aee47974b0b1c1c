// SPDX-License-Identifier: GPL-2.0-or-later
// The verbs, the life of the process and the files of a running board.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <future>

#include "base/fd.hpp"
#include "platform/board/sim_protocol.hpp"
#include "tests/unit/running_board.hpp"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string module(const std::string &name)
{
    return std::string(MODULES) + "/" + name + ".json";
}

std::uint32_t button_word(const RunningBoard &board)
{
    std::ifstream file(board.path() + "/uio0", std::ios::binary);
    std::uint32_t word = 0;
    file.seekg(8);
    file.read(reinterpret_cast<char *>(&word), sizeof word);
    return word;
}

constexpr std::uint32_t released = 1U << 21;

// Polls until `done`, at most some seconds.
template <class Condition>
bool eventually(Condition &&done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// Exit status of a second boardsim in the same folder.
int second_board(const RunningBoard &board)
{
    pid_t pid = -1;
    std::string words[] = {BOARDSIM, "--board", OLT8_JSON, "--dir", board.path()};
    char *argv[] = {words[0].data(), words[1].data(), words[2].data(),
                    words[3].data(), words[4].data(), nullptr};
    EXPECT_EQ(::posix_spawn(&pid, BOARDSIM, nullptr, nullptr, argv, environ), 0);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WEXITSTATUS(status);
}

TEST(Process, live_board_is_not_replaced)
{
    RunningBoard board;
    EXPECT_EQ(second_board(board), 1);
    EXPECT_EQ(board.ask({"reg", "get", "0"}), "0x21");
}

TEST(Process, dead_boards_sockets_are_replaced)
{
    RunningBoard board;
    EXPECT_EQ(board.end(SIGKILL), 128 + SIGKILL);
    EXPECT_TRUE(std::filesystem::exists(board.path() + "/board.sock"));
    board.start();
    EXPECT_EQ(board.ask({"reg", "get", "0"}), "0x21");
}

TEST(Process, ends_cleanly_and_removes_its_sockets)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        RunningBoard board;
        EXPECT_EQ(board.end(signal), 0);
        EXPECT_FALSE(std::filesystem::exists(board.path() + "/board.sock"));
        EXPECT_FALSE(std::filesystem::exists(board.path() + "/ctl.sock"));
        EXPECT_THAT(board.refusal({"show"}), HasSubstr("no board at"));
    }
}

TEST(Process, boards_run_side_by_side)
{
    RunningBoard one, other;
    one.ask({"reg", "set", "10", "1"});
    EXPECT_EQ(other.ask({"reg", "get", "10"}), "0x00");
}

TEST(Process, sockets_are_open_to_every_user)
{
    RunningBoard board;
    for (const char *name : {"/board.sock", "/ctl.sock", "/gpio", "/uio0"}) {
        struct stat status {};
        ASSERT_EQ(::stat((board.path() + name).c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 0777, 0666U) << name;
    }
}

TEST(Process, state_folder_brings_modules_and_registers_back)
{
    const TemporaryFolder state;
    RunningBoard board({"--state", state.path()});
    board.ask({"plug", "gpon", "1", module("gpon-1490")});
    board.ask({"reg", "set", "10", "0x0f"});
    EXPECT_EQ(board.end(SIGTERM), 0);
    board.start();
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x01");
    EXPECT_EQ(board.ask({"reg", "get", "10"}), "0x0f");
    EXPECT_THAT(board.ask({"show"}), HasSubstr("pon 1        gpon-1490\n"));
}

TEST(Process, population_is_for_new_boards_only)
{
    const TemporaryFolder folder;
    const std::string population =
        folder.write("population.json",
                     "{\"modules\": [{\"kind\": \"gpon\", \"port\": 1, \"file\": \"" + module("gpon-1490") +
                         "\"}, {\"kind\": \"ge\", \"port\": 3, \"file\": \"" + module("sfp-850") + "\"}]}");
    RunningBoard board({"--state", folder.file("state"), "--population", population});
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x01");
    EXPECT_EQ(board.ask({"reg", "get", "12"}), "0x04");
    board.ask({"unplug", "gpon", "1"});
    EXPECT_EQ(board.end(SIGTERM), 0);
    board.start();
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x00");
    EXPECT_EQ(board.ask({"reg", "get", "12"}), "0x04");
}

TEST(Process, shipped_population_fits_the_default_board)
{
    RunningBoard board({"--population", std::string(MODULES) + "/../boards/olt8-modules.json"});
    EXPECT_NE(board.ask({"reg", "get", "11"}), "0x00");
}

class Verbs : public testing::Test {
protected:
    RunningBoard board;
};

TEST_F(Verbs, mistakes_are_one_line_and_change_nothing)
{
    EXPECT_EQ(board.refusal({"jump"}), "error: no verb \"jump\"");
    EXPECT_EQ(board.refusal({"reg", "get", "256"}), "error: \"256\" is not in 0..255");
    EXPECT_EQ(board.refusal({"reg", "set", "5", "x"}), "error: \"x\" is not a number");
    EXPECT_EQ(board.refusal({"reg", "set", "5"}), "error: usage: boardctl reg set R V");
    EXPECT_EQ(board.refusal({"unplug", "gpon", "9"}), "error: \"9\" is not in 1..8");
    EXPECT_EQ(board.refusal({"unplug", "ge", "5"}), "error: \"5\" is not in 1..4");
    EXPECT_EQ(board.refusal({"unplug", "fe", "1"}), "error: \"fe\" is none of gpon, xgpon, ge");
    EXPECT_EQ(board.refusal({"module", "get", "ge", "1", "0x50", "0", "1"}), "error: cage ge 1 is empty");
    EXPECT_EQ(board.refusal({"reg", "plain", "maybe"}), "error: \"maybe\" is neither on nor off");
    EXPECT_EQ(board.refusal({""}), "error: no verb \"\"");
    EXPECT_EQ(board.refusal({}), "error: no verb");
}

TEST_F(Verbs, refused_plug_leaves_the_module_that_is_there)
{
    const TemporaryFolder folder;
    board.ask({"plug", "gpon", "1", module("gpon-1490")});
    EXPECT_THAT(board.refusal({"plug", "gpon", "1", folder.write("x.bin", "\x03\x04\x07")}),
                HasSubstr("truncated"));
    EXPECT_THAT(board.refusal({"plug", "gpon", "1", folder.write("x.json", "{")}),
                HasSubstr("ends too early"));
    EXPECT_THAT(board.refusal({"plug", "gpon", "1"}), StartsWith("usage: boardctl plug"));
    EXPECT_THAT(board.ask({"show"}), HasSubstr("pon 1        gpon-1490\n"));
}

TEST_F(Verbs, presence_can_be_made_to_lie)
{
    board.ask({"plug", "gpon", "1", module("gpon-1490"), "--no-presence"});
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x00");
    board.ask({"unplug", "gpon", "1", "--keep-presence"});
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x01");
    board.ask({"unplug", "gpon", "1"});
    EXPECT_EQ(board.ask({"reg", "get", "11"}), "0x00");
}

TEST_F(Verbs, module_bytes_set_by_the_operator_survive_a_power_cycle)
{
    board.ask({"plug", "gpon", "1", module("gpon-1490")});
    EXPECT_EQ(board.ask({"module", "set", "gpon", "1", "0x51", "96", "fb00"}), "ok");
    board.ask({"reg", "set", "11", "0"});
    board.ask({"reg", "set", "11", "1"});
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x51", "96", "2"}), "fb00");
    EXPECT_THAT(board.refusal({"module", "set", "gpon", "1", "0x51", "96", "fb0"}),
                HasSubstr("hexadecimal bytes"));
    EXPECT_THAT(board.refusal({"module", "set", "gpon", "1", "0x52", "96", "00"}),
                HasSubstr("nothing at address"));
}

TEST_F(Verbs, made_module_can_be_plugged)
{
    const TemporaryFolder folder;
    const std::string file = folder.file("lab.json");
    EXPECT_TRUE(sim::prepare_file_verb({"module", "make", file, "--wavelength", "1490", "--cal", "ext",
                                        "--temp", "-12.5", "--sn", "LAB1", "--second", "1577", "--tx", "5"})
                    .empty());
    board.ask({"plug", "gpon", "1", file});
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x51", "96", "2"}), "f380");
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x58", "60", "2"}), "0629");
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x50", "92", "1"}), "58")
        << "calibrated by the reader";
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x58", "92", "1"}), "68") << "by the module";
    EXPECT_EQ(board.ask({"module", "get", "gpon", "1", "0x50", "68", "4"}), "4c414231");
    EXPECT_THROW(sim::prepare_file_verb({"module", "make", file, "--temp", "hot"}), std::invalid_argument);
    EXPECT_THROW(sim::prepare_file_verb({"module", "make", file, "--color", "red"}), std::invalid_argument);
}

TEST_F(Verbs, a_module_made_without_calibration_has_no_diagnostics)
{
    const TemporaryFolder folder;
    const std::string file = folder.file("plain.json");
    EXPECT_TRUE(
        sim::prepare_file_verb({"module", "make", file, "--wavelength", "1310", "--cal", "none"}).empty());
    board.ask({"plug", "ge", "1", file});
    EXPECT_EQ(board.ask({"module", "get", "ge", "1", "0x50", "92", "1"}), "00");
    EXPECT_THAT(board.refusal({"module", "get", "ge", "1", "0x51", "96", "2"}),
                HasSubstr("does not answer there"));
}

TEST_F(Verbs, devices_of_the_buses_are_listed_read_and_written)
{
    const std::string list = board.ask({"fru"});
    EXPECT_THAT(list, HasSubstr("phy aux 1      oui 0x0201f4, model 17, revision 3, link up"));
    EXPECT_THAT(list, HasSubstr("i2c 0 0x70   multiplexer, channels 0x0000\n"));
    EXPECT_THAT(list, HasSubstr("i2c 1 0x53   fan tray: eeprom, OLT Works FAN-3, serial FT24030871, part "
                                "130-0003-01, made 2025-12-04"));
    EXPECT_THAT(list, HasSubstr("i2c 3 0x49   outlet air: lm75, 31.5 C (0x1f80)"));
    EXPECT_EQ(board.ask({"fru", "get", "1", "0x53", "0", "4"}), "01000001");
    EXPECT_EQ(board.ask({"fru", "set", "1", "0x53", "6", "aabbcc"}), "ok");
    EXPECT_EQ(board.ask({"fru", "get", "1", "0x53", "6", "3"}), "aabbcc");
    EXPECT_THAT(board.ask({"fru"}), HasSubstr("i2c 1 0x53   fan tray: eeprom without inventory"));
    EXPECT_THAT(board.refusal({"fru", "get", "1", "0x57", "0", "1"}), HasSubstr("no device answers there"));
    EXPECT_EQ(board.refusal({"fru", "get", "4", "0x50", "0", "1"}), "error: \"4\" is not in 0..3");
}

TEST_F(Verbs, a_cable_can_be_pulled_from_a_phy)
{
    EXPECT_EQ(board.ask({"phy", "link", "aux", "2", "down"}), "ok");
    EXPECT_THAT(board.ask({"fru"}),
                HasSubstr("phy aux 2      oui 0x0201f4, model 22, revision 1, link down"));
    EXPECT_EQ(board.ask({"phy", "get", "aux", "2", "1"}), "0x7949");
    EXPECT_EQ(board.ask({"phy", "link", "aux", "2", "up"}), "ok");
    EXPECT_EQ(board.ask({"phy", "get", "aux", "2", "1"}), "0x7969") << "looking ends no note of a lost link";
    EXPECT_EQ(board.ask({"phy", "get", "aux", "2", "1"}), "0x7969");
}

TEST_F(Verbs, button_level_is_in_the_register_file)
{
    EXPECT_EQ(button_word(board), released);
    board.ask({"button", "press"});
    EXPECT_EQ(button_word(board), 0U);
    board.ask({"button", "release"});
    EXPECT_EQ(button_word(board), released);
}

TEST_F(Verbs, button_samples_release_after_their_time)
{
    board.ask({"time", "scale", "10"});
    const auto start = std::chrono::steady_clock::now();
    board.ask({"button", "samples", "5"});
    EXPECT_EQ(button_word(board), 0U);
    EXPECT_TRUE(eventually([&] { return button_word(board) == released; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(95));
}

TEST_F(Verbs, watched_register_is_reported)
{
    std::string seen;
    std::mutex guard;
    std::thread watcher([&] {
        sim::ask_board(board.path(), {"reg", "watch", "5"}, [&](bool, std::string_view text) {
            const std::lock_guard lock(guard);
            seen += text;
        });
    });
    const auto has = [&](const std::string &text) {
        return eventually([&] {
            const std::lock_guard lock(guard);
            return seen.find(text) != std::string::npos;
        });
    };
    EXPECT_TRUE(has("reg 5: 0x00\n"));
    board.ask({"reg", "set", "4", "1"});
    board.ask({"reg", "set", "6", "1"});
    board.ask({"reg", "set", "5", "2"});
    EXPECT_TRUE(has("reg 5: 0x00 -> 0x02\n"));
    board.end(SIGTERM);
    watcher.join();
    EXPECT_EQ(seen, "reg 5: 0x00\nreg 5: 0x00 -> 0x02\n") << "and nothing of the others";
}

TEST_F(Verbs, a_watcher_that_goes_is_told_no_more)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const pid_t watcher = ::fork();
    if (watcher == 0) {
        sim::ask_board(board.path(), {"reg", "watch", "5"}, [&](bool, std::string_view text) {
            static_cast<void>(::write(ends[1], text.data(), text.size()));
        });
        ::_exit(0);
    }
    char first = 0;
    EXPECT_EQ(::read(ends[0], &first, 1), 1) << "it watches";
    ::kill(watcher, SIGKILL);
    ::waitpid(watcher, nullptr, 0);
    for (const int end : ends)
        ::close(end);
    for (int value = 1; value <= 5; ++value)
        EXPECT_EQ(board.ask({"reg", "set", "5", std::to_string(value)}), "ok");
}

TEST_F(Verbs, a_sensors_fault_takes_the_place_of_the_one_before)
{
    board.ask({"temp", "fail", "always"});
    board.ask({"temp", "fail", "3"});
    const std::string faults = board.ask({"fault", "list"});
    EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), 0) << faults;
    EXPECT_THAT(faults, HasSubstr(" count=3 "));
    board.ask({"temp", "fail", "off"});
    EXPECT_EQ(board.ask({"fault", "list"}), "no faults");
}

TEST_F(Verbs, heater_takes_the_board_over_as_warm_as_it_is)
{
    board.ask({"temp", "set", "600"});
    board.ask({"time", "scale", "10"});
    board.ask({"heat", "0"});
    double celsius = 60;
    EXPECT_TRUE(eventually([&] {
        const std::string text = board.ask({"show"});
        celsius = std::stod(text.substr(text.find("temperature") + 11));
        return celsius != 60.0;
    }));
    EXPECT_LT(celsius, 60) << "the air around cools it";
    EXPECT_GT(celsius, 50);
}

TEST_F(Verbs, a_sensor_on_a_board_that_burns_shows_the_most_it_can)
{
    const auto sensor = [&] { return board.ask({"fru", "get", "2", "0x48", "0", "2"}); };
    board.ask({"temp", "set", "1200"});
    board.ask({"time", "scale", "1000"});
    board.ask({"heat", "200"});
    EXPECT_TRUE(eventually([&] { return sensor() == "7f80"; })) << "127.5 degrees";
    for (int look = 0; look < 100; ++look)
        ASSERT_EQ(sensor(), "7f80") << "hotter still, and not cold";
}

TEST_F(Verbs, log_wait_answers_when_the_line_comes)
{
    auto waiting = std::async(std::launch::async, [&] {
        return board.ask({"log", "wait", "mark now$", "10", "1"});
    });
    board.ask({"log", "mark", "before"});
    board.ask({"log", "mark", "now"});
    EXPECT_THAT(waiting.get(), testing::EndsWith("- mark now"));
    EXPECT_EQ(board.refusal({"log", "wait", "never", "0.05"}), "error: no such line in time");
    EXPECT_THAT(board.refusal({"log", "wait", "(", "1"}), StartsWith("error: \"(\": "));
}

TEST_F(Verbs, large_log_arrives_whole)
{
    for (int i = 0; i < 3000; ++i)
        board.ask({"log", "mark", std::string(200, 'x'), std::to_string(i)});
    const std::string log = board.ask({"log", "dump"});
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2999);
    EXPECT_THAT(log, testing::EndsWith(" 2999"));
}

TEST_F(Verbs, overview_shows_what_is_wrong)
{
    board.ask({"plug", "gpon", "1", module("gpon-1490")});
    board.ask({"module", "die", "gpon", "1"});
    board.ask({"power", "0x06"});
    board.ask({"temp", "set", "705"});
    const std::string text = board.ask({"show"});
    EXPECT_THAT(text, HasSubstr("temperature  70.5 C"));
    EXPECT_THAT(text, HasSubstr("supplies     1 bad, 2 good, board too hot (0x06)"));
    EXPECT_THAT(text, HasSubstr("pon 1        gpon-1490, dead"));
    board.ask({"reg", "set", "11", "0"});
    EXPECT_THAT(board.ask({"show"}), HasSubstr("pon 1        gpon-1490, no power, dead"));
}

TEST_F(Verbs, clients_that_break_the_protocol_lose_their_connection_only)
{
    EXPECT_THAT(board.refusal({"log", "mark", std::string(2U << 20, 'x')}), HasSubstr("error: "));
    EXPECT_EQ(board.ask({"reg", "get", "0"}), "0x21");
}

TEST_F(Verbs, a_bus_packet_of_another_length_than_it_says_costs_its_handle_only)
{
    const base::Fd bus(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = board.path() + "/" + board::sim_bus_socket;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::connect(bus.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    board::SimRequest request{};
    request.op = board::SimOp::open;
    request.length = 4; // and nothing follows
    ASSERT_EQ(::send(bus.get(), &request, sizeof request, MSG_NOSIGNAL), ssize_t{sizeof request});
    board::SimReply reply{};
    EXPECT_EQ(::recv(bus.get(), &reply, sizeof reply, 0), 0) << "the connection has ended";
    EXPECT_EQ(board.ask({"reg", "get", "0"}), "0x21");
}

} // namespace
