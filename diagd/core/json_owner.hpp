// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a json-c object, and the one way a command prints it.
#pragma once

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

// One document in json-c's pretty layout, then the line end.
inline void json_print(struct vty *vty, const Json &json) noexcept
{
    vty_out(vty, "%s%s", json_object_to_json_string_ext(json.get(), JSON_C_TO_STRING_PRETTY), line_end);
}

} // namespace diagd
