// SPDX-License-Identifier: GPL-2.0-or-later
// Saving the configuration of all daemons of an OLT.  A daemon that does not answer in time has not saved:
// the caller may be about to reset the box and must not hang.
#include "shell/modes.hpp"

#include "shell/failure.hpp"
#include "shell/vty_session.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace diagsh {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds longest_answer{10};

std::vector<std::string> vty_sockets(const fs::path &folder)
{
    std::vector<std::string> sockets;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error))
        if (entry.path().extension() == ".vty" && entry.is_socket(error))
            sockets.push_back(entry.path());
    std::ranges::sort(sockets);
    return sockets;
}

void save_one(const std::string &socket)
{
    VtySession session(socket, longest_answer);
    for (const char *command : {"enable", "write file"}) {
        const VtyAnswer answer = session.run(command);
        if (answer.status != 0)
            throw Failure(answer.status, answer.text);
        std::fwrite(answer.text.data(), 1, answer.text.size(), stdout);
    }
}

} // namespace

bool is_save_command(const std::string &command)
{
    return command == "write" || command == "write file" || command == "write memory";
}

int save_configurations(const OltPaths &olt)
{
    const std::vector<std::string> sockets = vty_sockets(fs::path(olt.vty_socket).parent_path());
    int status = EX_UNAVAILABLE; // until somebody answers
    bool failed = false;
    for (const std::string &socket : sockets) {
        try {
            save_one(socket);
            if (!failed)
                status = EXIT_SUCCESS;
        } catch (const NoDaemon &) {
            continue;
        } catch (const Failure &failure) {
            std::fprintf(stderr, "diagsh: %s: %s\n", socket.c_str(), failure.what());
            status = failure.status();
            failed = true;
        }
    }
    if (status == EX_UNAVAILABLE && !failed)
        std::fprintf(stderr, "diagsh: no daemon answers beside %s\n", olt.vty_socket.c_str());
    return status;
}

} // namespace diagsh
