// SPDX-License-Identifier: GPL-2.0-or-later
// What the daemon says, on the streams of diagsh.
#include "shell/output.hpp"

#include "shell/failure.hpp"

#include <cstdio>

namespace diagsh {

void write_out(const std::string &text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure(EX_IOERR, "cannot write to standard output");
}

int report_failed(const std::string &command, const VtyAnswer &answer)
{
    std::fwrite(answer.text.data(), 1, answer.text.size(), stderr);
    if (answer.text.empty())
        std::fprintf(stderr, "diagsh: command failed with status %d: %s\n", answer.status, command.c_str());
    else if (answer.text.back() != '\n')
        std::fputc('\n', stderr);
    return answer.status;
}

} // namespace diagsh
