// SPDX-License-Identifier: GPL-2.0-or-later
// JSON text, written from front to back.  Keys and texts may hold any bytes: control characters, quotes and
// backslashes are escaped, what is no well-formed UTF-8 becomes U+FFFD.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdio>
#include <string>
#include <string_view>

#include "base/utf8.hpp"

namespace base {

class JsonWriter {
public:
    [[nodiscard]] const std::string &text() const { return out_; }

    // A member of an object is key() and what follows; an element of an array is what follows alone.
    JsonWriter &key(std::string_view name)
    {
        separate();
        quote(name);
        out_ += ':';
        after_key_ = true;
        return *this;
    }

    void begin_object() { begin('{'); }
    void end_object() { end('}'); }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }

    void null() { raw("null"); }
    void value(bool truth) { raw(truth ? "true" : "false"); }
    void value(std::string_view text)
    {
        separate();
        quote(text);
    }
    void value(const char *text) { value(std::string_view{text}); }
    void value(std::integral auto number) { raw(std::to_string(number)); }
    // Ten digits, which no measurement has; null when it is not finite, for which JSON has no number.
    void value(double number)
    {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.10g", number);
        raw(std::isfinite(number) ? digits : "null");
    }

private:
    void separate()
    {
        if (!first_ && !after_key_)
            out_ += ',';
        first_ = after_key_ = false;
    }
    void begin(char bracket)
    {
        separate();
        out_ += bracket;
        first_ = true;
    }
    void end(char bracket)
    {
        out_ += bracket;
        first_ = false;
    }
    void raw(std::string_view text)
    {
        separate();
        out_ += text;
    }
    void quote(std::string_view text)
    {
        out_ += '"';
        while (!text.empty()) {
            const char c = text[0];
            std::size_t length = 1;
            if (c == '"' || c == '\\') {
                out_ += '\\';
                out_ += c;
            } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
                out_ += escape;
            } else if ((length = utf8_length(text)) != 0) {
                out_ += text.substr(0, length);
            } else {
                length = 1;
                out_ += "\\ufffd";
            }
            text.remove_prefix(length);
        }
        out_ += '"';
    }

    std::string out_;
    bool first_ = true;
    bool after_key_ = false;
};

} // namespace base
