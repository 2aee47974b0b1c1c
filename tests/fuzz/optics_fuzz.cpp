// SPDX-License-Identifier: GPL-2.0-or-later
// The standards' decoder: any bytes of any length give a module that says what is wrong with it.
// Input: a byte whose bits say which parts were read, then the parts, the last of which may end early.
#include "base/json.hpp"
#include "base/json_writer.hpp"
#include "optics/decode.hpp"
#include "optics/judgement.hpp"
#include "optics/render.hpp"
#include "optics/words.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <cmath>

namespace {

optics::Memory parts_of(fuzz::Input &input)
{
    const unsigned which = input.u8();
    optics::Memory memory;
    constexpr std::size_t flat = 256, page = 128;
    const struct {
        optics::Bytes *bytes;
        std::size_t size;
    } parts[] = {{&memory.a0, flat},     {&memory.a2, flat},     {&memory.lower, page},
                 {&memory.page00, page}, {&memory.page01, page}, {&memory.page02, page},
                 {&memory.page03, page}, {&memory.page11, page}};
    for (std::size_t i = 0; i < std::size(parts); ++i)
        if ((which >> i & 1) != 0)
            *parts[i].bytes = input.take(parts[i].size);
    return memory;
}

void expect_sound(const optics::Value &value, const optics::Module &module)
{
    using optics::State;
    fuzz::expect(value.state != State::ok || std::isfinite(value.value), "a value that is ok is a number");
    fuzz::expect((value.state == State::ok) == (value.reason == optics::Reason::none),
                 "whatever is not ok has its reason");
    const bool can_be_judged =
        module.trusted() && (value.state == State::ok || value.state == State::no_light);
    fuzz::expect(can_be_judged || value.judgement == optics::Judgement::none,
                 "only a value of a trusted module is judged");
}

void expect_sound(const optics::Module &module)
{
    fuzz::expect(module.lane_count <= optics::max_lanes && module.check_count <= module.checks.size(),
                 "there is room for what is counted");
    expect_sound(module.temperature, module);
    expect_sound(module.voltage, module);
    for (std::size_t i = 0; i < module.lane_count; ++i)
        for (const optics::Value *value :
             {&module.lanes[i].bias, &module.lanes[i].tx_power, &module.lanes[i].rx_power})
            expect_sound(*value, module);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const optics::Module module = optics::decode(parts_of(input));
    expect_sound(module);
    const std::string text = optics::render_text(module);
    fuzz::expect_harmless(text);
    base::JsonWriter json;
    optics::render_json(module, json);
    fuzz::expect_harmless(json.text());
    fuzz::expect(static_cast<bool>(base::Json(json_tokener_parse(json.text().c_str()))),
                 "the module as JSON is JSON");
    static_cast<void>(optics::verdict_of(module));
    return 0;
}
