// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardctl/module_make.hpp"

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "base/whole_file.hpp"
#include "platform/description/json_fields.hpp"
#include "sim/modules/generator.hpp"
#include "sim/modules/text.hpp"

namespace sim {

const char module_make_usage[] =
    "usage: boardctl module make FILE.json [--class sfp|qsfp] [--id N] [--connector N] [--wavelength NM]\n"
    "       [--cal int|ext|none] [--units standard|double] [--temp C] [--vcc V] [--bias MA] [--tx DBM] [--rx "
    "DBM]\n"
    "       [--vendor T] [--oui N] [--pn T] [--rev T] [--sn T] [--date YYMMDD] [--second NM [the same...]]";

namespace {

enum class Kind { text, number, real };

struct Option {
    const char *name;
    const char *field;
    Kind kind;
    bool diagnostic; // belongs to the readings
    double fallback; // of a reading that is not given
};

constexpr Option known[] = {{"--id", "identifier", Kind::number, false, 0},
                            {"--connector", "connector", Kind::number, false, 0},
                            {"--wavelength", "wavelength_nm", Kind::real, false, 0},
                            {"--vendor", "vendor", Kind::text, false, 0},
                            {"--oui", "oui", Kind::number, false, 0},
                            {"--pn", "part_number", Kind::text, false, 0},
                            {"--rev", "revision", Kind::text, false, 0},
                            {"--sn", "serial_number", Kind::text, false, 0},
                            {"--date", "date_code", Kind::text, false, 0},
                            {"--units", "units", Kind::text, true, 0},
                            {"--temp", "temperature_c", Kind::real, true, 35},
                            {"--vcc", "vcc_v", Kind::real, true, 3.3},
                            {"--bias", "bias_ma", Kind::real, true, 20},
                            {"--tx", "tx_dbm", Kind::real, true, 3},
                            {"--rx", "rx_dbm", Kind::real, true, -20}};

json_object *value_of(const Option &option, const std::string &word)
{
    switch (option.kind) {
    case Kind::number:
        return json_object_new_int64(parse_number(word, 0, 0xffffff));
    case Kind::real:
        return json_object_new_double_s(parse_real(word, -1e6, 1e6), word.c_str());
    case Kind::text:
        break;
    }
    return json_object_new_string(word.c_str());
}

// One optical path under construction.
class Path {
public:
    void set(const Option &option, const std::string &word)
    {
        json_object_object_add(option.diagnostic ? readings_.get() : fields_.get(), option.field,
                               value_of(option, word));
    }
    void set_calibration(const std::string &word)
    {
        if (word != "int" && word != "ext" && word != "none")
            throw std::invalid_argument("\"" + word + "\" is none of int, ext, none");
        calibration_ = word;
    }
    // Hands the finished object over.
    json::Owner finish(bool qsfp)
    {
        if (calibration_ != "none")
            json_object_object_add(fields_.get(), "diagnostics", diagnostics(qsfp));
        return std::move(fields_);
    }
    [[nodiscard]] json_object *fields() const { return fields_.get(); }

private:
    json_object *diagnostics(bool qsfp)
    {
        for (const Option &option : known)
            if (option.diagnostic && option.kind == Kind::real &&
                json_object_object_get_ex(readings_.get(), option.field, nullptr) == 0)
                json_object_object_add(
                    readings_.get(), option.field,
                    json_object_new_double_s(option.fallback, format("%g", option.fallback).c_str()));
        if (!qsfp) {
            json_object_object_add(readings_.get(), "calibration",
                                   json_object_new_string(calibration_ == "ext" ? "external" : "internal"));
            return readings_.release();
        }
        // All four lanes alike.
        json_object *lanes = json_object_new_array();
        for (int lane = 0; lane < 4; ++lane) {
            json_object *values = json_object_new_object();
            for (const char *field : {"bias_ma", "tx_dbm", "rx_dbm"})
                json_object_object_add(values, field,
                                       json_object_get(json_object_object_get(readings_.get(), field)));
            json_object_array_add(lanes, values);
        }
        for (const char *field : {"bias_ma", "tx_dbm", "rx_dbm"})
            json_object_object_del(readings_.get(), field);
        json_object_object_add(readings_.get(), "lanes", lanes);
        return readings_.release();
    }

    json::Owner fields_{json_object_new_object()};
    json::Owner readings_{json_object_new_object()};
    std::string calibration_ = "int";
};

} // namespace

void make_module(const std::vector<std::string> &words)
{
    if (words.empty() || words[0].starts_with("--") || words.size() % 2 == 0)
        throw std::invalid_argument(module_make_usage);
    const std::string &file = words[0];
    std::string kind = "sfp";
    Path first, second;
    Path *path = &first;
    for (std::size_t i = 1; i < words.size(); i += 2) {
        const std::string &name = words[i];
        const std::string &word = words[i + 1];
        const Option *option = nullptr;
        for (const Option &candidate : known)
            if (name == candidate.name)
                option = &candidate;
        if (option != nullptr) {
            path->set(*option, word);
        } else if (name == "--class") {
            kind = word;
        } else if (name == "--cal") {
            path->set_calibration(word);
        } else if (name == "--second") {
            path = &second;
            path->set(known[2], word);
        } else {
            throw std::invalid_argument("no option " + name + "\n" + module_make_usage);
        }
    }
    const bool qsfp = kind == "qsfp";
    json_object_object_add(first.fields(), "name",
                           json_object_new_string(std::filesystem::path(file).stem().c_str()));
    json_object_object_add(first.fields(), "class", json_object_new_string(kind.c_str()));
    const json::Owner root = first.finish(qsfp);
    if (path == &second)
        json_object_object_add(root.get(), "second_path", second.finish(false).release());
    const std::string text =
        json_object_to_json_string_ext(root.get(), JSON_C_TO_STRING_PRETTY | JSON_C_TO_STRING_SPACED |
                                                       JSON_C_TO_STRING_NOSLASHESCAPE) +
        std::string("\n");
    generate_module(text, file);
    if (const int error = base::write_whole_file(file, text, base::Sync::yes); error != 0)
        throw std::runtime_error(file + ": " + std::strerror(error));
}

} // namespace sim
