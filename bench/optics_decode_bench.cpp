// SPDX-License-Identifier: GPL-2.0-or-later
// Decoding one module against a straight loop over the same bytes that a C programmer would write for one
// known module: the sums of the check codes byte by byte, every word times its unit, the texts copied without
// their blanks, the values held against their thresholds.  Internal calibration, external calibration and a
// QSFP of four lanes.  Prints the time for a module and the ratio; exit status 1 when a ratio is above 1.5 or
// a module takes more than 1.385 us.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "optics/decode.hpp"

namespace {

constexpr int modules = 5'000; // in a round
constexpr int rounds = 100;    // by turns with the floor; the best one of each counts
constexpr double max_ratio = 1.5;
constexpr double max_us = 1.385;

// What the straight loop makes of a module.
struct Plain {
    char texts[5][17];
    unsigned char sums_good;
    unsigned char oui[3], codes[16];
    double wavelength, lengths[6];
    double values[14], thresholds[5][4];
    unsigned char judged[14], flags[14], status[4];
};

struct TextField {
    int at, size;
};

unsigned word(const std::uint8_t *p)
{
    return static_cast<unsigned>(p[0] << 8 | p[1]);
}

int sum_is_good(const std::uint8_t *p, int first, int last, int code)
{
    unsigned sum = 0;
    for (int i = first; i <= last; ++i)
        sum += p[i];
    return (sum & 0xff) == p[code];
}

void copy_texts(Plain &out, const std::uint8_t *p, const TextField *fields)
{
    for (int i = 0; i < 5; ++i) {
        int size = fields[i].size;
        while (size > 0 && (p[fields[i].at + size - 1] == ' ' || p[fields[i].at + size - 1] == 0))
            --size;
        std::memcpy(out.texts[i], p + fields[i].at, static_cast<std::size_t>(size));
        out.texts[i][size] = 0;
    }
}

unsigned char judged(double value, const double *limits)
{
    if (value > limits[0])
        return 1;
    if (value < limits[1])
        return 2;
    if (value > limits[2])
        return 3;
    return value < limits[3] ? 4 : 5;
}

constexpr double units[5] = {1.0 / 256, 1e-4, 2e-3, 1e-4, 1e-4};

double single(const std::uint8_t *p)
{
    const std::uint32_t bits = word(p) << 16 | word(p + 2);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return static_cast<double>(value);
}

// The value of a word of A2h, calibrated as byte 92 of A0h wants it.
double sfp_value(const std::uint8_t *a2, int quantity, unsigned raw_word, int external)
{
    static const int slopes[4] = {84, 88, 76, 80};
    double raw = quantity == 0 ? static_cast<std::int16_t>(raw_word) : raw_word;
    if (external && quantity == 4) {
        double power = 1, sum = 0;
        for (int k = 0; k < 5; ++k) {
            sum += single(a2 + 72 - 4 * k) * power;
            power *= raw;
        }
        raw = sum;
    } else if (external) {
        const std::uint8_t *constants = a2 + slopes[quantity];
        raw = word(constants) / 256.0 * raw + static_cast<std::int16_t>(word(constants + 2));
    }
    return raw * units[quantity];
}

void plain_sfp(Plain &out, const std::uint8_t *a0, const std::uint8_t *a2)
{
    static const TextField fields[5] = {{20, 16}, {40, 16}, {56, 4}, {68, 16}, {84, 8}};
    std::memset(&out, 0, sizeof out);
    const int external = a0[92] >> 4 & 1;
    out.sums_good = static_cast<unsigned char>(sum_is_good(a0, 0, 62, 63) && sum_is_good(a0, 64, 94, 95) &&
                                               sum_is_good(a2, 0, 94, 95));
    copy_texts(out, a0, fields);
    std::memcpy(out.codes, a0, 13);
    std::memcpy(out.oui, a0 + 37, 3);
    out.wavelength = word(a0 + 60);
    for (int i = 0; i < 6; ++i)
        out.lengths[i] = a0[14 + i] * 10;
    const unsigned alarms = word(a2 + 112), warnings = word(a2 + 116);
    for (int i = 0; i < 5; ++i) {
        for (int k = 0; k < 4; ++k)
            out.thresholds[i][k] = sfp_value(a2, i, word(a2 + 8 * i + 2 * k), external);
        out.values[i] = sfp_value(a2, i, word(a2 + 96 + 2 * i), external);
        out.judged[i] = out.sums_good ? judged(out.values[i], out.thresholds[i]) : 0;
        out.flags[i] =
            static_cast<unsigned char>((alarms >> (14 - 2 * i) & 3) << 2 | (warnings >> (14 - 2 * i) & 3));
    }
    out.status[0] = a2[110];
}

void plain_qsfp(Plain &out, const std::uint8_t *lower, const std::uint8_t *page00, const std::uint8_t *page03)
{
    static const TextField fields[5] = {{20, 16}, {40, 16}, {56, 2}, {68, 16}, {84, 8}};
    static const int thresholds[5] = {0, 16, 56, 64, 48}, lanes[3] = {42, 50, 34}, flags[3] = {11, 13, 9};
    std::memset(&out, 0, sizeof out);
    out.sums_good =
        static_cast<unsigned char>(sum_is_good(page00, 0, 62, 63) && sum_is_good(page00, 64, 94, 95));
    copy_texts(out, page00, fields);
    std::memcpy(out.codes, page00, 13);
    std::memcpy(out.oui, page00 + 37, 3);
    out.wavelength = word(page00 + 58) / 20.0;
    for (int i = 0; i < 5; ++i) {
        out.lengths[i] = page00[14 + i];
        for (int k = 0; k < 4; ++k) {
            const unsigned raw = word(page03 + thresholds[i] + 2 * k);
            out.thresholds[i][k] =
                (i == 0 ? static_cast<std::int16_t>(raw) : static_cast<double>(raw)) * units[i];
        }
    }
    out.values[0] = static_cast<std::int16_t>(word(lower + 22)) * units[0];
    out.values[1] = word(lower + 26) * units[1];
    out.flags[0] = static_cast<unsigned char>(lower[6] >> 4);
    out.flags[1] = static_cast<unsigned char>(lower[7] >> 4);
    for (int i = 0; i < 2; ++i)
        out.judged[i] = out.sums_good ? judged(out.values[i], out.thresholds[i]) : 0;
    for (int lane = 0; lane < 4; ++lane) {
        for (int i = 0; i < 3; ++i) {
            const int at = 2 + 3 * lane + i;
            out.values[at] = word(lower + lanes[i] + 2 * lane) * units[2 + i];
            out.judged[at] = out.sums_good ? judged(out.values[at], out.thresholds[2 + i]) : 0;
            out.flags[at] =
                static_cast<unsigned char>(lower[flags[i] + lane / 2] >> (lane % 2 == 0 ? 4 : 0) & 15);
        }
        out.status[lane] = static_cast<unsigned char>(
            (lower[3] >> lane & 1) | (lower[3] >> (4 + lane) & 1) << 1 | (lower[4] >> lane & 1) << 2);
    }
}

// Keeps the compiler from leaving out what nobody looks at, and from knowing the bytes.
void use(const void *pointer)
{
    asm volatile("" : : "r"(pointer) : "memory");
}

// Of this thread's processor time: others may use the machine meanwhile.
double now_us()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Work>
double us_per_module(Work &&work)
{
    const double begin = now_us();
    for (int i = 0; i < modules; ++i)
        work();
    return (now_us() - begin) / modules;
}

void put_word(std::uint8_t *p, int value)
{
    p[0] = static_cast<std::uint8_t>(value >> 8);
    p[1] = static_cast<std::uint8_t>(value);
}

void put_text(std::uint8_t *p, std::string_view text)
{
    std::copy(text.begin(), text.end(), p);
}

void put_sum(std::uint8_t *p, int first, int last, int code)
{
    p[code] = 0;
    for (int i = first; i <= last; ++i)
        p[code] = static_cast<std::uint8_t>(p[code] + p[i]);
}

std::uint8_t a0[256], a2[256], lower[128], page00[128], page03[128];

void fill_sfp(bool external)
{
    a0[0] = 3;
    put_text(a0 + 20, "ACME OPTICS     ");
    put_text(a0 + 40, "AC-10G-LR       B2  ");
    put_text(a0 + 68, "SN0001          210304  ");
    put_word(a0 + 60, 1310);
    a0[92] = external ? 0x58 : 0x68;
    a0[93] = 0xf0;
    const int words[] = {23040, -6400, 21760, -5120, 36000, 30000, 35000, 30500, 45000, 1000,
                         40000, 1500,  17783, 1995,  14125, 2512,  12589, 251,   11220, 316};
    for (int i = 0; i < 20; ++i)
        put_word(a2 + 2 * i, words[i]);
    put_word(a2 + 68, 0x3f80); // 1 * raw
    for (int at = 76; at < 92; at += 4)
        put_word(a2 + at, 0x0100);
    const int live[] = {6528, 32545, 13936, 6361, 5518};
    for (int i = 0; i < 5; ++i)
        put_word(a2 + 96 + 2 * i, live[i]);
    put_sum(a0, 0, 62, 63);
    put_sum(a0, 64, 94, 95);
    put_sum(a2, 0, 94, 95);
}

void fill_qsfp()
{
    lower[0] = page00[0] = 0x11;
    put_text(page00 + 20, "ACME OPTICS     ");
    put_text(page00 + 40, "AC-100G-LR4     A1");
    put_text(page00 + 68, "SN0002          210304  ");
    put_word(page00 + 58, 26200);
    page00[92] = 0x3c;
    put_word(lower + 22, 7808);
    put_word(lower + 26, 32900);
    for (int i = 0; i < 12; ++i)
        put_word(lower + 34 + 2 * i, 5000 + 100 * i);
    for (int at : {0, 16, 48, 56, 64}) {
        put_word(page03 + at, 30000);
        put_word(page03 + at + 2, 1000);
        put_word(page03 + at + 4, 28000);
        put_word(page03 + at + 6, 2000);
    }
    put_sum(page00, 0, 62, 63);
    put_sum(page00, 64, 94, 95);
}

template <class Floor>
bool measure(const char *what, const optics::Memory &memory, Floor &&floor)
{
    double floor_us = 1e9;
    double us = 1e9;
    for (int round = 0; round < rounds; ++round) {
        floor_us = std::min(floor_us, us_per_module(floor));
        us = std::min(us, us_per_module([&] {
                          use(&memory);
                          const optics::Module module = optics::decode(memory);
                          use(&module);
                      }));
    }
    const optics::Module module = optics::decode(memory);
    const bool complete = module.trusted() && module.temperature.judgement != optics::Judgement::none;
    std::printf("%-36s floor %6.3f us  decode %6.3f us  ratio %.2f%s\n", what, floor_us, us, us / floor_us,
                complete ? "" : "  NOT DECODED");
    return complete && us <= max_ratio * floor_us && us <= max_us;
}

} // namespace

int main()
{
    const optics::Memory sfp{.a0 = a0, .a2 = a2};
    const optics::Memory qsfp{.lower = lower, .page00 = page00, .page03 = page03};
    const auto sfp_floor = [] {
        Plain plain;
        use(a0);
        plain_sfp(plain, a0, a2);
        use(&plain);
    };
    fill_sfp(false);
    bool good = measure("SFP, internal calibration", sfp, sfp_floor);
    fill_sfp(true);
    good = measure("SFP, external calibration", sfp, sfp_floor) && good;
    fill_qsfp();
    good = measure("QSFP, four lanes", qsfp,
                   [] {
                       Plain plain;
                       use(lower);
                       plain_qsfp(plain, lower, page00, page03);
                       use(&plain);
                   }) &&
           good;
    return good ? 0 : 1;
}
