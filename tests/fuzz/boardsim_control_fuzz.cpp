// SPDX-License-Identifier: GPL-2.0-or-later
// The verbs of the simulated board, as boardctl sends them: each is answered, whatever its words are.
// Input: requests, each ended by two zero bytes, their words by one.
#include "sim/boardsim/control/verbs.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <sys/socket.h>
#include <sys/un.h>

#include <utility>

namespace {

class Client final : public sim::ControlClient {
public:
    ~Client() override
    {
        if (gone_ && !finished_)
            gone_();
    }
    void send(std::string_view text) override { answer_ += text; }
    void finish() override { finished_ = true; }
    void on_gone(std::function<void()> gone) override { gone_ = std::move(gone); }
    void expect_answered() const
    {
        fuzz::expect(finished_ || gone_, "a request is answered, now or later");
        fuzz::expect(!finished_ || answer_.starts_with("0\n") || answer_.starts_with("1\nerror: "),
                     "an answer begins with its status");
    }

private:
    std::string answer_;
    bool finished_ = false;
    std::function<void()> gone_;
};

base::Fd listening()
{
    base::Fd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr address{.sa_family = AF_UNIX, .sa_data = {}}; // without a name: the kernel gives one
    fuzz::expect(::bind(fd.get(), &address, sizeof address.sa_family) == 0 && ::listen(fd.get(), 1) == 0,
                 "there is a socket to listen on");
    return fd;
}

// Everything that the verbs work on, in the order of boardsim itself.  Files of the panel are made in the
// folder that the target runs in.
struct Everything {
    sim::EventLoop &loop;
    sim::SimulatedBoard board;
    sim::FrontPanel panel{board.description, "."};
    sim::BoardTime time{loop};
    sim::Drift drift{time, board, 1};
    sim::Heater heater{time, board};
    sim::BusService bus{loop, board, listening()};
    sim::ServiceBus service_bus{loop, {.listen = listening, .remove = [] {}}};
    sim::VerbTable verbs;

    Everything(sim::EventLoop &loop_, const board::Board &description) : loop(loop_), board(description)
    {
        sim::add_verbs(verbs, {loop, board, panel, bus, service_bus, time, drift, heater});
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const board::Board description = board::load(OLT8_JSON);
    static sim::EventLoop loop;
    Everything all(loop, description);
    std::vector<std::unique_ptr<Client>> clients;
    sim::Words words;
    for (fuzz::Input input(data, size); !input.empty();) {
        words.emplace_back(input.word());
        if (!words.back().empty() && !input.empty())
            continue;
        words.pop_back();
        clients.push_back(std::make_unique<Client>());
        all.verbs.run(std::exchange(words, {}), *clients.back());
        clients.back()->expect_answered();
        if (all.drift.runs())
            all.drift.step();
    }
    clients.clear(); // before the verbs that they wait at
    return 0;
}
