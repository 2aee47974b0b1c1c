// SPDX-License-Identifier: GPL-2.0-or-later
// Reading our JSON files strictly: every complaint names the file and the field, and a field that nobody
// asked for is an error too, so that a misspelt name is not silently ignored.
#pragma once

#include "base/json.hpp"

#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace json {

// One line, ready to be shown: "FILE: FIELD: what is wrong".
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Owner = base::Json;

// Parses a whole text; syntax errors name `file` and the line.
Owner parse(std::string_view text, const std::string &file);
// Reads and parses a file of at most 1 MiB.
Owner parse_file(const std::string &file);

// The members of one JSON object.  Numbers may be JSON integers or texts such as "0x48".
class Fields {
public:
    // `file` and `path` are only used in messages; `object` must outlive this.
    Fields(json_object *object, std::string file, std::string path = "");

    [[nodiscard]] bool has(const char *name) const;
    long number(const char *name, long min, long max);
    long number_or(const char *name, long min, long max, long fallback);
    double real(const char *name, double min, double max);
    double real_or(const char *name, double min, double max, double fallback);
    bool flag_or(const char *name, bool fallback);
    std::string text(const char *name, std::size_t max_length);
    std::string text_or(const char *name, std::size_t max_length, std::string fallback);
    Fields object(const char *name);
    std::vector<Fields> objects(const char *name);
    std::vector<long> numbers(const char *name, std::size_t count, long min, long max);
    std::vector<double> reals(const char *name, std::size_t count, double min, double max);
    // Call when everything known has been asked for: complains about the first field left over.
    void done() const;

    [[noreturn]] void fail(const char *name, const std::string &what) const;

private:
    json_object *require(const char *name);
    json_object *array(const char *name, std::size_t count);
    long to_number(const char *name, json_object *value, long min, long max) const;
    double to_real(const char *name, json_object *value, double min, double max) const;

    json_object *object_;
    std::string file_;
    std::string path_;
    std::set<std::string> known_;
};

} // namespace json
