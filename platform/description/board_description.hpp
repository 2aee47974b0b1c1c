// SPDX-License-Identifier: GPL-2.0-or-later
// What a board has, as written in its board.json: buses and their devices, CPLD, multiplexer, sensor, PHYs,
// cages, ports and identity.  The platform libraries and the simulated board read the same file, so a board
// is described once.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace board {

enum class Transport { sim, linux_devices };

// Register numbers of the CPLD that the libraries need by themselves; everything else is the daemon's.
struct Cpld {
    int bus = 0;
    std::uint8_t address = 0; // 7-bit
    std::uint8_t logic_version_register = 0;
    std::uint8_t device_type_register = 0;
    std::uint8_t power_register = 0; // bits 0 and 1: supplies 1 and 2 good, bit 2: board too hot
    std::uint8_t operation_register = 0;
    std::uint8_t logic_version = 0; // values that a simulated board starts with
    std::uint8_t device_type = 0;
    std::uint8_t power_status = 0;
};

// I2C switch in front of the cages: channel n is bit n of its one or two control bytes.
struct Multiplexer {
    int bus = 0;
    std::uint8_t address = 0;
    int channels = 0;
};

struct Sensor {
    int bus = 0;
    std::uint8_t address = 0;
    int temperature_tenths = 250; // of a degree Celsius, at the start of a simulated board
};

// A row of cages: port p (1-based) is behind channel first_channel + p - 1, and bit p - 1 of
// `presence_register` of the CPLD stands for it.
struct Cages {
    int count = 0;
    int first_channel = 0;
    std::uint8_t presence_register = 0;
};

struct PhyRegister {
    std::uint32_t number = 0; // 0..31, or bit 30, the clause 45 device in bits 16-20, the register below
    std::uint16_t value = 0;
};

struct Phy {
    std::string interface;
    std::uint32_t address = 0; // 0..31
    std::uint32_t oui = 0;     // 22 bits, as registers 2 and 3 carry them
    std::uint8_t model = 0;    // 6 bits
    std::uint8_t revision = 0; // 4 bits
    // After power-on of a simulated board, beyond what the standard says of every PHY.
    std::vector<PhyRegister> registers;
    std::vector<PhyRegister> indirect; // behind the maker's window 0x1e/0x1f
};

// What the inventory memory of a replaceable unit says.
struct Fru {
    std::string manufacturer, product, serial_number, part_number;
    std::chrono::year_month_day made{};
};

// A device on an I2C bus that only people ask, through the I2C commands.
struct I2cDevice {
    enum class Kind { eeprom, lm75 };

    int bus = 0;
    std::uint8_t address = 0;
    std::string name;
    Kind kind = Kind::eeprom;
    std::optional<Fru> fru;       // EEPROM
    int temperature_tenths = 250; // LM75, as of Sensor
};

// The memory-mapped register block behind the push-button.
struct Button {
    std::string device;       // /dev/uio0
    std::uint32_t size = 0;   // bytes of the mapped region
    std::uint32_t offset = 0; // of the 32-bit word
    unsigned bit = 0;         // 0 while pressed
};

struct Port {
    unsigned number = 0; // 0..31, the entry of the table
    std::uint32_t slot = 0;
    bool in_use = true;
    bool present = true; // SFP table only
};

// One of the 13 board records; those not listed in the file are all zero but for word8 = 1 ("not for
// register commands").
struct Record {
    unsigned index = 0;
    std::uint32_t word8 = 0;
    std::uint32_t word108 = 0;
    std::uint32_t capability = 0; // bit 3: PON ports, bit 4: SFP ports
    std::vector<Port> pon1, pon2, sfp;
};

struct BaseInfo {
    std::string device_model, device_mac, serial_number, hardware_version, software_version, software_created,
        copyright;
};

struct Board {
    std::string name;
    Transport transport = Transport::sim;
    std::string sim_folder; // $BOARDSIM_DIR has precedence, see sim_folder()
    int bus_count = 4;      // I2C buses 0 .. bus_count - 1
    Cpld cpld;
    Multiplexer multiplexer;
    Sensor lm75;
    Cages pon, ge;
    std::vector<Phy> phys;
    std::vector<I2cDevice> devices;
    Button button;
    std::string gpio_device;
    int pon_mode = 0;
    std::array<std::uint8_t, 16> port_record{};
    std::vector<Record> records;
    BaseInfo base;
    bool drift = false; // a simulated board moves its temperatures and powers a little
};

// Reads and checks a description.  Throws json::Error with one line naming file and field.
Board load(const std::string &file);

// File of this board: $OLT_BOARD, else /etc/olt/board.json.
std::string default_file();

// The description of this board, read once per process.  nullptr when it cannot be read: the reason is put
// into `error` each time.  Thread-safe.
const Board *this_board(std::string &error);

// Folder of the simulated board's sockets: $BOARDSIM_DIR, else the description's.
std::string sim_folder(const Board &board);

} // namespace board
