// SPDX-License-Identifier: GPL-2.0-or-later
// Any bytes of any length give a module that can be shown.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "base/json_writer.hpp"
#include "optics/render.hpp"
#include "tests/unit/optics/memories.hpp"

namespace {

constexpr int rounds = 10'000;

class RandomMemory {
public:
    explicit RandomMemory(unsigned seed) : random_(seed) {}

    optics::Memory make()
    {
        const bool paged = random_() % 2 == 0;
        optics::Memory memory;
        if (paged)
            memory = {.lower = part(128),
                      .page00 = part(128),
                      .page01 = part(128),
                      .page02 = part(128),
                      .page03 = part(128),
                      .page11 = part(128)};
        else
            memory = {.a0 = part(256), .a2 = part(256)};
        return memory;
    }

private:
    // Often whole, often with an identifier that is known, sometimes cut off or away.
    optics::Bytes part(std::size_t size)
    {
        std::vector<std::uint8_t> &bytes =
            parts_.emplace_back(random_() % 4 == 0 ? random_() % (size + 1) : size);
        for (std::uint8_t &byte : bytes)
            byte = static_cast<std::uint8_t>(random_() % 256);
        constexpr std::uint8_t known[] = {0x03, 0x0b, 0x0d, 0x11, 0x18, 0x19, 0x1e, 0x00};
        if (!bytes.empty() && random_() % 4 != 0)
            bytes[0] = known[random_() % std::size(known)];
        return bytes;
    }

    std::minstd_rand random_;
    std::vector<std::vector<std::uint8_t>> parts_;
};

void expect_sane(const optics::Value &value)
{
    if (value.state == optics::State::ok)
        EXPECT_TRUE(std::isfinite(value.value) && value.reason == optics::Reason::none);
    else
        EXPECT_NE(value.reason, optics::Reason::none);
}

TEST(RandomMemories, are_decoded_and_shown)
{
    std::size_t with_values = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        RandomMemory random(round + 1);
        const optics::Module module = optics::decode(random.make());
        ASSERT_LE(module.lane_count, optics::max_lanes);
        expect_sane(module.temperature);
        expect_sane(module.voltage);
        for (std::size_t i = 0; i < module.lane_count; ++i) {
            expect_sane(module.lanes[i].bias);
            expect_sane(module.lanes[i].tx_power);
            expect_sane(module.lanes[i].rx_power);
        }
        with_values += module.temperature.state == optics::State::ok;
        base::JsonWriter json;
        optics::render_json(module, json);
        for (const std::string &shown : {optics::render_text(module), json.text()}) {
            ASSERT_FALSE(shown.empty());
            for (const char c : shown)
                ASSERT_TRUE((c >= ' ' && c <= '~') || c == '\n') << round;
        }
    }
    EXPECT_GT(with_values, rounds / 10U);
}

} // namespace
