// SPDX-License-Identifier: GPL-2.0-or-later
// Dumps of module memories, as files in any of their forms.
// Input: names and contents in turn, each ended by a zero byte; a content that is to hold zero bytes comes
// last.
#include "module_files/dump_reader.hpp"
#include "optics/decode.hpp"
#include "tests/fuzz/fuzz.hpp"

namespace {

std::vector<module_files::Dump> dumps_of(fuzz::Input input)
{
    std::vector<module_files::Dump> dumps;
    while (!input.empty()) {
        const std::string name(input.word());
        const std::string_view content = name.starts_with("!") ? input.rest() : input.word();
        module_files::Bytes bytes = module_files::parse_dump(content, name);
        fuzz::expect(bytes.size() <= content.size(), "a dump holds no more than its file");
        dumps.push_back({name, std::move(bytes)});
    }
    return dumps;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using module_files::ModuleError;
    std::vector<module_files::Dump> dumps;
    try {
        dumps = dumps_of({data, size});
        for (const module_files::Part &part : module_files::sort_dumps(dumps))
            fuzz::expect(!part.bytes.empty() && part.bytes.size() <= 256, "a part is a piece of a memory");
    } catch (const ModuleError &) {
        return 0;
    }
    for (const bool pad : {false, true})
        try {
            const auto module = module_files::assemble_module(dumps, pad);
            fuzz::expect(module.image.devices.contains(module_files::address_a0),
                         "a module has an identification");
        } catch (const ModuleError &) {
        }
    return 0;
}
