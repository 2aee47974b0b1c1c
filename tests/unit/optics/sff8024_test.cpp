// SPDX-License-Identifier: GPL-2.0-or-later
// Names of codes at the edges of the standard's tables, where one too many or too few shows.
#include "optics/sff8024.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace {

using optics::Family;

TEST(Sff8024, identifiers_end_with_an_sfp_that_has_cmis)
{
    EXPECT_EQ(optics::identifier_name(0x00), "unknown");
    EXPECT_EQ(optics::identifier_name(0x20), "SFP+ with CMIS");
    EXPECT_EQ(optics::identifier_name(0x21), "reserved");
    EXPECT_EQ(optics::identifier_name(0x7f), "reserved");
    EXPECT_EQ(optics::identifier_name(0x80), "vendor specific");
    EXPECT_EQ(optics::layout_of(0x20), optics::Layout::other);
    EXPECT_EQ(optics::layout_of(0x21), optics::Layout::reserved);
}

TEST(Sff8024, connectors_stand_in_two_blocks)
{
    const std::pair<std::uint8_t, const char *> names[] = {
        {0x00, "unknown"},  {0x07, "LC"},       {0x0d, "MPO 2x16"}, {0x0e, "reserved"},
        {0x1f, "reserved"}, {0x20, "HSSDC II"}, {0x22, "RJ45"},     {0x23, "No separable connector"},
        {0x28, "MPO 1x16"}, {0x29, "reserved"}, {0x7f, "reserved"}, {0x80, "vendor specific"},
    };
    for (const auto &[code, name] : names)
        EXPECT_EQ(optics::connector_name(code), name) << +code;
}

TEST(Sff8024, encodings_depend_on_the_kind_of_module)
{
    for (const Family family : {Family::sff8472, Family::sff8636}) {
        EXPECT_EQ(optics::encoding_name(0x00, family), "unspecified");
        EXPECT_EQ(optics::encoding_name(0x08, family), "PAM4");
        EXPECT_EQ(optics::encoding_name(0x09, family), "reserved");
    }
    EXPECT_EQ(optics::encoding_name(0x04, Family::sff8472), "Manchester");
    EXPECT_EQ(optics::encoding_name(0x06, Family::sff8636), "Manchester");
}

TEST(Sff8024, extended_compliance_has_gaps)
{
    const std::pair<std::uint8_t, const char *> names[] = {
        {0x00, "unspecified"},  {0x0a, "reserved"},       {0x10, "40GBASE-ER4"},
        {0x35, "100G-ER1-40"},  {0x36, "reserved"},       {0x3f, "reserved"},
        {0x43, "200GBASE-FR4"}, {0x49, "400GBASE-LR4-6"}, {0x4a, "reserved"},
    };
    for (const auto &[code, name] : names)
        EXPECT_EQ(optics::ext_compliance_name(code), name) << +code;
    EXPECT_EQ(optics::ext_compliance_name(0x40), "50GBASE-CR, 100GBASE-CR2 or 200GBASE-CR4");
}

} // namespace
