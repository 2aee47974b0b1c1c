// SPDX-License-Identifier: GPL-2.0-or-later
// Descriptions of modules: refused in one line, or made into a memory whose check codes are right.
#include "optics/decode.hpp"
#include "sim/modules/generator.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <stdexcept>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    module_files::ModuleImage image;
    try {
        image = sim::generate_module(fuzz::as_text(data, size), "x.json");
    } catch (const std::runtime_error &) {
        return 0;
    }
    const auto whole = [](const module_files::ModuleDevice &device) {
        std::vector<std::uint8_t> bytes(device.lower.begin(), device.lower.end());
        bytes.insert(bytes.end(), device.pages.at(0).begin(), device.pages.at(0).end());
        return bytes;
    };
    const auto found = image.devices.find(module_files::address_a0);
    fuzz::expect(found != image.devices.end(), "a module has an identification");
    const std::vector<std::uint8_t> a0 = whole(found->second);
    fuzz::expect(!optics::decode({.a0 = a0}).doubts.check_failed, "check codes are right");
    return 0;
}
