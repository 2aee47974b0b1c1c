// SPDX-License-Identifier: GPL-2.0-or-later
// Lets standard error have, too, what libfrr warns of while it reads the configuration file: lines that are
// refused would be told nowhere where the file names no log.
#pragma once

namespace diagd {

// As long as it lives.  One at a time, on the event loop's thread.
class ConfigurationReading {
public:
    ConfigurationReading() noexcept;
    ~ConfigurationReading();
    ConfigurationReading(const ConfigurationReading &) = delete;
    ConfigurationReading &operator=(const ConfigurationReading &) = delete;

    // Lines that were refused so far.
    [[nodiscard]] unsigned refused_lines() const noexcept;
    // Neither the file nor the backup beside it could be opened.
    [[nodiscard]] bool file_is_missing() const noexcept;
    // The file could not be opened, and libfrr has put the backup in its place: what was saved the time
    // before.
    [[nodiscard]] bool backup_is_used() const noexcept;
};

} // namespace diagd
