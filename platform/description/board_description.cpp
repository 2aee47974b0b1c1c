// SPDX-License-Identifier: GPL-2.0-or-later
// Board description reader.  Failure policy: a description with any mistake is refused as a whole.
#include "platform/description/board_description.hpp"

#include <cstdio>
#include <cstdlib>
#include <set>

#include "platform/description/json_fields.hpp"

namespace board {

namespace {

using json::Fields;

constexpr long max_bus = 19;
constexpr long max_address = 0x77; // 7-bit addresses from 0x78 on are reserved
constexpr long max_phy_register = 0x401fffff;
constexpr std::size_t max_fru_text = 40; // four of them and the rest fit into 256 bytes
// The memory has 24 bits for the minutes since 1996.
constexpr std::chrono::year_month_day first_fru_day(std::chrono::year(1996), std::chrono::January,
                                                    std::chrono::day(1));
constexpr std::chrono::year_month_day last_fru_day(std::chrono::year(2027), std::chrono::November,
                                                   std::chrono::day(24));
constexpr unsigned record_count = 13;
constexpr unsigned table_entries = 32;

std::uint8_t byte(Fields &fields, const char *name)
{
    return static_cast<std::uint8_t>(fields.number(name, 0, 255));
}

std::uint8_t address(Fields &fields)
{
    return static_cast<std::uint8_t>(fields.number("address", 0x03, max_address));
}

int bus(Fields &fields)
{
    return static_cast<int>(fields.number("bus", 0, max_bus));
}

Cpld read_cpld(Fields fields)
{
    Cpld cpld;
    cpld.bus = bus(fields);
    cpld.address = address(fields);
    cpld.logic_version_register = byte(fields, "logic_version_register");
    cpld.device_type_register = byte(fields, "device_type_register");
    cpld.power_register = byte(fields, "power_register");
    cpld.operation_register = byte(fields, "operation_register");
    cpld.logic_version = byte(fields, "logic_version");
    cpld.device_type = byte(fields, "device_type");
    cpld.power_status = byte(fields, "power_status");
    fields.done();
    return cpld;
}

Multiplexer read_multiplexer(Fields fields)
{
    Multiplexer mux;
    mux.bus = bus(fields);
    mux.address = address(fields);
    mux.channels = static_cast<int>(fields.number("channels", 1, 16));
    fields.done();
    return mux;
}

Sensor read_sensor(Fields fields)
{
    Sensor sensor;
    sensor.bus = bus(fields);
    sensor.address = address(fields);
    sensor.temperature_tenths = static_cast<int>(fields.number_or("temperature_tenths", -550, 1250, 250));
    fields.done();
    return sensor;
}

Cages read_cages(Fields fields, const Multiplexer &mux)
{
    Cages cages;
    cages.count = static_cast<int>(fields.number("count", 0, 8));
    cages.first_channel = static_cast<int>(fields.number("first_channel", 0, mux.channels));
    if (cages.first_channel + cages.count > mux.channels)
        fields.fail("count", "the multiplexer has only " + std::to_string(mux.channels) + " channels");
    cages.presence_register = byte(fields, "presence_register");
    fields.done();
    return cages;
}

std::vector<PhyRegister> read_registers(Fields &phy, const char *name, long max_number)
{
    std::vector<PhyRegister> registers;
    if (!phy.has(name))
        return registers;
    for (Fields &fields : phy.objects(name)) {
        PhyRegister entry;
        entry.number = static_cast<std::uint32_t>(fields.number("register", 0, max_number));
        entry.value = static_cast<std::uint16_t>(fields.number("value", 0, 0xffff));
        fields.done();
        registers.push_back(entry);
    }
    return registers;
}

std::vector<Phy> read_phys(Fields &board)
{
    std::vector<Phy> phys;
    std::set<std::pair<std::string, std::uint32_t>> seen;
    for (Fields &fields : board.objects("phys")) {
        Phy phy;
        phy.interface = fields.text("interface", 15);
        phy.address = static_cast<std::uint32_t>(fields.number("address", 0, 31));
        phy.oui = static_cast<std::uint32_t>(fields.number("oui", 0, 0x3fffff));
        phy.model = static_cast<std::uint8_t>(fields.number("model", 0, 63));
        phy.revision = static_cast<std::uint8_t>(fields.number("revision", 0, 15));
        if (!seen.insert({phy.interface, phy.address}).second)
            fields.fail("address", "given twice on " + phy.interface);
        phy.registers = read_registers(fields, "registers", max_phy_register);
        phy.indirect = read_registers(fields, "indirect", 0xffff);
        fields.done();
        phys.push_back(std::move(phy));
    }
    return phys;
}

// A single character cannot be told from the end of the texts.
std::string read_fru_text(Fields &fields, const char *name)
{
    std::string text = fields.text(name, max_fru_text);
    if (text.size() == 1)
        fields.fail(name, "a single character");
    return text;
}

Fru read_fru(Fields fields)
{
    Fru fru;
    fru.manufacturer = read_fru_text(fields, "manufacturer");
    fru.product = read_fru_text(fields, "product");
    fru.serial_number = read_fru_text(fields, "serial_number");
    fru.part_number = read_fru_text(fields, "part_number");
    const std::string made = fields.text("made", 10);
    int year = 0;
    unsigned month = 0, day = 0;
    char rest = 0;
    // NOLINTNEXTLINE(cert-err34-c): so few digits fit
    if (std::sscanf(made.c_str(), "%4d-%2u-%2u%c", &year, &month, &day, &rest) == 3)
        fru.made = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    if (!fru.made.ok() || fru.made < first_fru_day || fru.made > last_fru_day)
        fields.fail("made", "\"" + made + "\" is no date from 1996-01-01 to 2027-11-24");
    fields.done();
    return fru;
}

I2cDevice read_device(Fields &fields, const Board &board)
{
    I2cDevice device;
    device.bus = static_cast<int>(fields.number("bus", 0, board.bus_count - 1));
    device.address = address(fields);
    device.name = fields.text("name", 31);
    const std::string kind = fields.text("kind", 15);
    if (kind != "eeprom" && kind != "lm75")
        fields.fail("kind", "neither \"eeprom\" nor \"lm75\"");
    if (kind == "lm75") {
        device.kind = I2cDevice::Kind::lm75;
        device.temperature_tenths = static_cast<int>(fields.number_or("temperature_tenths", -550, 1250, 250));
    } else if (fields.has("fru")) {
        device.fru = read_fru(fields.object("fru"));
    }
    return device;
}

std::vector<I2cDevice> read_devices(Fields &root, const Board &board)
{
    std::vector<I2cDevice> devices;
    if (!root.has("i2c_devices"))
        return devices;
    std::set<std::pair<int, std::uint8_t>> seen = {{board.cpld.bus, board.cpld.address},
                                                   {board.multiplexer.bus, board.multiplexer.address},
                                                   {board.lm75.bus, board.lm75.address}};
    for (Fields &fields : root.objects("i2c_devices")) {
        I2cDevice device = read_device(fields, board);
        if (!seen.insert({device.bus, device.address}).second)
            fields.fail("address", "given twice on bus " + std::to_string(device.bus));
        fields.done();
        devices.push_back(std::move(device));
    }
    return devices;
}

Button read_button(Fields fields)
{
    Button button;
    button.device = fields.text("device", 255);
    button.size = static_cast<std::uint32_t>(fields.number("size", 4, 1 << 20));
    button.offset = static_cast<std::uint32_t>(fields.number("offset", 0, button.size - 4));
    if (button.offset % 4 != 0)
        fields.fail("offset", "not a multiple of 4");
    button.bit = static_cast<unsigned>(fields.number("bit", 0, 31));
    fields.done();
    return button;
}

std::vector<Port> read_ports(Fields &record, const char *name)
{
    std::vector<Port> ports;
    if (!record.has(name))
        return ports;
    std::set<unsigned> seen;
    for (Fields &fields : record.objects(name)) {
        Port port;
        port.number = static_cast<unsigned>(fields.number("port", 0, table_entries - 1));
        port.slot = static_cast<std::uint32_t>(fields.number_or("slot", 0, 255, 0));
        port.in_use = fields.flag_or("in_use", true);
        port.present = fields.flag_or("present", true);
        if (!seen.insert(port.number).second)
            fields.fail("port", "given twice");
        fields.done();
        ports.push_back(port);
    }
    return ports;
}

std::vector<Record> read_records(Fields &board)
{
    std::vector<Record> records;
    std::set<unsigned> seen;
    for (Fields &fields : board.objects("records")) {
        Record record;
        record.index = static_cast<unsigned>(fields.number("index", 0, record_count - 1));
        record.word8 = static_cast<std::uint32_t>(fields.number_or("word8", 0, 0xffffffff, 0));
        record.word108 = static_cast<std::uint32_t>(fields.number_or("word108", 0, 0xffffffff, 6));
        record.capability = static_cast<std::uint32_t>(fields.number("capability", 0, 0xffffffff));
        record.pon1 = read_ports(fields, "pon1");
        record.pon2 = read_ports(fields, "pon2");
        record.sfp = read_ports(fields, "sfp");
        if (!seen.insert(record.index).second)
            fields.fail("index", "given twice");
        fields.done();
        records.push_back(std::move(record));
    }
    return records;
}

BaseInfo read_base(Fields fields)
{
    BaseInfo base;
    base.device_model = fields.text("device_model", 16);
    base.device_mac = fields.text("device_mac", 19);
    base.serial_number = fields.text("serial_number", 80);
    base.hardware_version = fields.text("hardware_version", 15);
    base.software_version = fields.text("software_version", 15);
    base.software_created = fields.text("software_created", 255);
    base.copyright = fields.text("copyright", 552);
    fields.done();
    return base;
}

// One description, or the reason why there is none; never changes once made.
struct Loaded {
    std::unique_ptr<Board> board;
    std::string error;

