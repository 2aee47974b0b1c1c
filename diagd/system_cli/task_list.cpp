// SPDX-License-Identifier: GPL-2.0-or-later
// Failure policy: a thread whose status cannot be read is listed with what is known; anything else that
// cannot be opened ends the list and is reported to the caller.
#include "diagd/system_cli/task_list.hpp"

#include "base/fd.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <span>

namespace diagd {

namespace {

using Path = std::array<char, 64>; // three numbers and the words between them at most

// The number of the next folder that stands for a process or a thread.
std::optional<std::uint32_t> next_number(DIR *folder) noexcept
{
    while (const struct dirent *entry = readdir(folder))
        if (const auto number = parse_task_folder(entry->d_name))
            return number;
    return std::nullopt;
}

// The first bytes of a file, as many as the buffer holds.  Nothing when it cannot be opened; one that cannot
// be read, because its thread has ended since, is empty.
std::optional<std::string_view> read_beginning(const Path &path, std::span<char> buffer) noexcept
{
    const base::Fd file{open(path.data(), O_RDONLY | O_CLOEXEC)};
    if (!file)
        return std::nullopt;
    const ssize_t size = read(file.get(), buffer.data(), buffer.size());
    return std::string_view{buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

Path folder_of(std::uint32_t process) noexcept
{
    Path path;
    std::snprintf(path.data(), path.size(), "/proc/%u/task", process);
    return path;
}

Path file_of(std::uint32_t process, std::uint32_t thread, const char *name) noexcept
{
    Path path;
    std::snprintf(path.data(), path.size(), "/proc/%u/task/%u/%s", process, thread, name);
    return path;
}

} // namespace

std::string for_each_task(DIR *proc, const std::function<void(const Task &)> &row)
{
    std::array<char, 256> buffer;
    while (const auto process = next_number(proc)) {
        const Path folder = folder_of(*process);
        const base::Folder threads{opendir(folder.data())};
        if (!threads)
            return std::string{"opendir "} + folder.data() + " fail";

        while (const auto thread = next_number(threads.get())) {
            const Path command_file = file_of(*process, *thread, "cmdline");
            const auto command = read_beginning(command_file, buffer);
            if (!command)
                return std::string{"open file "} + command_file.data() + " fail";
            Task task{*process, *thread, parse_task_command(*command), {}};
            const Path status_file = file_of(*process, *thread, "status");
            task.status = parse_task_status(read_beginning(status_file, buffer).value_or(""));
            row(task);
        }
    }
    return {};
}

} // namespace diagd
