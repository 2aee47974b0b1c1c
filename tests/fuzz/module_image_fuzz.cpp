// SPDX-License-Identifier: GPL-2.0-or-later
// A module's text form, as boardctl hands it to the board and as the board keeps it.
#include "module_files/module_image.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    module_files::ModuleImage image;
    try {
        image = module_files::image_from_text(fuzz::as_text(data, size));
    } catch (const module_files::ModuleError &) {
        return 0;
    }
    const std::string text = module_files::to_text(image);
    fuzz::expect(module_files::to_text(module_files::image_from_text(text)) == text,
                 "a module that was kept is the same afterwards");
    for (auto &[address, device] : image.devices)
        for (unsigned reg = 0; reg < 256; ++reg) {
            const auto at = static_cast<std::uint8_t>(reg);
            device.write(at, static_cast<std::uint8_t>(device.read(at) + address));
        }
    return 0;
}
