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
    // The file was not there, or could not be opened.
    [[nodiscard]] bool file_is_missing() const noexcept;
};

} // namespace diagd
