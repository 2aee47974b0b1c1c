// SPDX-License-Identifier: GPL-2.0-or-later
// Texts from outside on their way to a terminal, a JSON document and a shell line.
#include "base/json.hpp"
#include "base/json_writer.hpp"
#include "base/shell_word.hpp"
#include "diagd/alarm_log/records/debug_message.hpp"
#include "optics/escape.hpp"
#include "tests/fuzz/fuzz.hpp"

namespace {

// The argument that a POSIX shell makes of the word; nothing when it would make anything else.
std::string unquoted(std::string_view word)
{
    std::string argument;
    bool in_quotes = false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] == '\'') {
            in_quotes = !in_quotes;
        } else if (!in_quotes && word[i] == '\\') {
            fuzz::expect(++i < word.size(), "something is escaped");
            argument += word[i];
        } else {
            fuzz::expect(in_quotes || base::is_plain_to_the_shell(word[i]), "nothing is left to the shell");
            argument += word[i];
        }
    }
    fuzz::expect(!in_quotes && !word.empty(), "it is one whole word");
    return argument;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::as_text(data, size);
    fuzz::expect(unquoted(base::shell_word(text)) == text, "the shell reads exactly the text");

    const std::string shown = base::printable(text);
    fuzz::expect_harmless(shown);
    fuzz::expect(shown.find_first_of("\r\n") == shown.npos, "a text does not end its line");
    fuzz::expect(base::printable(shown) == shown, "what is printable stays as it is");
    fuzz::expect_harmless(optics::escaped(text));
    fuzz::expect(diagd::decode_debug_message(text).size() <= 319, "a message has its width");

    base::JsonWriter json;
    json.begin_object();
    json.key(text).value(text);
    json.end_object();
    const base::Json parsed(json_tokener_parse(json.text().c_str()));
    fuzz::expect(static_cast<bool>(parsed), "a document with the text is JSON");
    // json-c keeps control characters of C1 as they are; what is printed holds none.
    const std::string document =
        base::printable_json(json_object_to_json_string_ext(parsed.get(), JSON_C_TO_STRING_PLAIN));
    fuzz::expect_harmless(document);
    fuzz::expect(static_cast<bool>(base::Json(json_tokener_parse(document.c_str()))), "it is still JSON");
    return 0;
}
