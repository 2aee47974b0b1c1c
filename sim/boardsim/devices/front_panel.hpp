// SPDX-License-Identifier: GPL-2.0-or-later
// Push-button and GPIO lines.  Both are reached through files in the board's folder that stand for the
// board's devices: a register block that is mapped, and the state of the GPIO driver (gpio_file.hpp).
#pragma once

#include <string>

#include "platform/description/board_description.hpp"
#include "sim/boardsim/devices/gpio_file.hpp"

namespace sim {

// A file of fixed size, mapped for reading and writing.  It is not removed at the end: others may have it
// mapped or bound to another path.
class MappedFile {
public:
    // Throws std::system_error.
    MappedFile(std::string path, std::size_t size);
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;
    ~MappedFile();
    [[nodiscard]] void *data() const { return data_; }
    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_;
    std::size_t size_;
    void *data_;
};

class FrontPanel {
public:
    FrontPanel(const board::Board &board, const std::string &folder);

    void press_button(bool pressed);
    [[nodiscard]] bool button_pressed() const;
    [[nodiscard]] GpioFile &gpio() { return *static_cast<GpioFile *>(gpio_.data()); }

private:
    [[nodiscard]] std::uint32_t *button_word() const;

    const board::Button &button_;
    MappedFile uio_;
    MappedFile gpio_;
};

} // namespace sim
