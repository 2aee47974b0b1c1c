// SPDX-License-Identifier: GPL-2.0-or-later
// Where an OLT's daemon can be reached.
#include "shell/paths.hpp"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace diagsh {

namespace fs = std::filesystem;

namespace {

OltPaths paths_in(const fs::path &run, const fs::path &configuration)
{
    return {run / "diagd.vty", configuration / "vty-password"};
}

} // namespace

OltPaths find_olt(const std::string &state)
{
    if (!state.empty())
        return paths_in(fs::path(state) / "run", fs::path(state) / "conf");

    OltPaths machine = paths_in("/run/frr", "/etc/frr");
    std::error_code error;
    if (fs::exists(fs::symlink_status(machine.vty_socket, error)))
        return machine;

    // build/<preset>/bin/diagsh beside build/olt
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    const fs::path built = self.parent_path().parent_path().parent_path() / "olt";
    if (!error && fs::is_directory(built, error))
        return paths_in(built / "run", built / "conf");
    return machine;
}

std::string read_password(const OltPaths &olt)
{
    std::ifstream file(olt.password_file);
    std::string password;
    std::getline(file, password);
    return password;
}

} // namespace diagsh
