// SPDX-License-Identifier: GPL-2.0-or-later
// Transactions with the simulated board, as the board libraries' packets bring them.
// Input: packets, each behind a word that tells its length; handle 0 or 1 by the highest bit of that word.
#include "sim/boardsim/bus/bus_handle.hpp"
#include "sim/modules/module_file.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <cstring>

namespace {

sim::SimulatedBoard new_board()
{
    static const board::Board description = board::load(OLT8_JSON);
    return sim::SimulatedBoard(description);
}

const module_files::ModuleImage &module()
{
    static const auto made = sim::read_module({MODULE_JSON}, false);
    return made.image;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    sim::SimulatedBoard board = new_board();
    board.cages.find(sim::CageKind::pon, 1)->plug(module());
    std::array<sim::BusHandle, 2> handles;
    sim::BusAnswer answer;
    while (!input.empty()) {
        const unsigned head = input.u16();
        sim::BusHandle &handle = handles[head >> 15];
        board::SimRequest request{};
        const auto packet = input.take(head & 0x7fff);
        std::memcpy(&request, packet.data(), std::min(packet.size(), sizeof request));
        const auto out = packet.subspan(std::min(packet.size(), sizeof request));
        // What the socket's side has looked at before.
        request.op = static_cast<board::SimOp>(static_cast<unsigned>(request.op) % board::sim_op_count);
        request.length = static_cast<std::uint32_t>(out.size());
        if (!handle.opened)
            request.op = board::SimOp::open;
        sim::transact(board, handle, request, out, answer);
        fuzz::expect(answer.result <= 0 && answer.data.size() <= board::Bus::max_transfer,
                     "an answer is an error or fits its packet");
    }
    board.log.each(0, [](const std::string &line) {
        fuzz::expect(line.find('\n') == line.npos, "a transaction is one line of the log");
    });
    return 0;
}
