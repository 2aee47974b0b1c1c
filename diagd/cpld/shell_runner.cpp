// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines of the CPLD's upgrade; the failure policy stands in shell_runner.hpp.
#include "diagd/cpld/shell_runner.hpp"

#include "diagd/core/child_programs.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>

int diagd::run_dropping_output(const std::string &line) noexcept
{
    const ChildSignals signals;
    keep_descriptors();
    std::FILE *const output = popen(line.c_str(), "re");
    if (output == nullptr) {
        std::printf("popen error: %s/n", std::strerror(errno));
        std::fflush(stdout); // no line end
        return -1;
    }
    char text[1024];
    while (std::fgets(text, sizeof text, output) != nullptr) {
    }
    const int status = pclose(output);
    if (status == -1)
        std::perror("pclose");
    else if (status != 0)
        std::printf("popen res is :%d\n", status);
    return status;
}

void diagd::run_to_its_end(const std::string &line) noexcept
{
    if (run_shell_line(line.c_str()) == -1)
        std::perror("system");
}
