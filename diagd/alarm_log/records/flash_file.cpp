// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm log's file in the board's flash.
#include "diagd/alarm_log/records/flash_file.hpp"

#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/records/record_chain.hpp"
#include "diagd/core/text.hpp"

#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace diagd {

// Length of the line, negative with errno set when it cannot be written.
static int print_record(std::FILE *stream, const tq_alarm_slot_t &slot) noexcept
{
    const std::string_view level = alarm_level_name(slot.level);
    const std::string_view name = alarm_name(slot.alarm_id);
    const std::string_view description = alarm_description(slot.alarm_id);
    const std::string_view message = field_text(slot.message);
    return std::fprintf(stream, "[%4d/%02d/%02d %02d:%02d:%02d] [%.*s] [%.*s] [%.*s] : %.*s\n", slot.year,
                        slot.mon, slot.mday, slot.hour, slot.min, slot.sec, print_length(level), level.data(),
                        print_length(name), name.data(), print_length(description), description.data(),
                        print_length(message), message.data());
}

base::File open_flash_file(const char *mode) noexcept
{
    return base::File{std::fopen(flash_file_path, mode)};
}

int write_records(std::FILE *stream, const RecordChain &chain, int level) noexcept
{
    // A line at a time, so that it is known which was the last that the flash took.
    std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    off_t written = 0;
    int error = 0;
    chain.walk(chain.head(), [&](const tq_alarm_slot_t &slot) {
        if (slot.valid == 0 || slot.level < level)
            return true;
        const int length = print_record(stream, slot);
        if (length < 0) {
            error = errno;
            return false;
        }
        written += length;
        return true;
    });
    if (error != 0) {
        __fpurge(stream); // or closing would write what is left of the line
        if (ftruncate(fileno(stream), written) != 0)
            error = errno;
    }
    return error;
}

int sync_flash_file(std::FILE *stream) noexcept
{
    int error = std::fflush(stream) == 0 ? 0 : errno;
    fchmod(fileno(stream), 0777); // a file that only root may read is saved nevertheless
    if (fsync(fileno(stream)) != 0)
        error = errno;
    return error;
}

} // namespace diagd
