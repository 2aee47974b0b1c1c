// SPDX-License-Identifier: GPL-2.0-or-later
// Call trace of the platform libraries: building a line and appending it with one write.
#include "platform/trace/tq_trace.hpp"

#include "base/fd.hpp"

#include <atomic>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace tq {

namespace {

// Opened when the library is loaded: later the daemon may have given up the rights that this takes.
const int trace_fd = [] {
    const char *path = std::getenv("TQ_TRACE");
    if (!path || !*path)
        return -1;
    return open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
}();

// Each platform library carries this file, and several programs may write one trace: the counter that numbers
// their lines through lies in a file beside it.
std::atomic<std::uint64_t> &sequence() noexcept
{
    using Counter = std::atomic<std::uint64_t>;
    static Counter own{0};
    static Counter &shared = []() -> Counter & {
        const char *path = std::getenv("TQ_TRACE");
        char name[4096];
        if (!path || std::snprintf(name, sizeof name, "%s.seq", path) >= static_cast<int>(sizeof name))
            return own;
        const base::Fd fd(open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        void *memory = MAP_FAILED;
        if (fd && ftruncate(fd.get(), sizeof(Counter)) == 0)
            memory = mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
        return memory == MAP_FAILED ? own : *static_cast<Counter *>(memory);
    }();
    return shared;
}

bool variable_set(const char *name) noexcept
{
    const char *value = std::getenv(name);
    return value && *value;
}

} // namespace

ThreadName current_thread_name() noexcept
{
    ThreadName name{"main"};
    if (gettid() != getpid())
        prctl(PR_GET_NAME, name.text);
    return name;
}

// The counter is found while the file can surely be made.
const bool trace_enabled = (trace_fd >= 0 && (sequence(), true)) || variable_set("TQ_FAULTS");

TraceLine::TraceLine(const char *op, bool has_result_values) noexcept
    : op_(op), has_result_values_(has_result_values)
{
}

void TraceLine::append(std::string_view text) noexcept
{
    const std::size_t room = capacity - used_;
    const std::size_t size = text.size() < room ? text.size() : room;
    std::memcpy(buffer_ + used_, text.data(), size);
    used_ += size;
}

void TraceLine::name(const char *name) noexcept
{
    append(" ");
    append(name);
    append("=");
}

void TraceLine::integer(const char *name, long long value) noexcept
{
    char text[24];
    const int size = std::snprintf(text, sizeof text, "%lld", value);
    this->name(name);
    append({text, static_cast<std::size_t>(size)});
}

void TraceLine::hex(const char *name, unsigned long long value, int digits) noexcept
{
    char text[24];
    const int size = std::snprintf(text, sizeof text, "0x%0*llx", digits, value);
    this->name(name);
    append({text, static_cast<std::size_t>(size)});
}

void TraceLine::text(const char *name, const char *value) noexcept
{
    this->name(name);
    if (!value) {
        append("NULL");
        return;
    }
    append("\"");
    for (const char *at = value; *at; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        char escape[5];
        if (byte == '\r')
            append("\\r");
        else if (byte == '\n')
            append("\\n");
        else if (byte == '"' || byte == '\\')
            append({escape, static_cast<std::size_t>(std::snprintf(escape, sizeof escape, "\\%c", byte))});
        else if (byte < 0x20 || byte == 0x7f)
            append({escape, static_cast<std::size_t>(std::snprintf(escape, sizeof escape, "\\x%02x", byte))});
        else
            append({at, 1});
    }
    append("\"");
}

void TraceLine::token(const char *name, const char *value) noexcept
{
    this->name(name);
    append(value);
}

void TraceLine::bytes(const char *name, const void *data, std::size_t size) noexcept
{
    this->name(name);
    const auto *byte = static_cast<const unsigned char *>(data);
    for (std::size_t i = 0; i < size && used_ < capacity; ++i) {
        char text[3];
        std::snprintf(text, sizeof text, "%02x", byte[i]);
        append({text, 2});
    }
}

void TraceLine::result(long long value) noexcept
{
    char text[24];
    std::snprintf(text, sizeof text, "%lld", value);
    result(text);
}

// The result must survive the cutting of long arguments, so it has its place kept.
void TraceLine::result(const char *value) noexcept
{
    char text[32];
    const int size = std::snprintf(text, sizeof text, " -> %s\n", value);
    const auto length =
        static_cast<std::size_t>(size) < sizeof text ? static_cast<std::size_t>(size) : sizeof text - 1;
    if (used_ > capacity - length) {
        used_ = capacity - length - 3;
        append("...");
    }
    append({text, length});
}

void TraceLine::write() noexcept
{
    if (trace_fd < 0)
        return;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    char head[128];
    const int size = std::snprintf(head, sizeof head, "%06" PRIu64 " %lld %s %s", sequence().fetch_add(1) + 1,
                                   static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000,
                                   current_thread_name().text, op_);
    const auto head_size =
        static_cast<std::size_t>(size) < sizeof head ? static_cast<std::size_t>(size) : sizeof head - 1;
    // One call: lines of threads and processes that share the file never mix.
    const iovec parts[] = {{head, head_size}, {buffer_, used_}};
    while (writev(trace_fd, parts, 2) < 0 && errno == EINTR) {
    }
}

} // namespace tq
