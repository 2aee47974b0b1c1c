// SPDX-License-Identifier: GPL-2.0-or-later
// Module memories byte by byte, as the standards lay them out.  Byte numbers are written out here and in the
// tests: they are what is tested.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "optics/decode.hpp"

template <std::size_t size, std::size_t first>
class MemoryPart {
public:
    MemoryPart &set(std::size_t byte, std::initializer_list<unsigned> values)
    {
        for (const unsigned value : values)
            bytes.at(byte++ - first) = static_cast<std::uint8_t>(value);
        return *this;
    }
    MemoryPart &word(std::size_t byte, std::initializer_list<int> values)
    {
        for (const int value : values) {
            set(byte, {static_cast<unsigned>(value) >> 8U & 0xffU, static_cast<unsigned>(value) & 0xffU});
            byte += 2;
        }
        return *this;
    }
    MemoryPart &text(std::size_t byte, std::size_t length, std::string_view value)
    {
        for (std::size_t i = 0; i < length; ++i)
            set(byte + i, {i < value.size() ? static_cast<unsigned char>(value[i]) : 0x20U});
        return *this;
    }
    // The low byte of the sum of a range, inclusive.
    MemoryPart &sum(std::size_t from, std::size_t to, std::size_t code)
    {
        unsigned total = 0;
        for (std::size_t i = from; i <= to; ++i)
            total += bytes.at(i - first);
        return set(code, {total & 0xffU});
    }

    std::array<std::uint8_t, size> bytes{};
};

// SFP with diagnostics, internally calibrated: 1310 nm, 10 km, 10.3 GBd.
struct Sfp {
    Sfp()
    {
        a0.set(0, {0x03, 0x04, 0x07, 0x20}).set(11, {0x06, 103, 0x00, 10, 100});
        a0.text(20, 16, "ACME OPTICS")
            .set(37, {0x00, 0x90, 0x65})
            .text(40, 16, "AC-10G-LR")
            .text(56, 4, "B2");
        a0.word(60, {1310}).set(64, {0x00, 0x1a}).text(68, 16, "SN0001").text(84, 8, "210304");
        a0.set(92, {0x68, 0xf0, 0x08});
        a2.word(0, {90 * 256, -25 * 256, 85 * 256, -20 * 256}); // temperature
        a2.word(8, {36000, 30000, 35000, 30500});               // voltage
        a2.word(16, {45000, 1000, 40000, 1500});                // bias
        a2.word(24, {17783, 1995, 14125, 2512});                // transmitted power
        a2.word(32, {12589, 251, 11220, 316});                  // received power
        a2.word(96, {0x1980, 32545, 13936, 6361, 5518});
    }
    // Writes the check codes of what is there now.
    Sfp &finish()
    {
        a0.sum(0, 62, 63).sum(64, 94, 95);
        a2.sum(0, 94, 95);
        return *this;
    }
    optics::Module decode()
    {
        finish();
        return decode_as_is();
    }
    [[nodiscard]] optics::Module decode_as_is() const
    {
        return optics::decode({.a0 = a0.bytes, .a2 = a2.bytes});
    }

    MemoryPart<256, 0> a0, a2;
};

// QSFP28 with everything that SFF-8636 measures.
struct Qsfp {
    Qsfp()
    {
        lower.set(0, {0x11, 0x08, 0x00}).word(22, {0x1e80}).word(26, {32900});
        lower.word(34, {4643, 9012, 4913, 4626})
            .word(42, {5140, 4369, 8738, 13107})
            .word(50, {16705, 16962, 17219, 17476});
        page00.set(128, {0x11, 0xcc, 0x07, 0x80}).set(139, {0x05, 255, 0x00, 10}).set(147, {0x40});
        page00.text(148, 16, "ACME OPTICS")
            .set(165, {0x00, 0x90, 0x65})
            .text(168, 16, "AC-100G-LR4")
            .text(184, 2, "A1");
        page00.word(186, {26200, 1300}).set(192, {0x03}).text(196, 16, "SN0002").text(212, 8, "210304");
        page00.set(220, {0x3c}).set(222, {103});
        page03.word(128, {75 * 256, -5 * 256, 70 * 256, 0}).word(144, {36300, 29700, 34650, 31349});
        page03.word(176, {21878, 446, 17378, 1122})
            .word(184, {20000, 250, 19000, 500})
            .word(192, {22387, 1000, 19953, 1259});
    }
    Qsfp &finish()
    {
        page00.sum(128, 190, 191).sum(192, 222, 223);
        return *this;
    }
    optics::Module decode()
    {
        finish();
        return decode_as_is();
    }
    [[nodiscard]] optics::Module decode_as_is() const
    {
        return optics::decode({.lower = lower.bytes, .page00 = page00.bytes, .page03 = page03.bytes});
    }

    MemoryPart<128, 0> lower;
    MemoryPart<128, 128> page00, page03;
};
