// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a json-c object, and the one way a command prints it.
#pragma once

#include "base/printable.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/text.hpp"

#include <memory>

namespace diagd {

struct JsonFree {
    void operator()(struct json_object *object) const noexcept { json_object_free(object); }
};
using Json = std::unique_ptr<struct json_object, JsonFree>;

[[nodiscard]] inline Json json_new_object() noexcept
{
    return Json{json_object_new_object()};
}
[[nodiscard]] inline Json json_new_array() noexcept
{
    return Json{json_object_new_array()};
}

// One document in json-c's pretty layout, then the line end.  Texts from outside may be in it.
inline void json_print(struct vty *vty, const Json &json) noexcept
{
    const char *const document = json_object_to_json_string_ext(json.get(), JSON_C_TO_STRING_PRETTY);
    vty_out(vty, "%s%s", base::printable_json(document).c_str(), line_end);
}

} // namespace diagd
