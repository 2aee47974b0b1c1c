// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the transaction log.
#include <regex.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

constexpr long last_entry = 0x7fffffffffffffff;

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

// Those who wait for a line that matches.
class LogWaiters {
public:
    LogWaiters(EventLoop &loop, TransactionLog &log) : loop_(loop), log_(log) {}

    // Looks at the entries from SINCE on (from now on without it) until one matches or the time is over.
    // Words: REGEX SECONDS [SINCE]
    void wait(const Words &words, ControlClient &client);

private:
    struct Waiter {
        Waiter(const std::string &pattern, ControlClient &client_, std::uint64_t next_)
            : regex(pattern), client(client_), next(next_)
        {
        }
        // True when it has been answered.
        bool look(const TransactionLog &log);

        Regex regex;
        ControlClient &client;
        std::uint64_t next; // first entry not looked at
        EventLoop::TimerId timer;
    };

    void look_all();
    void forget(const Waiter *waiter);

    EventLoop &loop_;
    TransactionLog &log_;
    std::vector<std::shared_ptr<Waiter>> waiters_;
};

bool LogWaiters::Waiter::look(const TransactionLog &log)
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

void LogWaiters::forget(const Waiter *waiter)
{
    loop_.cancel(waiter->timer);
    std::erase_if(waiters_, [waiter](const auto &other) { return other.get() == waiter; });
    if (waiters_.empty())
        log_.on_add({});
}

void LogWaiters::look_all()
{
    std::vector<std::shared_ptr<Waiter>> found;
    for (const auto &candidate : waiters_)
        if (candidate->look(log_))
            found.push_back(candidate);
    for (const auto &done : found)
        forget(done.get());
}

void LogWaiters::wait(const Words &words, ControlClient &client)
{
    const double seconds = parse_real(words[1], 0, 3600);
    const auto since =
        words.size() > 2 ? static_cast<std::uint64_t>(parse_number(words[2], 0, last_entry)) : log_.next();
    auto waiter = std::make_shared<Waiter>(words[0], client, since);
    if (waiter->look(log_))
        return;
    waiter->timer =
        loop_.after(std::chrono::microseconds(static_cast<long>(seconds * 1e6)), [this, raw = waiter.get()] {
            ControlClient &late = raw->client;
            forget(raw);
            late.send("1\nerror: no such line in time\n");
            late.finish();
        });
    client.on_gone([this, raw = waiter.get()] { forget(raw); });
    waiters_.push_back(std::move(waiter));
    // Answered at the next turn of the loop: an entry is added in the middle of a transaction.
    log_.on_add([this] { loop_.after(std::chrono::microseconds(0), [this] { look_all(); }); });
}

void dump(const TransactionLog &log, const Words &words, ControlClient &client)
{
    const auto since = words.empty() ? 0 : parse_number(words[0], 0, last_entry);
    std::string text = "0\n";
    log.each(static_cast<std::uint64_t>(since), [&](const std::string &line) { text += line + "\n"; });
    client.send(text);
    client.finish();
}

std::string mark(TransactionLog &log, const Words &words)
{
    std::string text = "- mark";
    for (const std::string &word : words)
        text += " " + word;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    const auto number = log.next();
    log.add_text(text);
    return format("%lu\n", number);
}

} // namespace

std::vector<Verb> log_verbs(EventLoop &loop, TransactionLog &log)
{
    return {
        {"log dump", 0, 1, "[SINCE]",
         [&log](const Words &words, ControlClient &client) { dump(log, words, client); }},
        {"log next", 0, 0, "", [&log](const Words &) { return format("%lu\n", log.next()); }},
        {"log clear", 0, 0, "",
         [&log](const Words &) {
             log.clear();
             return std::string();
         }},
        {"log mark", 1, any_number, "TEXT", std::bind_front(mark, std::ref(log))},
        {"log wait", 2, 3, "REGEX SECONDS [SINCE]",
         [waiters = std::make_shared<LogWaiters>(loop, log)](const Words &words, ControlClient &client) {
             waiters->wait(words, client);
         }},
    };
}

} // namespace sim
