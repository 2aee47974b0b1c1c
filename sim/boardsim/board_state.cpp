// SPDX-License-Identifier: GPL-2.0-or-later
// State file: lines of text, one per part; a module follows its cage in the text form of module_image.
#include "sim/boardsim/board_state.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "base/whole_file.hpp"
#include "platform/description/json_fields.hpp"
#include "sim/modules/module_file.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

std::string file_in(const std::string &folder)
{
    return folder + "/board.state";
}

std::string state_text(SimulatedBoard &board)
{
    std::string text = "state 1\n";
    text += format("lm75 0x%04x\n", board.lm75.set_point());
    text += std::string("plain ") + (board.cpld.plain() ? "on" : "off") + "\n";
    text += "cpld " + hex_text(board.cpld.cells()) + "\n";
    for (const I2cDevice &device : board.devices.all())
        if (const auto *eeprom = std::get_if<Eeprom>(&device.chip))
            text += format("eeprom %d 0x%02x ", device.description.bus, device.description.address) +
                    hex_text(eeprom->memory()) + "\n";
    for (const Cage &cage : board.cages.all()) {
        text += format("cage %s %d %d %d\n", cage.name().c_str(), cage.powered,
                       static_cast<int>(cage.presence), cage.module.has_value());
        if (cage.module)
            text += to_text(cage.module->stored);
    }
    return text;
}

class StateReader {
public:
    StateReader(SimulatedBoard &board, std::string file) : board_(board), file_(std::move(file)), in_(file_)
    {
    }

    bool read()
    {
        if (!in_)
            return false;
        std::string line;
        for (; std::getline(in_, line); ++number_)
            take(line);
        return true;
    }

private:
    [[noreturn]] void fail() const
    {
        throw std::runtime_error(file_ + ": line " + std::to_string(number_) + ": not understood");
    }

    void take(const std::string &line)
    {
        std::istringstream words(line);
        std::string key, value;
        words >> key;
        if (key == "cage") {
            take_cage(words);
            return;
        }
        if (key == "eeprom") {
            take_eeprom(words);
            return;
        }
        words >> value;
        if (key == "lm75")
            board_.lm75.set_raw(static_cast<std::uint16_t>(parse_number(value, 0, 0xffff)));
        else if (key == "plain")
            board_.cpld.set_plain(value == "on");
        else if (key == "cpld")
            board_.cpld.restore(cells(value));
        else if (line != "state 1")
            fail();
    }

    std::array<std::uint8_t, 256> cells(const std::string &digits) const
    {
        std::array<std::uint8_t, 256> cells{};
        if (digits.size() != 2 * cells.size())
            fail();
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const int byte = hex_byte(std::string_view(digits).substr(2 * i, 2));
            if (byte < 0)
                fail();
            cells[i] = static_cast<std::uint8_t>(byte);
        }
        return cells;
    }

    // Of a device that the description no longer has, nothing is kept.
    void take_eeprom(std::istringstream &words)
    {
        int bus = 0;
        std::string address, digits;
        words >> bus >> address >> digits;
        const auto memory = cells(digits);
        I2cDevice *device =
            board_.devices.find(bus, static_cast<std::uint8_t>(parse_number(address, 0, 0x7f)));
        if (auto *eeprom = device != nullptr ? std::get_if<Eeprom>(&device->chip) : nullptr)
            eeprom->restore(memory);
    }

    void take_cage(std::istringstream &words)
    {
        std::string kind;
        int port = 0, powered = 0, presence = 0, plugged = 0;
        words >> kind >> port >> powered >> presence >> plugged;
        if (!words || presence < 0 || presence > 2)
            fail();
        std::string text, line;
        while (plugged != 0 && line != "end" && std::getline(in_, line)) {
            ++number_;
            text += line + "\n";
        }
        // A cage that the description no longer has takes its module with it.
        Cage *cage = board_.cages.find(kind == "ge" ? CageKind::ge : CageKind::pon, port);
        if (cage == nullptr)
            return;
        if (plugged != 0)
            cage->plug(image_from_text(text));
        cage->powered = powered != 0;
        cage->presence = static_cast<Presence>(presence);
    }

    SimulatedBoard &board_;
    std::string file_;
    std::ifstream in_;
    unsigned number_ = 1;
};

} // namespace

void save_state(SimulatedBoard &board, const std::string &folder)
{
    const std::string file = file_in(folder);
    // Not synced: it is written several times a second, and the buses wait.
    if (const int error = base::write_whole_file(file, state_text(board), base::Sync::no); error != 0)
        throw std::runtime_error(file + ": " + std::strerror(error));
}

bool load_state(SimulatedBoard &board, const std::string &folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw std::runtime_error(folder + ": " + error.message());
    // what a board that was killed while it wrote has left
    const std::string unfinished = std::filesystem::path(file_in(folder)).filename().string() + ".";
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().filename().string().starts_with(unfinished))
            std::filesystem::remove(entry.path(), error);
    }
    return StateReader(board, file_in(folder)).read();
}

StateFile::StateFile(EventLoop &loop, SimulatedBoard &board, std::string folder)
    : loop_(loop), board_(board), folder_(std::move(folder))
{
}

void StateFile::changed()
{
    if (folder_.empty() || pending_)
        return;
    pending_ = true;
    loop_.after(std::chrono::milliseconds(100), [this] { save(); });
}

void StateFile::save()
{
    if (!pending_)
        return;
    pending_ = false;
    try {
        save_state(board_, folder_);
    } catch (const std::exception &error) {
        if (!complained_)
            std::fprintf(stderr, "boardsim: %s\n", error.what());
        complained_ = true;
    }
}

void populate(SimulatedBoard &board, const std::string &file)
{
    const json::Owner root = json::parse_file(file);
    json::Fields fields(root.get(), file);
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    for (json::Fields &entry : fields.objects("modules")) {
        const std::string kind = entry.text("kind", 8);
        if (kind != "gpon" && kind != "xgpon" && kind != "ge")
            entry.fail("kind", "none of gpon, xgpon, ge");
        Cage *cage = board.cages.find(kind == "ge" ? CageKind::ge : CageKind::pon,
                                      static_cast<int>(entry.number("port", 1, 8)));
        if (cage == nullptr)
            entry.fail("port", "the board has no such cage");
        cage->plug(read_module({folder / entry.text("file", 255)}, false).image);
        entry.done();
    }
    fields.done();
}

} // namespace sim
