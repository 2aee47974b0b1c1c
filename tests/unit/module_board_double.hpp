// SPDX-License-Identifier: GPL-2.0-or-later
// A board with modules in place of the platform libraries: it answers the calls of the module access bracket
// and writes each one down.
//
// The record holds, in order: "P", "RAISE reason", "OPEN bus", "LOWER", "R reg" (CPLD register), "CH
// channel", "I addr:reg len" and "W addr:reg=value" (module memory, addr in hex, reg decimal), "CHE",
// "CLOSE", "V".
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using Memory = std::array<std::uint8_t, 256>;
using Module = std::map<int, Memory>; // by 7-bit device address; other addresses do not answer

struct ModuleBoardDouble {
    std::vector<std::string> record;

    bool opens = true;
    bool cpld_reads = true;
    bool selects = true;
    std::map<int, std::uint8_t> cpld;   // presence registers
    std::map<int, Module> modules;      // by channel
    std::set<std::pair<int, int>> dead; // (address, register) pairs that fail
    // Board records by index; reading beyond fails.
    std::vector<std::vector<std::uint8_t>> board_records;

    int semaphore = 1;
    int raised = 0;
    int channel = -1;

    // A board with nothing in it.
    void reset();
    // Plugs a module: its presence bit and its channel, as the board wires PON and gigabit Ethernet ports.
    Module &plug_pon(int port);
    Module &plug_gigabit(int port);
    // Semaphore, privileges and channel are as they were at the start.
    void expect_given_back() const;
};

extern ModuleBoardDouble board_double;

// Record lines, and sequences of them, put together with +.
std::vector<std::string> lines(auto... text)
{
    return {std::string(text)...};
}
// Lines of single-byte reads from register `first` to `last`.
std::vector<std::string> byte_reads(int address, int first, int last);
std::string byte_read(int address, int reg);
std::string word_read(int address, int reg);
std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string> &right);

// An SFP path: wavelength and monitoring type in `id`, the five raw fields in `diagnostics`.
struct RawPath {
    int wavelength_nm = 1490;
    int monitoring = 0x20;
    int temperature = 0x1900, voltage = 33000, bias = 5000, tx_power = 10000, rx_power = 5000;
};
void make_path(Module &module, int id, int diagnostics, const RawPath &path = {});
void set_word(Memory &memory, int reg, int value);
void set_text(Memory &memory, int reg, std::string_view text);

// A board record with every port in `pon1`, `pon2` and `gigabit` in use.
std::vector<std::uint8_t> make_board_record(std::uint32_t capability, const std::vector<int> &pon1,
                                            const std::vector<int> &pon2, const std::vector<int> &gigabit);
