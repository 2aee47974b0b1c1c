// SPDX-License-Identifier: GPL-2.0-or-later
// Replacing the CPLD's logic, with a verdict.  The daemon's commands end with success whatever came of them:
// that an image was fetched stands in the alarm log, and which logic runs in its version.  What the
// programmer itself ended with is told to nobody; when neither speaks, this says that it does not know.
#include "shell/verbs.hpp"

#include "shell/failure.hpp"
#include "shell/modes.hpp"
#include "shell/nodes.hpp"
#include "shell/text_lines.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace diagsh {

namespace {

constexpr const char *show_version = "show logic version";

std::string told(VtySession &session, const std::string &command)
{
    const VtyAnswer answer = session.run(command);
    if (answer.status != 0)
        throw Failure(EX_UNAVAILABLE, "the daemon refuses: " + command);
    return std::string(trimmed(answer.text));
}

std::string version_in(const std::string &text)
{
    const std::size_t number = text.find("0x");
    return number == std::string::npos ? "" : text.substr(number);
}

// Records of images that were fetched, the newest last.
std::vector<std::string> fetches(const OltPaths &olt)
{
    VtySession session(olt.vty_socket); // of its own: records are shown in configuration
    if (const auto failed = enter_node(session, "config"))
        throw Failure(EX_UNAVAILABLE, "the daemon refuses: " + failed->command);
    std::vector<std::string> records = split_lines(told(session, "show alarm-log tail 1000"));
    std::erase_if(records, [](const std::string &record) {
        return record.find("File download succeeded") == std::string::npos;
    });
    return records;
}

// Other records may have pushed old ones out of what is shown.
bool has_more(const std::vector<std::string> &after, const std::vector<std::string> &before)
{
    return after.size() > before.size() || (!after.empty() && after.back() != before.back());
}

std::string joined(const Words &words)
{
    std::string text;
    for (const std::string &word : words)
        text.append(text.empty() ? "" : " ").append(word);
    return text;
}

} // namespace

int replace_logic(const OltPaths &olt, const Words &words)
{
    const std::string command = joined(words);
    if (!command.starts_with("cpld upgrade ") && command != "cpld restore")
        throw Failure(EX_USAGE, "logic takes \"cpld upgrade ...\" or \"cpld restore\"");
    VtySession session(olt.vty_socket);
    if (const auto failed = enter_node(session, "diagnose"))
        return report_failed(failed->command, failed->answer);
    const std::string before = version_in(told(session, show_version));
    if (before.empty() || before == "0x0") {
        std::puts("not begun: the CPLD does not answer, so there is nothing to replace");
        return EXIT_FAILURE;
    }
    const std::vector<std::string> fetched_before = fetches(olt);
    const VtyAnswer answer = session.run(command);
    write_out(answer.text);
    if (answer.status != 0) {
        std::puts("failed: the logic is as it was");
        return EXIT_FAILURE;
    }
    // An image that lies in /tmp already is taken as it is, without a record.
    if (command != "cpld restore" && answer.text.find("is already exist") == std::string::npos &&
        !has_more(fetches(olt), fetched_before)) {
        std::puts("failed: no image was fetched, the logic is as it was");
        return EXIT_FAILURE;
    }
    const std::string after = version_in(told(session, show_version));
    if (after == before) {
        std::printf(
            "not known: the version is %s as before; the image may be of the same version, the new logic "
            "may wait\nfor the next power-on, or the programmer has failed\n",
            after.c_str());
        return EXIT_FAILURE;
    }
    std::printf("worked: logic %s runs, before it was %s\n", after.c_str(), before.c_str());
    return EXIT_SUCCESS;
}

} // namespace diagsh
