// SPDX-License-Identifier: GPL-2.0-or-later
// A simulated board below the C interface of the platform libraries, in this process, whose calls are written
// down one by one.  Semaphore and privileges are doubles, and so are the libraries themselves, as other
// boards' return other codes than ours: the bytes read, and -5 for every failure.
//
// The record holds, in order: "P", "RAISE reason", "OPEN bus", "LOWER", "R reg" (CPLD register), "CH
// channel", "I addr:reg len" and "W addr:reg=value" (module memory, addr in hex, reg decimal), "CHE",
// "CLOSE", "V".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/boardsim/bus/bus_handle.hpp"

// The 256 bytes behind one address of a module.
class Memory {
public:
    explicit Memory(module_files::ModuleDevice &device) : device_(&device) {}
    std::uint8_t &operator[](std::size_t reg) const
    {
        return reg < 128 ? device_->lower[reg] : device_->pages[0][reg - 128];
    }

private:
    module_files::ModuleDevice *device_;
};

class Module {
public:
    explicit Module(sim::Cage &cage) : cage_(&cage) {}
    // By 7-bit device address, which answers from now on.
    Memory operator[](int address) const
    {
        return Memory(cage_->module->live.devices[static_cast<std::uint8_t>(address)]);
    }

private:
    sim::Cage *cage_;
};

struct ModuleBoardDouble {
    std::vector<std::string> record;

    std::optional<sim::SimulatedBoard> board;
    sim::BusHandle handle; // open, on no channel
    // Board records by index; reading beyond fails.
    std::vector<std::vector<std::uint8_t>> board_records;

    int semaphore = 1;
    int raised = 0;

    ModuleBoardDouble() { reset(); }
    // A board with nothing in it.
    void reset();
    // The module in a cage, plugged without any memory when there was none.
    Module plug_pon(int port) { return plug(sim::CageKind::pon, port); }
    Module plug_gigabit(int port) { return plug(sim::CageKind::ge, port); }
    // As `boardctl fault add`: an operation, or any, and what narrows it.
    void fail(const std::vector<std::string> &fault) { board->faults.add(sim::parse_fault(fault)); }
    // Every PON cage seems to hold a module.
    void pretend_pons();
    // Semaphore, privileges and channel are as they were at the start.
    void expect_given_back() const;

private:
    Module plug(sim::CageKind kind, int port);
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
void make_path(Module module, int id, int diagnostics, const RawPath &path = {});
void set_word(Memory memory, int reg, int value);
void set_text(Memory memory, int reg, std::string_view text);

// A board record with every port in `pon1`, `pon2` and `gigabit` in use.
std::vector<std::uint8_t> make_board_record(std::uint32_t capability, const std::vector<int> &pon1,
                                            const std::vector<int> &pon2, const std::vector<int> &gigabit);
