// SPDX-License-Identifier: GPL-2.0-or-later
// boardctl: the operator's hand on a simulated board.  Verbs that need files are prepared here; everything
// else is boardsim's (see its table of verbs).
//
// Failure policy: one line "error: ..." on standard error and status 1; the board stays as it was.
#include <cstdio>
#include <exception>

#include "platform/description/board_description.hpp"
#include "sim/boardctl/control_client.hpp"
#include "sim/boardctl/file_verbs.hpp"

namespace {

// $BOARDSIM_DIR, else what the board's description says, else where a box has it.
std::string folder()
{
    if (const char *given = std::getenv("BOARDSIM_DIR"); given != nullptr && *given != '\0')
        return given;
    std::string error;
    const board::Board *board = board::this_board(error);
    return board != nullptr ? board->sim_folder : "/run/boardsim";
}

void print(bool good, std::string_view text)
{
    std::FILE *out = good ? stdout : stderr;
    std::fwrite(text.data(), 1, text.size(), out);
    std::fflush(out);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        std::vector<std::string> words(argv + 1, argv + argc);
        if (words.empty())
            words = {"help"};
        if (words == std::vector<std::string>{"--version"}) {
            std::puts("boardctl " DIAGD_VERSION);
            return 0;
        }
        if (sim::is_file_verb(words)) {
            words = sim::prepare_file_verb(words);
            if (words.empty())
                return 0;
        }
        return sim::ask_board(folder(), words, print);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
