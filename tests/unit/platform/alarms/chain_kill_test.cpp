// SPDX-License-Identifier: GPL-2.0-or-later
// A writer that dies at any instruction: a child changes a shared store and is stepped through it one
// instruction at a time; whatever the memory looks like then is what the next process would find had the
// child died there.
#include "tests/unit/platform/alarms/chain_view.hpp"

#include <algorithm>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t capacity = 4;
constexpr std::size_t size = tq::AlarmChain::size(capacity);

using Messages = std::vector<std::string>;

struct Outcome {
    Messages messages;
    std::uint64_t filed;
    bool operator==(const Outcome &) const = default;
};

Outcome outcome(StoreMemory &memory)
{
    return {messages(memory.store(), capacity), memory.chain().filed()};
}

// What the next taker of the semaphore makes of `bytes`.
Outcome recovered(const void *bytes)
{
    StoreMemory memory(bytes, capacity);
    memory.chain().recover();
    EXPECT_EQ(disorder(memory.store(), capacity), "");
    EXPECT_TRUE(memory.chain().is_sound());
    return outcome(memory);
}

// Runs `change` in a child, one instruction at a time, and shows every state of the store that differs from
// the last.  Returns the number of states.
int for_each_state(void *shared, const std::function<void()> &change, const std::function<void()> &look)
{
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        change();
        raise(SIGSTOP);
        _exit(0);
    }
    int status = 0;
    int states = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    std::vector<char> last(static_cast<char *>(shared), static_cast<char *>(shared) + size);
    for (;;) {
        ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr);
        if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status) || WSTOPSIG(status) == SIGSTOP)
            break;
        if (std::memcmp(last.data(), shared, size) != 0) {
            std::memcpy(last.data(), shared, size);
            ++states;
            look();
        }
    }
    EXPECT_TRUE(WIFSTOPPED(status));
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return states;
}

class KilledWriter : public testing::Test {
protected:
    KilledWriter() : shared(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        tq::AlarmChain::format(shared, capacity);
    }
    ~KilledWriter() override { munmap(shared, size); }

    tq::AlarmChain chain() { return {shared, capacity}; }
    void add(std::initializer_list<const char *> texts)
    {
        for (const char *text : texts)
            chain().add(record_with(text));
    }

    // Every state between `before` and `after` is recovered to one of the two, and to `after` for good once
    // it has been reached.
    void expect_all_or_nothing(const std::function<void()> &change)
    {
        const Outcome before = recovered(shared);
        StoreMemory complete(shared, capacity);
        std::vector<Outcome> outcomes;
        const int states = for_each_state(shared, change, [&] { outcomes.push_back(recovered(shared)); });
        const Outcome after = recovered(shared);
        EXPECT_NE(before, after);
        EXPECT_GT(states, 4);
        const auto first_after = std::find(outcomes.begin(), outcomes.end(), after);
        for (auto at = outcomes.begin(); at != outcomes.end(); ++at)
            EXPECT_EQ(*at, at < first_after ? before : after) << "state " << at - outcomes.begin();
    }

    void *shared;
};

} // namespace

TEST_F(KilledWriter, adding_the_first_record_happens_wholly_or_not_at_all)
{
    expect_all_or_nothing([this] { add({"a"}); });
}

TEST_F(KilledWriter, adding_to_a_store_with_room_happens_wholly_or_not_at_all)
{
    add({"a", "b"});
    expect_all_or_nothing([this] { add({"c"}); });
}

TEST_F(KilledWriter, replacing_the_oldest_happens_wholly_or_not_at_all)
{
    add({"a", "b", "c", "d"});
    expect_all_or_nothing([this] { add({"e"}); });
}

TEST_F(KilledWriter, adding_after_a_removal_happens_wholly_or_not_at_all)
{
    add({"a", "b", "c", "d"});
    chain().remove(2);
    expect_all_or_nothing([this] { add({"e"}); });
}

TEST_F(KilledWriter, removing_any_record_happens_wholly_or_not_at_all)
{
    for (std::uint32_t index = 0; index < 3; ++index) {
        tq::AlarmChain::format(shared, capacity);
        std::memset(static_cast<char *>(shared) + sizeof(tq_alarm_store_t), 0,
                    capacity * sizeof(tq_alarm_slot_t));
        add({"a", "b", "c"});
        expect_all_or_nothing([&] { chain().remove(index); });
    }
}

TEST_F(KilledWriter, removing_the_only_record_happens_wholly_or_not_at_all)
{
    add({"a"});
    expect_all_or_nothing([this] { chain().remove(0); });
}

TEST_F(KilledWriter, a_repair_that_is_killed_is_taken_up_by_the_next)
{
    add({"a", "b", "c", "d"});
    // Every state of a replacement, and every state of the repair of each of them.
    std::vector<std::vector<char>> killed;
    const auto bytes = [this] {
        return std::vector<char>(static_cast<char *>(shared), static_cast<char *>(shared) + size);
    };
    for_each_state(
        shared, [this] { add({"e"}); }, [&] { killed.push_back(bytes()); });
    ASSERT_GT(killed.size(), 4u);
    for (const auto &state : killed) {
        const Outcome expected = recovered(state.data());
        std::memcpy(shared, state.data(), size);
        for_each_state(
            shared, [this] { chain().recover(); }, [&] { EXPECT_EQ(recovered(shared), expected); });
    }
}
