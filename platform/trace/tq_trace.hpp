// SPDX-License-Identifier: GPL-2.0-or-later
// Call trace and fault table of the platform libraries, wrapped around every exported function:
//
//     int semaphore_p(int id)
//     {
//         return tq::traced("semaphore_p", [&] { return take(id); }, tq::arg("id", id));
//     }
//
// TQ_TRACE=file    every call appends one line "SEQ MONOTONIC_MS THREAD OP ARGS -> RESULT" when it returns.
//                  SEQ counts the lines of the file (the counter is "file.seq").
// TQ_FAULTS=file   a text file, read again at every call; one fault per line, '#' begins a comment:
//                  OP [nth=N] [count=M] [ret=R] [errno=E] [thread=NAME] [delay_ms=D]
//                  The N-th call of OP (counted from 1, from when the line appeared, per process, only calls
//                  of the named thread) and the M-1 after it fail: the function is not called, returns R and
//                  sets errno to E.  Without nth every call fails; with nth, count is 1 unless given, and 0
//                  means for ever.  A function that returns a pointer returns NULL.  delay_ms sleeps first;
//                  a line without ret only delays.
//
// With neither variable set a wrapped call costs one branch.
// Failure policy: a trace file that cannot be opened or written and a fault line that cannot be read are
// ignored; the traced program never fails because of its trace.
#ifndef TQ_TRACE_HPP
#define TQ_TRACE_HPP

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace tq {

// Either variable was set when the library was loaded.
extern const bool trace_enabled;

// One line of the trace under construction; what does not fit is cut.
class TraceLine {
public:
    TraceLine(const char *op, bool has_result_values) noexcept;
    void integer(const char *name, long long value) noexcept;
    void hex(const char *name, unsigned long long value, int digits) noexcept;
    void text(const char *name, const char *value) noexcept;  // quoted, control characters escaped; NULL
    void token(const char *name, const char *value) noexcept; // as it stands
    void bytes(const char *name, const void *data, std::size_t size) noexcept;
    void result(long long value) noexcept;
    void result(const char *value) noexcept; // as it stands
    void write() noexcept;
    // Values that the call stores through pointers are there to be shown.
    [[nodiscard]] bool has_result_values() const noexcept { return has_result_values_; }

private:
    void append(std::string_view text) noexcept;
    void name(const char *name) noexcept;

    static constexpr std::size_t capacity =
        8192; // a command's syntax and help, the longest there is, has 3000
    const char *op_;
    bool has_result_values_;
    std::size_t used_ = 0;
    char buffer_[capacity];
};

// Name of the calling thread (prctl), "main" for the first one.
struct ThreadName {
    char text[17];
};
ThreadName current_thread_name() noexcept;

struct Fault {
    bool fails = false;
    long long ret = 0;
    int error = 0;
};
// Counts a call of `op` against the fault table, sleeps the delay asked for and says whether it is to fail.
Fault next_fault(const char *op) noexcept;

// Arguments of a line.  `out` is for values stored through a pointer, shown when the call succeeded.
template <class T>
struct IntArg {
    const char *name;
    T value;
    void append_to(TraceLine &line) const noexcept { line.integer(name, static_cast<long long>(value)); }
};
template <class T>
struct HexArg {
    const char *name;
    T value;
    void append_to(TraceLine &line) const noexcept
    {
        line.hex(name, static_cast<std::make_unsigned_t<T>>(value), 2 * static_cast<int>(sizeof(T)));
    }
};
struct TextArg {
    const char *name;
    const char *value;
    void append_to(TraceLine &line) const noexcept { line.text(name, value); }
};
struct TokenArg {
    const char *name;
    const char *value;
    void append_to(TraceLine &line) const noexcept { line.token(name, value); }
};
struct BytesArg {
    const char *name;
    const void *data;
    std::size_t size;
    bool is_output;
    void append_to(TraceLine &line) const noexcept
    {
        if (data && (!is_output || line.has_result_values()))
            line.bytes(name, data, size);
    }
};
template <class T>
struct OutArg {
    const char *name;
    const T *value;
    void append_to(TraceLine &line) const noexcept
    {
        if (value && line.has_result_values())
            HexArg<T>{name, *value}.append_to(line);
    }
};

template <class T>
requires std::is_integral_v<T> IntArg<T> arg(const char *name, T value)
noexcept
{
    return {name, value};
}
inline TextArg arg(const char *name, const char *value) noexcept
{
    return {name, value};
}
inline TokenArg token(const char *name, const char *value) noexcept
{
    return {name, value};
}
template <class T>
HexArg<T> hex(const char *name, T value) noexcept
{
    return {name, value};
}
template <class T>
OutArg<T> out(const char *name, const T *value) noexcept
{
    return {name, value};
}
inline BytesArg bytes(const char *name, const void *data, std::size_t size) noexcept
{
    return {name, data, size, false};
}
inline BytesArg out_bytes(const char *name, const void *data, std::size_t size) noexcept
{
    return {name, data, size, true};
}

namespace detail {
template <class R>
void show_result(TraceLine &line, const R &result) noexcept
{
    if constexpr (std::is_pointer_v<R>)
        line.result(result ? "ok" : "NULL");
    else
        line.result(static_cast<long long>(result));
}

template <class R>
bool succeeded(const R &result) noexcept
{
    if constexpr (std::is_pointer_v<R>)
        return result != nullptr;
    else if constexpr (std::is_signed_v<R>)
        return result >= 0;
    else
        return true;
}

template <class F, class... Args>
std::invoke_result_t<F> traced_call(const char *op, F &call, const Args &...args)
{
    using R = std::invoke_result_t<F>;
    const Fault fault = next_fault(op);
    if constexpr (std::is_void_v<R>) {
        call();
        const int saved = errno;
        TraceLine line(op, true);
        (args.append_to(line), ...);
        line.result("ok");
        line.write();
        errno = saved;
    } else {
        R result{};
        if (!fault.fails) {
            result = call();
        } else {
            if constexpr (!std::is_pointer_v<R>)
                result = static_cast<R>(fault.ret);
            errno = fault.error;
        }
        const int saved = errno;
        TraceLine line(op, !fault.fails && succeeded(result));
        (args.append_to(line), ...);
        show_result(line, result);
        line.write();
        errno = saved;
        return result;
    }
}
} // namespace detail

// Runs `call`; when tracing is on, counts it against the fault table and writes its line.  errno is what the
// call or the fault left.
template <class F, class... Args>
std::invoke_result_t<F> traced(const char *op, F &&call, const Args &...args)
{
    if (!trace_enabled) [[likely]]
        return call();
    return detail::traced_call(op, call, args...);
}

} // namespace tq

#endif
