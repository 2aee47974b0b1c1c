// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/population.hpp"

#include <filesystem>

#include "platform/description/json_fields.hpp"
#include "sim/modules/module_file.hpp"

namespace sim {

void populate(SimulatedBoard &board, const std::string &file)
{
    const json::Owner root = json::parse_file(file);
    json::Fields fields(root.get(), file);
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    for (json::Fields &entry : fields.objects("modules")) {
        const std::string kind = entry.text("kind", 8);
        if (kind != "gpon" && kind != "xgpon" && kind != "ge")
            entry.fail("kind", "none of gpon, xgpon, ge");
        Cage *cage = board.cages.find(kind == "ge" ? CageKind::ge : CageKind::pon,
                                      static_cast<int>(entry.number("port", 1, 8)));
        if (cage == nullptr)
            entry.fail("port", "the board has no such cage");
        cage->plug(read_module({folder / entry.text("file", 255)}, false).image);
        entry.done();
    }
    fields.done();
}

} // namespace sim
