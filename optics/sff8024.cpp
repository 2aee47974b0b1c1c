// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/sff8024.hpp"

#include <array>

namespace optics {

namespace {

struct Kind {
    std::string_view name;
    Layout layout;
};

// SFF-8024 table 4-1, from 0x00 on.
constexpr std::array<Kind, 0x21> identifiers{{
    {"unknown", Layout::sff8472},
    {"GBIC", Layout::sff8472}, // SFF-8053 has the layout of A0h
    {"soldered", Layout::sff8472},
    {"SFP", Layout::sff8472},
    {"300 pin XBI", Layout::other},
    {"XENPAK", Layout::other},
    {"XFP", Layout::other},
    {"XFF", Layout::other},
    {"XFP-E", Layout::other},
    {"XPAK", Layout::other},
    {"X2", Layout::other},
    {"DWDM-SFP", Layout::sff8472},
    {"QSFP", Layout::sff8636},
    {"QSFP+", Layout::sff8636},
    {"CXP", Layout::other},
    {"HD 4X", Layout::other},
    {"HD 8X", Layout::other},
    {"QSFP28", Layout::sff8636},
    {"CXP2", Layout::other},
    {"CDFP style 1/2", Layout::other},
    {"HD 4X fanout", Layout::other},
    {"HD 8X fanout", Layout::other},
    {"CDFP style 3", Layout::other},
    {"microQSFP", Layout::other},
    {"QSFP-DD", Layout::cmis},
    {"OSFP", Layout::cmis},
    {"SFP-DD", Layout::other},
    {"DSFP", Layout::other},
    {"MiniLink x4", Layout::other},
    {"MiniLink x8", Layout::other},
    {"QSFP+ with CMIS", Layout::cmis},
    {"SFP-DD with CMIS", Layout::other},
    {"SFP+ with CMIS", Layout::other},
}};

// Table 4-3; the second block begins at 0x20.
constexpr std::array<std::string_view, 0x0e> connectors{
    "unknown",
    "SC",
    "FC style 1 copper",
    "FC style 2 copper",
    "BNC/TNC",
    "FC coax",
    "Fiber Jack",
    "LC",
    "MT-RJ",
    "MU",
    "SG",
    "Optical pigtail",
    "MPO 1x12",
    "MPO 2x16",
};
constexpr std::array<std::string_view, 9> more_connectors{
    "HSSDC II", "Copper pigtail", "RJ45",     "No separable connector", "MXC 2x16", "CS",
    "SN",       "MPO 2x12",       "MPO 1x16",
};

// Table 4-2.
constexpr std::array<std::string_view, 9> encodings_sff8472{
    "unspecified", "8B/10B", "4B/5B", "NRZ", "Manchester", "SONET Scrambled", "64B/66B", "256B/257B", "PAM4",
};
constexpr std::array<std::string_view, 9> encodings_sff8636{
    "unspecified", "8B/10B", "4B/5B", "NRZ", "SONET Scrambled", "64B/66B", "Manchester", "256B/257B", "PAM4",
};

// Table 4-4; gaps are reserved.
constexpr std::array<std::string_view, 0x36> ext_compliances{
    "unspecified",
    "100G AOC or 25GAUI C2M AOC, BER 5e-5",
    "100GBASE-SR4 or 25GBASE-SR",
    "100GBASE-LR4 or 25GBASE-LR",
    "100GBASE-ER4 or 25GBASE-ER",
    "100GBASE-SR10",
    "100G CWDM4",
    "100G PSM4",
    "100G ACC or 25GAUI C2M ACC, BER 5e-5",
    "obsolete",
    "",
    "100GBASE-CR4, 25GBASE-CR CA-25G-L or 50GBASE-CR2 with RS-FEC",
    "25GBASE-CR CA-25G-S or 50GBASE-CR2 with BASE-R FEC",
    "25GBASE-CR CA-25G-N or 50GBASE-CR2 without FEC",
    "10 Mb/s single pair Ethernet",
    "",
    "40GBASE-ER4",
    "4 x 10GBASE-SR",
    "40G PSM4",
    "G959.1 P1I1-2D1",
    "G959.1 P1S1-2D2",
    "G959.1 P1L1-2D2",
    "10GBASE-T with SFI",
    "100G CLR4",
    "100G AOC or 25GAUI C2M AOC, BER 1e-12",
    "100G ACC or 25GAUI C2M ACC, BER 1e-12",
    "100GE-DWDM2",
    "100G 1550 nm WDM",
    "10GBASE-T short reach",
    "5GBASE-T",
    "2.5GBASE-T",
    "40G SWDM4",
    "100G SWDM4",
    "100G PAM4 BiDi",
    "4WDM-10",
    "4WDM-20",
    "4WDM-40",
    "100GBASE-DR",
    "100G-FR or 100GBASE-FR1",
    "100G-LR or 100GBASE-LR1",
    "100GBASE-SR1",
    "100GBASE-SR1, 200GBASE-SR2 or 400GBASE-SR4",
    "100GBASE-FR1",
    "100GBASE-LR1",
    "100G-LR1-20 CAUI-4",
    "100G-ER1-30 CAUI-4",
    "100G-ER1-40 CAUI-4",
    "100G-LR1-20",
    "ACC, 50GAUI C2M, BER 1e-6",
    "AOC, 50GAUI C2M, BER 1e-6",
    "ACC, 50GAUI C2M, BER 2.6e-4",
    "AOC, 50GAUI C2M, BER 2.6e-4",
    "100G-ER1-30",
    "100G-ER1-40",
};
// From 0x40 on.
constexpr std::array<std::string_view, 10> more_ext_compliances{
    "50GBASE-CR, 100GBASE-CR2 or 200GBASE-CR4",
    "50GBASE-SR, 100GBASE-SR2 or 200GBASE-SR4",
    "50GBASE-FR or 200GBASE-DR4",
    "200GBASE-FR4",
    "200G 1550 nm PSM4",
    "50GBASE-LR",
    "200GBASE-LR4",
    "400GBASE-DR4",
    "400GBASE-FR4",
    "400GBASE-LR4-6",
};

std::string_view without_name(std::uint8_t code)
{
    return code >= 0x80 ? "vendor specific" : "reserved";
}

} // namespace

Layout layout_of(std::uint8_t identifier)
{
    return identifier < identifiers.size() ? identifiers[identifier].layout : Layout::reserved;
}

std::string_view identifier_name(std::uint8_t code)
{
    return code < identifiers.size() ? identifiers[code].name : without_name(code);
}

std::string_view encoding_name(std::uint8_t code, Family family)
{
    const auto &names = family == Family::sff8636 ? encodings_sff8636 : encodings_sff8472;
    return code < names.size() ? names[code] : "reserved";
}

std::string_view connector_name(std::uint8_t code)
{
    if (code < connectors.size())
        return connectors[code];
    if (code >= 0x20 && code - 0x20U < more_connectors.size())
        return more_connectors[code - 0x20U];
    return without_name(code);
}

std::string_view ext_compliance_name(std::uint8_t code)
{
    if (code >= 0x40 && code - 0x40U < more_ext_compliances.size())
        return more_ext_compliances[code - 0x40U];
    return code < ext_compliances.size() && !ext_compliances[code].empty() ? ext_compliances[code]
                                                                           : "reserved";
}

} // namespace optics
