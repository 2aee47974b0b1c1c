// SPDX-License-Identifier: GPL-2.0-or-later
// boardsim: the simulated board.  It runs until SIGTERM or SIGINT and outlives the daemons that use it.
//
// Failure policy: what it needs to start (description, folder, sockets) is checked at the start and ends it
// with one line and status 1; a state that cannot be written is said once and the board goes on.
#include <getopt.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cstdio>
#include <exception>
#include <string>

#include "platform/board/service_bus_protocol.hpp"
#include "platform/board/sim_protocol.hpp"
#include "platform/description/board_check.hpp"
#include "sim/boardsim/board_folder.hpp"
#include "sim/boardsim/board_state.hpp"
#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace {

constexpr char usage[] =
    "usage: boardsim [--board FILE] [--dir DIR] [--state DIR] [--population FILE]\n"
    "                [--pinned] [--seed N] [--version]\n"
    "  --board FILE  description, default $OLT_BOARD or /etc/olt/board.json\n"
    "  --dir DIR     folder of the sockets, default $BOARDSIM_DIR or the description's\n"
    "  --state DIR   keep registers and modules there over a restart\n"
    "  --population FILE  modules plugged at the start, unless there is a state to go on with\n"
    "  --pinned      temperatures and powers do not move\n"
    "  --seed N      of the movement, default 1\n"
    "  --version     say the version, and no more\n";

struct Options {
    std::string board = board::default_file();
    std::string folder;
    std::string state;
    std::string population;
    bool pinned = false;
    bool version = false;
    std::uint32_t seed = 1;
};

// False: the usage has been shown.
bool parse(int argc, char **argv, Options &options)
{
    const option known[] = {
        {"board", required_argument, nullptr, 'b'}, {"dir", required_argument, nullptr, 'd'},
        {"state", required_argument, nullptr, 's'}, {"population", required_argument, nullptr, 'm'},
        {"pinned", no_argument, nullptr, 'p'},      {"seed", required_argument, nullptr, 'r'},
        {"version", no_argument, nullptr, 'v'},     {nullptr, 0, nullptr, 0}};
    for (int letter; (letter = ::getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'b':
            options.board = optarg;
            break;
        case 'd':
            options.folder = optarg;
            break;
        case 's':
            options.state = optarg;
            break;
        case 'm':
            options.population = optarg;
            break;
        case 'p':
            options.pinned = true;
            break;
        case 'r':
            options.seed = static_cast<std::uint32_t>(sim::parse_number(optarg, 0, 0xffffffff));
            break;
        case 'v':
            options.version = true;
            break;
        default:
            std::fputs(usage, stderr);
            return false;
        }
    }
    if (optind == argc)
        return true;
    std::fputs(usage, stderr);
    return false;
}

void serve(const Options &options)
{
    board::Board description = board::load(options.board);
    // Not refused: trying what a daemon makes of such a board is what a simulation is for.
    for (const std::string &line : board::inconsistencies(description))
        std::fprintf(stderr, "boardsim: %s: %s\n", options.board.c_str(), line.c_str());
    const bool drifting = description.drift && !options.pinned;
    sim::BoardFolder folder(options.folder.empty() ? board::sim_folder(description) : options.folder);
    sim::EventLoop loop;
    sim::SimulatedBoard board(std::move(description));
    sim::FrontPanel panel(board.description, folder.path());
    sim::StateFile state(loop, board, options.state);
    if (!state.load() && !options.population.empty()) {
        sim::populate(board, options.population);
        state.changed();
    }
    sim::BoardTime time(loop);
    sim::Drift drift(time, board, options.seed);
    sim::Heater heater(time, board);
    sim::BusService bus(loop, board, folder.listen(board::sim_bus_socket, SOCK_SEQPACKET));
    sim::ServiceBus service_bus(
        loop, {.listen = [&] { return folder.listen(board::service_bus_socket, SOCK_STREAM); },
               .remove = [&] { folder.remove(board::service_bus_socket); }});
    sim::VerbTable verbs;
    sim::add_verbs(verbs, {loop, board, panel, bus, service_bus, time, drift, heater});
    sim::ControlService control(
        loop, folder.listen(board::sim_control_socket, SOCK_STREAM),
        [&](const sim::Words &words, sim::ControlClient &client) { verbs.run(words, client); });
    bus.on_write([&] { state.changed(); });
    verbs.on_write([&] { state.changed(); });
    if (drifting)
        drift.start();
    std::printf("boardsim: board %s in %s\n", board.description.name.c_str(), folder.path().c_str());
    std::fflush(stdout);
    loop.run();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        Options options;
        if (!parse(argc, argv, options))
            return 2;
        if (options.version) {
            std::puts("boardsim " DIAGD_VERSION);
            return 0;
        }
        serve(options);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "boardsim: %s\n", error.what());
        return 1;
    }
}