    Loaded()
    {
        try {
            board = std::make_unique<Board>(load(default_file()));
        } catch (const std::exception &e) {
            error = e.what();
        }
    }
};

} // namespace

Board load(const std::string &file)
{
    const base::Json root = json::parse_file(file);
    Fields fields(root.get(), file);
    Board board;
    board.name = fields.text("name", 31);
    const std::string transport = fields.text("transport", 31);
    if (transport != "sim" && transport != "linux")
        fields.fail("transport", "neither \"sim\" nor \"linux\"");
    board.transport = transport == "sim" ? Transport::sim : Transport::linux_devices;
    board.sim_folder = fields.text_or("sim_folder", 80, "/run/boardsim");
    board.drift = fields.flag_or("drift", false);
    board.bus_count = static_cast<int>(fields.number("i2c_buses", 1, max_bus + 1));
    board.cpld = read_cpld(fields.object("cpld"));
    board.multiplexer = read_multiplexer(fields.object("multiplexer"));
    board.lm75 = read_sensor(fields.object("lm75"));
    board.pon = read_cages(fields.object("pon_cages"), board.multiplexer);
    board.ge = read_cages(fields.object("ge_cages"), board.multiplexer);
    board.phys = read_phys(fields);
    board.devices = read_devices(fields, board);
    board.button = read_button(fields.object("button"));
    board.gpio_device = fields.text("gpio_device", 255);
    board.pon_mode = static_cast<int>(fields.number("pon_mode", 0, 255));
    const auto record = fields.numbers("port_record", board.port_record.size(), 0, 255);
    for (std::size_t i = 0; i < record.size(); ++i)
        board.port_record[i] = static_cast<std::uint8_t>(record[i]);
    board.records = read_records(fields);
    board.base = read_base(fields.object("base_information"));
    fields.done();
    return board;
}

std::string default_file()
{
    const char *file = std::getenv("OLT_BOARD");
    return file != nullptr && *file != '\0' ? file : "/etc/olt/board.json";
}

const Board *this_board(std::string &error)
{
    static const Loaded &loaded = *new Loaded; // for good: threads may use it while the process ends
    error = loaded.error;
    return loaded.board.get();
}

std::string sim_folder(const Board &board)
{
    const char *folder = std::getenv("BOARDSIM_DIR");
    return folder != nullptr && *folder != '\0' ? folder : board.sim_folder;
}

} // namespace board
