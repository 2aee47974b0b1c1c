// SPDX-License-Identifier: GPL-2.0-or-later
// Display texts of module code bytes: SFF-8024 (identifier, connector, encoding), SFF-8472 table 5-3 and
// SFF-8636 table 6-17 (Ethernet compliance).  The texts are what scripts of this product line compare with,
// odd ones included.
#pragma once

#include <array>
#include <cstdint>

namespace diagd {

struct SffText {
    std::int32_t code;
    const char *text;
};

// SFF-8024 table 4-1
inline constexpr std::array<SffText, 6> identifier_table{{
    {1, "GBIC"},
    {2, "SOLDERED"},
    {3, "SFP"},
    {12, "QSFP"},
    {13, "QSFP+"},
    {17, "QSFP28"},
}};

// SFF-8024 table 4-3
inline constexpr std::array<SffText, 22> connector_table{{
    {1, "SC (Subscriber Connector)"},
    {2, "Fibre Channel Style 1 copper connector"},
    {3, "Fibre Channel Style 2 copper connector"},
    {4, "BNC/TNC (Bayonet/Threaded Neill-Concelman)"},
    {5, "Fibre Channel coax headers"},
    {6, "Fiber Jack"},
    {7, "LC (Lucent Connector)"},
    {8, "MT-RJ (Mechanical Transfer \xE2\x80\x93 Registered Jack)"}, // U+2013 in UTF-8
    {9, "MU (Multiple Optical)"},
    {10, "SG"},
    {11, "Optical Pigtail"},
    {12, "MPO12 (1X12, Multifiber Parallel Optic)"},
    {13, "MPO16 (2X16)"},
    {32, "HSSDC II (High Speed Serial Data Connector)"},
    {33, "Copper pigtail"},
    {34, "RJ45"},
    {35, "No separable connector"},
    {36, "MXC 2X16"},
    {37, "CS optical connector"},
    {38, "SN (previously Mini CS) optical connector"},
    {39, "MPO12 (2X12)"},
    {40, "MPO16 (1X16)"},
}};

// SFF-8024 table 4-2; the two memory maps number codes 4 to 6 differently.
inline constexpr std::array<SffText, 9> sff8472_encoding_table{{
    {0, "Unspecified"},
    {1, "8B/10B"},
    {2, "4B/5B"},
    {3, "NRZ"},
    {4, "Manchester"},
    {5, "SONET Scrambled"},
    {6, "64B/66B"},
    {7, "256B/257B"},
    {8, "PAM4"},
}};

inline constexpr std::array<SffText, 9> sff8636_encoding_table{{
    {0, "Unspecified"},
    {1, "8B/10B"},
    {2, "4B/5B"},
    {3, "NRZ"},
    {4, "SONET Scrambled"},
    {5, "64B/66B"},
    {6, "Manchester"},
    {7, "256B/257B"},
    {8, "PAM4"},
}};

// A0h byte 3, upper nibble
inline constexpr std::array<SffText, 4> sfp_10g_table{{
    {0x10, "10GBASE-SR"},
    {0x20, "10GBASE-LR"},
    {0x40, "10GBASE-LRM"},
    {0x80, "10GBASE-ER"},
}};

// A0h byte 6
inline constexpr std::array<SffText, 8> sfp_1g_table{{
    {0x01, "1000BASE-SX"},
    {0x02, "1000BASE-LX"},
    {0x04, "1000BASE-CX"},
    {0x08, "1000BASE-T"},
    {0x10, "100BASE-LX"},
    {0x20, "100BASE-FX"},
    {0x40, "BASE-BX10"},
    {0x80, "BASE-PX"},
}};

// Used when A0h byte 36 is set
inline constexpr std::array<SffText, 3> sfp_25g_table{{
    {2, "25GBASE-SR"},
    {3, "25GBASE-LR"},
    {4, "25GBASE-LRM"},
}};

// SFF-8636 byte 131
inline constexpr std::array<SffText, 7> qsfp_compliance_table{{
    {0x01, "40G Active Cable (XLPPI)"},
    {0x02, "40GBASE-LR4"},
    {0x04, "40GBASE-SR4"},
    {0x08, "40GBASE-CR4"},
    {0x10, "10GBASE-SR"},
    {0x20, "10GBASE-LR"},
    {0x40, "10GBASE-LRM"},
}};

// SFF-8636 byte 192, SFF-8024 table 4-4
inline constexpr std::array<SffText, 9> qsfp_extended_table{{
    {1, "100G AOC"},
    {2, "100GBASE-SR4"},
    {3, "100GBASE-LR4"},
    {4, "100GBASE-ER4"},
    {6, "100G CWDM4)"}, // the stray parenthesis is part of the text
    {7, "100G PSM4 Parallel SMR"},
    {8, "100G ACC"},
    {11, "100GBASE-CR4"},
    {23, "100G CLR4"},
}};

} // namespace diagd
