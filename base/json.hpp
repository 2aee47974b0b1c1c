// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a json-c object.
#pragma once

#include "base/owner.hpp"

#include <json-c/json.h>

namespace base {

using Json = Owner<json_object, json_object_put>;

} // namespace base
