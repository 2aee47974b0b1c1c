// SPDX-License-Identifier: GPL-2.0-or-later
// Fault table of the platform libraries.  The file is small and only tests have one, so it is read at every
// call: a change counts from the next call on, however fast it follows the last.
#include "platform/trace/tq_trace.hpp"

#include "base/fd.hpp"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <string_view>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace tq {

namespace {

struct Entry {
    std::string line; // as written: an unchanged line keeps its count when the file changes
    std::string op;
    std::string thread; // empty: any
    long long nth = 1;
    long long count = 0; // 0: for ever
    long long ret = 0;
    long long error = 0;
    long long delay_ms = 0;
    bool fails = false;
    long long calls = 0;
};

struct Table {
    std::mutex mutex;
    std::string content;
    std::vector<Entry> entries;
};

Table &table()
{
    static auto *the_table = new Table; // threads may still call while the process exits
    return *the_table;
}

std::string read_file(const char *path)
{
    std::string content;
    const base::Fd fd(open(path, O_RDONLY | O_CLOEXEC));
    if (!fd)
        return content;
    char buffer[1024];
    ssize_t size;
    while ((size = read(fd.get(), buffer, sizeof buffer)) > 0)
        content.append(buffer, static_cast<std::size_t>(size));
    return content;
}

// Cuts the next piece, up to `separator`, off `rest`.
std::string_view cut(std::string_view &rest, char separator)
{
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return piece;
}

bool parse_number(std::string_view text, long long &value)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc{} && result.ptr == text.data() + text.size();
}

// False for a line that is empty or cannot be read.
bool parse_line(std::string_view line, Entry &entry)
{
    entry.line = line;
    std::string_view rest = line.substr(0, line.find('#'));
    bool has_count = false;
    bool has_nth = false;
    while (!rest.empty()) {
        const std::string_view word = cut(rest, ' ');
        if (word.empty())
            continue;
        if (entry.op.empty()) {
            entry.op = word;
            continue;
        }
        std::string_view value = word;
        const std::string_view key = cut(value, '=');
        bool good = true;
        if (key == "thread")
            entry.thread = value;
        else if (key == "nth")
            good = has_nth = parse_number(value, entry.nth);
        else if (key == "count")
            good = has_count = parse_number(value, entry.count);
        else if (key == "ret")
            good = entry.fails = parse_number(value, entry.ret);
        else if (key == "errno")
            good = parse_number(value, entry.error);
        else if (key == "delay_ms")
            good = parse_number(value, entry.delay_ms);
        else
            good = false;
        if (!good)
            return false;
    }
    if (has_nth && !has_count)
        entry.count = 1;
    return !entry.op.empty();
}

void reload(Table &faults, std::string content)
{
    std::vector<Entry> entries;
    std::string_view rest = content;
    while (!rest.empty()) {
        Entry entry;
        if (!parse_line(cut(rest, '\n'), entry))
            continue;
        const auto old = std::find_if(faults.entries.begin(), faults.entries.end(),
                                      [&](const Entry &other) { return other.line == entry.line; });
        if (old != faults.entries.end()) {
            entry.calls = old->calls;
            old->line.clear(); // a line that stands twice counts twice
        }
        entries.push_back(std::move(entry));
    }
    faults.entries = std::move(entries);
    faults.content = std::move(content);
}

void sleep_ms(long long ms) noexcept
{
    timespec left{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1'000'000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

const std::string &fault_path()
{
    static const auto *path = [] {
        const char *value = std::getenv("TQ_FAULTS");
        return new std::string(value ? value : "");
    }();
    return *path;
}

} // namespace

Fault next_fault(const char *op) noexcept
{
    Fault fault;
    long long delay_ms = 0;
    if (fault_path().empty())
        return fault;
    const int saved = errno;
    const ThreadName name = current_thread_name();
    try {
        Table &faults = table();
        const std::string_view thread = name.text;
        const std::lock_guard lock(faults.mutex);
        if (std::string content = read_file(fault_path().c_str()); content != faults.content)
            reload(faults, std::move(content));
        for (Entry &entry : faults.entries) {
            if (entry.op != op || (!entry.thread.empty() && entry.thread != thread))
                continue;
            ++entry.calls;
            if (entry.calls < entry.nth || (entry.count != 0 && entry.calls >= entry.nth + entry.count))
                continue;
            delay_ms = std::max(delay_ms, entry.delay_ms);
            if (entry.fails && !fault.fails)
                fault = {true, entry.ret, static_cast<int>(entry.error)};
        }
    } catch (...) { // out of memory: no fault is the safe answer
    }
    if (delay_ms > 0)
        sleep_ms(delay_ms);
    errno = saved;
    return fault;
}

} // namespace tq
