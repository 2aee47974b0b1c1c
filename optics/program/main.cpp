// SPDX-License-Identifier: GPL-2.0-or-later
// optics: what a module's memory says, by the standards, from any dump of it.
//
// Failure policy: a dump is decoded as far as it goes, and what is doubtful is said; only what is no dump at
// all, or of a module whose memory has another layout, is refused, with one line on standard error.
#include <cstdio>
#include <exception>
#include <string_view>

#include "base/json_writer.hpp"
#include "module_files/dump_file.hpp"
#include "optics/decode.hpp"
#include "optics/escape.hpp"
#include "optics/program/dump_memory.hpp"
#include "optics/render.hpp"
#include "optics/words.hpp"

namespace {

constexpr int exit_good = 0;
constexpr int exit_doubtful = 1;
constexpr int exit_unreadable = 2;
constexpr int exit_usage = 64; // as sysexits.h has it

constexpr char usage[] = R"(usage: optics decode [--json] FILE...
       optics decode [--json] -
       optics --help | --version

What a pluggable optical module says of itself by SFF-8472, SFF-8636 or CMIS.  FILE is a dump of its memory:
raw bytes, `ethtool -m DEV hex on`, or `i2cdump -y BUS ADDR`; "-" is standard input.  Several FILEs are parts of
one module: A0h and A2h, or lower memory and pages, in that order unless their names say .a0, .a2, .lower or
.pageNN.

  --json      one JSON object

Exit status: 0 the memory is good, 1 it is doubtful (a check code is wrong, data are not ready, ...), 2 it
cannot be read, 64 the command line is wrong.
)";

struct Request {
    bool json = false;
    std::vector<std::string> files;
};

// Decodes all paths of the module and prints them; the second path of a combo module counts as well.
int decode(const Request &request)
{
    const optics::ModuleDump dump(request.files);
    const optics::Module first = optics::decode(dump.first_path());
    optics::Verdict verdict = optics::verdict_of(first);
    base::JsonWriter json;
    std::string text = optics::render_text(first);
    json.begin_object();
    optics::render_json_members(first, json);
    if (dump.has_second_path()) {
        const optics::Module second = optics::decode(dump.second_path());
        verdict = std::max(verdict, optics::verdict_of(second));
        text += "second path: " + optics::render_text(second);
        json.key("second_path");
        optics::render_json(second, json);
    }
    json.end_object();
    const std::string &out = request.json ? json.text() + "\n" : text;
    if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size() || std::fflush(stdout) != 0)
        throw std::runtime_error("cannot write the output");
    switch (verdict) {
    case optics::Verdict::good:
        return exit_good;
    case optics::Verdict::doubtful:
        return exit_doubtful;
    case optics::Verdict::not_decoded:
        break;
    }
    return exit_unreadable;
}

int complain(const std::string &what)
{
    std::fprintf(stderr, "optics: %s\n%s", optics::escaped(what).c_str(), usage);
    return exit_usage;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 1 && (words[0] == "--help" || words[0] == "-h" || words[0] == "help")) {
        std::fputs(usage, stdout);
        return exit_good;
    }
    if (words.size() == 1 && (words[0] == "--version" || words[0] == "-V")) {
        std::puts("optics " DIAGD_VERSION);
        return exit_good;
    }
    if (words.empty() || words[0] != "decode")
        return complain(words.empty() ? "no verb" : "no verb " + words[0]);
    Request request;
    bool options = true;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (options && *word == "--")
            options = false;
        else if (options && *word == "--json")
            request.json = true;
        else if (options && (*word == "--help" || *word == "-h"))
            return std::fputs(usage, stdout) < 0 ? exit_unreadable : exit_good;
        else if (options && word->size() > 1 && word->starts_with("-"))
            return complain("no option " + *word);
        else
            request.files.push_back(*word);
    }
    if (request.files.empty())
        return complain("no file");
    try {
        return decode(request);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "optics: %s\n", optics::escaped(error.what()).c_str());
        return exit_unreadable;
    }
}
