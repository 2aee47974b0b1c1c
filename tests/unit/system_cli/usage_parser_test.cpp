// SPDX-License-Identifier: GPL-2.0-or-later
// Percentages from the kernel's counters.
#include "diagd/system_cli/usage_parser.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace diagd;

namespace {

constexpr std::uint64_t start = 1'000'000;

float usage(std::uint64_t total, std::uint64_t idle)
{
    return cpu_usage_percent({start, start}, {start + total, start + idle});
}

} // namespace

TEST(CpuTimes, the_eight_counters_add_up)
{
    const auto times = parse_cpu_times("cpu  1 20 300 4000 50000 600000 7000000 80000000 9 9\n");
    ASSERT_TRUE(times);
    EXPECT_EQ(times->total, 87654321u);
    EXPECT_EQ(times->idle, 4000u);
}

TEST(CpuTimes, missing_later_counters_count_as_nothing)
{
    for (const auto &[line, total] : {std::pair{"cpu 1 2 3 4\n", 10u},
                                      {"cpu 1 2 3 4 5\n", 15u},
                                      {"cpu 1 2 3 4 5 6\n", 21u},
                                      {"cpu 1 2 3 4 5 6 7", 28u}}) {
        const auto times = parse_cpu_times(line);
        ASSERT_TRUE(times) << line;
        EXPECT_EQ(times->total, total);
        EXPECT_EQ(times->idle, 4u);
    }
}

TEST(CpuTimes, fewer_than_four_counters_are_no_sample)
{
    for (const char *const line : {"cpu 1 2 3\n", "cpu\n", "cpu one two three four\n", "cpu 1 2 x 4\n"})
        EXPECT_FALSE(parse_cpu_times(line)) << line;
}

TEST(CpuTimes, another_line_is_no_sample)
{
    for (const char *const line : {"", "\n", "intr 1 2 3 4\n", " cpu 1 2 3 4\n", "ctxt 1 2 3 4\n"})
        EXPECT_FALSE(parse_cpu_times(line)) << line;
}

TEST(CpuTimes, counters_use_all_64_bits)
{
    const auto times = parse_cpu_times("cpu 18446744073709551615 0 0 18446744073709551615\n");
    ASSERT_TRUE(times);
    EXPECT_EQ(times->idle, std::numeric_limits<std::uint64_t>::max());
}

TEST(CpuUsage, busy_share_has_one_decimal)
{
    EXPECT_FLOAT_EQ(usage(1000, 953), 4.7F);
    EXPECT_FLOAT_EQ(usage(1000, 0), 100.0F);
    EXPECT_FLOAT_EQ(usage(1000, 500), 50.0F);
}

TEST(CpuUsage, an_idle_share_below_ten_has_a_blank_for_its_tens)
{
    EXPECT_FLOAT_EQ(usage(869, 4), 99.6F); // 0.46 % idle is " 0.4"
    EXPECT_FLOAT_EQ(usage(1000, 53), 94.7F);
}

TEST(CpuUsage, the_idle_share_is_cut_not_rounded)
{
    EXPECT_FLOAT_EQ(usage(2000, 1999), 0.1F);
}

TEST(CpuUsage, an_interval_all_idle_is_exactly_nothing)
{
    EXPECT_EQ(usage(1000, 1000), 0.0F);
    EXPECT_EQ(usage(1000, 1001), 0.0F);
}

TEST(CpuUsage, equal_totals_are_a_difference_of_one)
{
    EXPECT_FLOAT_EQ(usage(0, 0), 100.0F);
    EXPECT_EQ(usage(0, 1), 0.0F);
}

TEST(CpuUsage, an_idle_counter_that_goes_back_is_idle)
{
    EXPECT_EQ(cpu_usage_percent({1000, 900}, {2000, 899}), 0.0F);
}

TEST(CpuUsage, differences_are_of_32_bits)
{
    constexpr std::uint64_t high = std::uint64_t{7} << 32;
    EXPECT_FLOAT_EQ(cpu_usage_percent({0, 0}, {high + 1000, high + 953}), 4.7F);
    EXPECT_FLOAT_EQ(cpu_usage_percent({0, 0}, {high, 0}), 100.0F);
}

// The share through its text against the same in decimal arithmetic, for every share there is.
TEST(CpuUsage, every_share_agrees_with_decimal_arithmetic)
{
    for (std::uint32_t total = 1; total <= 300; ++total)
        for (std::uint32_t idle = 0; idle < total; ++idle) {
            const int busy_tenths = 1000 - static_cast<int>(idle * 1000 / total);
            ASSERT_NEAR(usage(total, idle), busy_tenths / 10.0, 1e-5) << idle << " of " << total;
        }
}

TEST(Meminfo, the_second_word_is_the_number)
{
    EXPECT_EQ(parse_meminfo_kb("MemTotal:       24684096 kB"), 24684096);
    EXPECT_EQ(parse_meminfo_kb("MemTotal: 1000"), 1000);
    EXPECT_EQ(parse_meminfo_kb("  MemTotal:  1000  kB"), 1000);
}

TEST(Meminfo, ten_characters_of_it_count)
{
    EXPECT_EQ(parse_meminfo_kb("MemTotal: 123456789012 kB"), 1234567890);
    EXPECT_EQ(parse_meminfo_kb("MemTotal: 9999999999 kB"), 9999999999);
}

TEST(Meminfo, no_number_is_nothing)
{
    for (const char *const line : {"", " ", "MemTotal:", "MemTotal: ", "MemTotal: kB"})
        EXPECT_EQ(parse_meminfo_kb(line), 0) << line;
}

TEST(MemoryUsage, what_is_not_free_is_used)
{
    EXPECT_FLOAT_EQ(memory_usage_percent(1000, 250), 75.0F);
    EXPECT_FLOAT_EQ(memory_usage_percent(1000, 0), 100.0F);
    EXPECT_FLOAT_EQ(memory_usage_percent(3, 1), 66.666667F);
}

TEST(MemoryUsage, no_total_gives_no_number)
{
    EXPECT_TRUE(std::isnan(memory_usage_percent(0, 0)));
    EXPECT_TRUE(std::isinf(memory_usage_percent(0, 10)));
}

TEST(WholePercent, is_cut_towards_zero)
{
    EXPECT_EQ(whole_percent(7.9F), 7);
    EXPECT_EQ(whole_percent(99.99F), 99);
    EXPECT_EQ(whole_percent(-1.9F), -1);
}

TEST(WholePercent, what_is_no_number_is_nothing)
{
    using Limits = std::numeric_limits<float>;
    for (const float value : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max()})
        EXPECT_EQ(whole_percent(value), 0) << value;
}
