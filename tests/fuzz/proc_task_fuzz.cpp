// SPDX-License-Identifier: GPL-2.0-or-later
// What the kernel says of a thread; whoever names a program chooses the bytes that are shown.
#include "diagd/system_cli/task_parser.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::as_text(data, size);
    const auto number = diagd::parse_task_folder(text);
    fuzz::expect(!number || text.find_first_not_of("0123456789") == text.npos, "a number is digits");
    const std::string command = diagd::parse_task_command(text);
    const diagd::TaskStatus status = diagd::parse_task_status(text);
    for (const std::string &shown : {command, status.name, status.state}) {
        fuzz::expect_harmless(shown);
        fuzz::expect(shown.find_first_of("\r\n") == shown.npos, "a name does not end its line");
    }
    fuzz::expect(command.find('/') == command.npos, "a base name has no folder");
    return 0;
}
