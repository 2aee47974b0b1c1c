// SPDX-License-Identifier: GPL-2.0-or-later
// Where an OLT's daemon can be reached.
#include "shell/paths.hpp"

#include <filesystem>
#include <system_error>

namespace diagsh {

namespace fs = std::filesystem;

OltPaths find_olt(const std::string &state)
{
    constexpr const char *socket_name = "diagd.vty";
    if (!state.empty())
        return {fs::path(state) / "run" / socket_name, state};

    const fs::path machine = fs::path("/run/frr") / socket_name;
    std::error_code error;
    if (fs::exists(fs::symlink_status(machine, error)))
        return {machine, {}};

    // build/<preset>/bin/diagsh beside build/olt
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    const fs::path built = self.parent_path().parent_path().parent_path() / "olt";
    return {(!error && fs::is_directory(built, error) ? built / "run" / socket_name : machine), {}};
}

} // namespace diagsh
