// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/front_panel.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <system_error>

#include "base/fd.hpp"

namespace sim {

MappedFile::MappedFile(std::string path, std::size_t size) : path_(std::move(path)), size_(size)
{
    const base::Fd fd(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
    // The daemon reaches it as an ordinary user, so the umask must not count.
    if (!fd || ::fchmod(fd.get(), 0666) != 0 || ::ftruncate(fd.get(), static_cast<off_t>(size)) != 0)
        throw std::system_error(errno, std::generic_category(), path_);
    data_ = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
    if (data_ == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), path_);
}

MappedFile::~MappedFile()
{
    ::munmap(data_, size_);
}

FrontPanel::FrontPanel(const board::Board &board, const std::string &folder)
    : button_(board.button), uio_(folder + "/uio0", board.button.size),
      gpio_(folder + "/" + gpio_file_name, sizeof(GpioFile))
{
    press_button(false);
    gpio().magic = gpio_magic;
}

std::uint32_t *FrontPanel::button_word() const
{
    return reinterpret_cast<std::uint32_t *>(static_cast<char *>(uio_.data()) + button_.offset);
}

// The line is pulled up: 0 while pressed.
void FrontPanel::press_button(bool pressed)
{
    const std::uint32_t bit = 1U << button_.bit;
    if (pressed)
        __atomic_fetch_and(button_word(), ~bit, __ATOMIC_RELAXED);
    else
        __atomic_fetch_or(button_word(), bit, __ATOMIC_RELAXED);
}

bool FrontPanel::button_pressed() const
{
    return (__atomic_load_n(button_word(), __ATOMIC_RELAXED) & 1U << button_.bit) == 0;
}

} // namespace sim
