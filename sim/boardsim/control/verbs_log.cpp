// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the transaction log.
#include <regex.h>

#include <algorithm>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

class Regex {
public:
    explicit Regex(const std::string &pattern)
    {
        if (const int error = ::regcomp(&regex_, pattern.c_str(), REG_EXTENDED | REG_NOSUB); error != 0) {
            char text[128];
            ::regerror(error, &regex_, text, sizeof text);
            throw std::invalid_argument("\"" + pattern + "\": " + text);
        }
    }
    Regex(const Regex &) = delete;
    Regex &operator=(const Regex &) = delete;
    ~Regex() { ::regfree(&regex_); }
    [[nodiscard]] bool matches(const std::string &text) const
    {
        return ::regexec(&regex_, text.c_str(), 0, nullptr, 0) == 0;
    }

private:
    regex_t regex_{};
};

} // namespace

// Somebody waiting for a line.
struct Verbs::Waiter {
    Waiter(const std::string &pattern, ControlClient &client_, std::uint64_t next_)
        : regex(pattern), client(client_), next(next_)
    {
    }
    Regex regex;
    ControlClient &client;
    std::uint64_t next; // first entry not looked at
    EventLoop::TimerId timer;

    bool look(const TransactionLog &log)
    {
        std::string found;
        log.each(next, [&](const std::string &line) {
            if (found.empty() && regex.matches(line))
                found = line;
        });
        next = log.next();
        if (found.empty())
            return false;
        client.send("0\n" + found + "\n");
        client.finish();
        return true;
    }
};

void Verbs::log_dump(const Words &words, ControlClient &client)
{
    const auto since = words.empty() ? 0 : parse_number(words[0], 0, 0x7fffffffffffffff);
    std::string text = "0\n";
    board_.log.each(static_cast<std::uint64_t>(since), [&](const std::string &line) { text += line + "\n"; });
    client.send(text);
    client.finish();
}

std::string Verbs::log_next(const Words &)
{
    return format("%lu\n", board_.log.next());
}

std::string Verbs::log_clear(const Words &)
{
    board_.log.clear();
    return {};
}

std::string Verbs::log_mark(const Words &words)
{
    std::string text = "- mark";
    for (const std::string &word : words)
        text += " " + word;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    const auto number = board_.log.next();
    board_.log.add_text(text);
    return format("%lu\n", number);
}

// Looks at the entries from SINCE on (from now on without it) until one matches or the time is over.
void Verbs::log_wait(const Words &words, ControlClient &client)
{
    const double seconds = parse_real(words[1], 0, 3600);
    const auto since = words.size() > 2
                           ? static_cast<std::uint64_t>(parse_number(words[2], 0, 0x7fffffffffffffff))
                           : board_.log.next();
    auto waiter = std::make_shared<Waiter>(words[0], client, since);
    if (waiter->look(board_.log))
        return;
    const auto forget = [this, raw = waiter.get()] {
        loop_.cancel(raw->timer);
        std::erase_if(waiters_, [raw](const auto &other) { return other.get() == raw; });
        if (waiters_.empty())
            board_.log.on_add({});
    };
    waiter->timer = loop_.after(std::chrono::microseconds(static_cast<long>(seconds * 1e6)),
                                [forget, raw = waiter.get()] {
                                    ControlClient &late = raw->client;
                                    forget();
                                    late.send("1\nerror: no such line in time\n");
                                    late.finish();
                                });
    client.on_gone(forget);
    waiters_.push_back(std::move(waiter));
    board_.log.on_add([this] {
        // Answered at the next turn of the loop: an entry is added in the middle of a transaction.
        loop_.after(std::chrono::microseconds(0), [this] {
            std::vector<std::shared_ptr<Waiter>> found;
            for (const auto &candidate : waiters_)
                if (candidate->look(board_.log))
                    found.push_back(candidate);
            for (const auto &done : found) {
                loop_.cancel(done->timer);
                std::erase(waiters_, done);
            }
            if (waiters_.empty())
                board_.log.on_add({});
        });
    });
}

} // namespace sim
