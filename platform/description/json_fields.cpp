// SPDX-License-Identifier: GPL-2.0-or-later
// Strict access to JSON members.  Failure policy: every complaint is a json::Error with file and field.
#include "platform/description/json_fields.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace json {

namespace {

constexpr std::size_t max_file_size = 1U << 20;

std::string bounds(auto min, auto max)
{
    char text[96];
    if constexpr (std::is_same_v<decltype(min), double>)
        std::snprintf(text, sizeof text, "not in %g..%g", min, max);
    else
        std::snprintf(text, sizeof text, "not in %ld..%ld", min, max);
    return text;
}

} // namespace

Owner parse(std::string_view text, const std::string &file)
{
    const base::Owner<json_tokener, json_tokener_free> tokener(json_tokener_new());
    if (!tokener)
        throw Error(file + ": out of memory");
    Owner root(json_tokener_parse_ex(tokener.get(), text.data(), static_cast<int>(text.size())));
    const auto end = std::min(json_tokener_get_parse_end(tokener.get()), text.size());
    const auto line =
        std::to_string(1 + std::count(text.begin(), text.begin() + static_cast<long>(end), '\n'));
    const auto code = json_tokener_get_error(tokener.get());
    if (code == json_tokener_continue)
        throw Error(file + ": line " + line + ": the file ends too early");
    if (code != json_tokener_success)
        throw Error(file + ": line " + line + ": " + json_tokener_error_desc(code));
    if (text.find_first_not_of(" \t\r\n", end) != std::string_view::npos)
        throw Error(file + ": line " + line + ": text after the end of the object");
    if (!json_object_is_type(root.get(), json_type_object))
        throw Error(file + ": not a JSON object");
    return root;
}

Owner parse_file(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw Error(file + ": " + std::strerror(errno));
    std::string text;
    text.resize(max_file_size + 1);
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (in.bad())
        throw Error(file + ": cannot be read");
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (text.size() > max_file_size)
        throw Error(file + ": larger than 1 MiB");
    return parse(text, file);
}

Fields::Fields(json_object *object, std::string file, std::string path)
    : object_(object), file_(std::move(file)), path_(std::move(path))
{
}

void Fields::fail(const char *name, const std::string &what) const
{
    std::string where = path_;
    if (*name != '\0')
        where += (where.empty() ? "" : ".") + std::string(name);
    throw Error(file_ + ": " + where + ": " + what);
}

bool Fields::has(const char *name) const
{
    return json_object_object_get_ex(object_, name, nullptr) != 0;
}

json_object *Fields::require(const char *name)
{
    json_object *value = nullptr;
    if (json_object_object_get_ex(object_, name, &value) == 0)
        fail(name, "missing");
    known_.insert(name);
    return value;
}

long Fields::to_number(const char *name, json_object *value, long min, long max) const
{
    long number = 0;
    if (json_object_is_type(value, json_type_int)) {
        number = json_object_get_int64(value);
    } else if (json_object_is_type(value, json_type_string)) {
        const char *text = json_object_get_string(value);
        char *end = nullptr;
        errno = 0;
        number = std::strtol(text, &end, 0);
        if (end == text || end != text + json_object_get_string_len(value) || errno != 0)
            fail(name, "\"" + std::string(text) + "\" is not a whole number");
    } else {
        fail(name, "not a whole number");
    }
    if (number < min || number > max)
        fail(name, std::to_string(number) + " is " + bounds(min, max));
    return number;
}

double Fields::to_real(const char *name, json_object *value, double min, double max) const
{
    if (!json_object_is_type(value, json_type_int) && !json_object_is_type(value, json_type_double))
        fail(name, "not a number");
    const double number = json_object_get_double(value);
    if (!std::isfinite(number) || number < min || number > max)
        fail(name, bounds(min, max));
    return number;
}

long Fields::number(const char *name, long min, long max)
{
    return to_number(name, require(name), min, max);
}

long Fields::number_or(const char *name, long min, long max, long fallback)
{
    return has(name) ? number(name, min, max) : fallback;
}

double Fields::real(const char *name, double min, double max)
{
    return to_real(name, require(name), min, max);
}

double Fields::real_or(const char *name, double min, double max, double fallback)
{
    return has(name) ? real(name, min, max) : fallback;
}

bool Fields::flag_or(const char *name, bool fallback)
{
    if (!has(name))
        return fallback;
    json_object *value = require(name);
    if (!json_object_is_type(value, json_type_boolean))
        fail(name, "not true or false");
    return json_object_get_boolean(value) != 0;
}

std::string Fields::text(const char *name, std::size_t max_length)
{
    json_object *value = require(name);
    if (!json_object_is_type(value, json_type_string))
        fail(name, "not a text");
    std::string text(json_object_get_string(value),
                     static_cast<std::size_t>(json_object_get_string_len(value)));
    if (text.size() > max_length)
        fail(name, "longer than " + std::to_string(max_length) + " characters");
    if (text.find('\0') != std::string::npos)
        fail(name, "contains a NUL character");
    return text;
}

std::string Fields::text_or(const char *name, std::size_t max_length, std::string fallback)
{
    return has(name) ? text(name, max_length) : std::move(fallback);
}

Fields Fields::object(const char *name)
{
    json_object *value = require(name);
    if (!json_object_is_type(value, json_type_object))
        fail(name, "not an object");
    return {value, file_, (path_.empty() ? "" : path_ + ".") + name};
}

json_object *Fields::array(const char *name, std::size_t count)
{
    json_object *value = require(name);
    if (!json_object_is_type(value, json_type_array))
        fail(name, "not a list");
    if (count != 0 && json_object_array_length(value) != count)
        fail(name, "has " + std::to_string(json_object_array_length(value)) + " entries, " +
                       std::to_string(count) + " expected");
    return value;
}

std::vector<Fields> Fields::objects(const char *name)
{
    json_object *list = array(name, 0);
    std::vector<Fields> result;
    for (std::size_t i = 0; i < json_object_array_length(list); ++i) {
        const std::string entry = std::string(name) + "[" + std::to_string(i) + "]";
        json_object *value = json_object_array_get_idx(list, i);
        if (!json_object_is_type(value, json_type_object))
            fail(entry.c_str(), "not an object");
        result.emplace_back(value, file_, (path_.empty() ? "" : path_ + ".") + entry);
    }
    return result;
}

std::vector<long> Fields::numbers(const char *name, std::size_t count, long min, long max)
{
    json_object *list = array(name, count);
    std::vector<long> result;
    for (std::size_t i = 0; i < json_object_array_length(list); ++i) {
        const std::string entry = std::string(name) + "[" + std::to_string(i) + "]";
        result.push_back(to_number(entry.c_str(), json_object_array_get_idx(list, i), min, max));
    }
    return result;
}

std::vector<double> Fields::reals(const char *name, std::size_t count, double min, double max)
{
    json_object *list = array(name, count);
    std::vector<double> result;
    for (std::size_t i = 0; i < json_object_array_length(list); ++i) {
        const std::string entry = std::string(name) + "[" + std::to_string(i) + "]";
        result.push_back(to_real(entry.c_str(), json_object_array_get_idx(list, i), min, max));
    }
    return result;
}

void Fields::done() const
{
    json_object_object_foreach(object_, name, value)
    {
        static_cast<void>(value);
        if (!known_.contains(name))
            fail(name, "unknown field");
    }
}

} // namespace json
