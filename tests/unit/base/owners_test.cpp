// SPDX-License-Identifier: GPL-2.0-or-later
// Owners give back what they own: once, and no sooner than they have to.
#include "base/fd.hpp"
#include "base/json.hpp"
#include "base/owner.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace {

int opened()
{
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool is_open(int fd)
{
    return ::fcntl(fd, F_GETFD) >= 0;
}

int given_back = 0;
void give_back(int *)
{
    ++given_back;
}

} // namespace

TEST(Fd, closes_at_its_end_what_it_owns)
{
    const int number = opened();
    {
        const base::Fd fd(number);
        EXPECT_TRUE(fd);
        EXPECT_EQ(fd.get(), number);
    }
    EXPECT_FALSE(is_open(number));
}

TEST(Fd, of_nothing_is_false_and_zero_is_a_descriptor)
{
    EXPECT_FALSE(base::Fd{});
    EXPECT_FALSE(base::Fd{-1});
    base::Fd standard_input(0);
    EXPECT_TRUE(standard_input);
    EXPECT_EQ(standard_input.release(), 0);
}

TEST(Fd, moves_without_closing_and_leaves_nothing_behind)
{
    const int number = opened();
    base::Fd first(number);
    const base::Fd second(std::move(first));
    // The state left is what is looked at.
    EXPECT_EQ(first.get(), -1); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(second.get(), number);
    EXPECT_TRUE(is_open(number));
}

TEST(Fd, closes_what_it_owned_when_another_is_assigned)
{
    const int old_number = opened();
    const int new_number = opened();
    base::Fd fd(old_number);
    fd = base::Fd(new_number);
    EXPECT_FALSE(is_open(old_number));
    EXPECT_TRUE(is_open(new_number));
    EXPECT_EQ(fd.get(), new_number);
}

TEST(Fd, stays_open_when_released)
{
    const int number = opened();
    {
        base::Fd fd(number);
        EXPECT_EQ(fd.release(), number);
        EXPECT_FALSE(fd);
    }
    ASSERT_TRUE(is_open(number));
    ::close(number);
}

TEST(Owner, calls_its_deleter_once_and_never_for_nothing)
{
    given_back = 0;
    int object = 0;
    using Owner = base::Owner<int, give_back>;
    {
        Owner first(&object);
        const Owner second(std::move(first));
        const Owner none;
        EXPECT_EQ(given_back, 0);
    }
    EXPECT_EQ(given_back, 1);
}

TEST(Json, gives_back_one_reference)
{
    json_object *object = json_object_new_object();
    json_object_get(object);
    {
        const base::Json owner(object);
    }
    EXPECT_EQ(json_object_put(object), 1); // the last one
}
