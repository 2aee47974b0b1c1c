// SPDX-License-Identifier: GPL-2.0-or-later
// Stacks that are left and gone on with.
#include "diagd/core/loop_stack.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using diagd::LoopStack;
using testing::ElementsAre;

namespace {

LoopStack *home = nullptr;
std::vector<std::unique_ptr<LoopStack>> stacks;
std::vector<std::string> said;

void say(const std::string &text)
{
    said.push_back(text);
}

// What is on the stack is still there when it is gone on with.
void count() noexcept
{
    std::string mine = "0";
    LoopStack &self = *stacks.back();
    for (int n = 1;; ++n) {
        mine += " " + std::to_string(n);
        say(mine);
        self.switch_to(*home);
    }
}

// An array as large as any handler's, and a call below it.
void fill() noexcept
{
    LoopStack &self = *stacks.back();
    for (;;) {
        volatile char room[200 * 1024];
        for (std::size_t i = 0; i < sizeof room; i += 4096)
            room[i] = 1;
        say(room[4096] == 1 ? "full" : "empty");
        self.switch_to(*home);
    }
}

LoopStack &make(void (*body)() noexcept)
{
    stacks.push_back(std::make_unique<LoopStack>());
    EXPECT_TRUE(stacks.back()->prepare(body));
    return *stacks.back();
}

class LoopStacks : public testing::Test {
protected:
    LoopStacks()
    {
        home = &first_;
        said.clear();
    }
    ~LoopStacks() override { stacks.clear(); }

    LoopStack first_;
};

} // namespace

TEST_F(LoopStacks, each_goes_on_where_it_was_left)
{
    LoopStack &one = make(count);
    first_.switch_to(one);
    LoopStack &other = make(count);
    first_.switch_to(other);
    first_.switch_to(one);
    first_.switch_to(other);
    EXPECT_THAT(said, ElementsAre("0 1", "0 1", "0 1 2", "0 1 2"));
}

TEST_F(LoopStacks, one_has_room_for_what_a_handler_needs)
{
    LoopStack &one = make(fill);
    first_.switch_to(one);
    first_.switch_to(one);
    EXPECT_THAT(said, ElementsAre("full", "full"));
}

TEST_F(LoopStacks, many_can_be_made_and_given_back_again)
{
    for (int round = 0; round < 300; ++round) {
        first_.switch_to(make(fill));
        stacks.pop_back();
    }
    EXPECT_EQ(said.size(), 300U);
}
