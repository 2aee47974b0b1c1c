// SPDX-License-Identifier: GPL-2.0-or-later
// board.json: a description with any mistake is refused as a whole, in one line; one that is taken makes a
// board.
#include "platform/description/board_description.hpp"
#include "platform/description/json_fields.hpp"
#include "tests/fuzz/fuzz.hpp"

#include "base/fd.hpp"

#include <sys/mman.h>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const base::Fd file(::memfd_create("board.json", MFD_CLOEXEC));
    static const std::string path = "/proc/self/fd/" + std::to_string(file.get());
    fuzz::expect(::ftruncate(file.get(), 0) == 0 &&
                     ::pwrite(file.get(), data, size, 0) == static_cast<ssize_t>(size),
                 "the description is there to be read");
    try {
        const board::Board board = board::load(path);
        fuzz::expect(board.bus_count >= 1, "a board has a bus");
    } catch (const json::Error &error) {
        fuzz::expect(std::string_view(error.what()).starts_with(path), "a complaint names the file");
    }
    return 0;
}
