// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/modes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using diagsh::way_to_node;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(WayToNode, starts_in_the_view_node)
{
    EXPECT_THAT(way_to_node("view"), IsEmpty());
}

TEST(WayToNode, reaches_configuration_through_enable)
{
    EXPECT_THAT(way_to_node("enable"), ElementsAre("enable"));
    EXPECT_THAT(way_to_node("config"), ElementsAre("enable", "configure terminal"));
}

TEST(WayToNode, enters_any_other_node_by_its_command_from_configuration)
{
    EXPECT_THAT(way_to_node("diagnose"), ElementsAre("enable", "configure terminal", "diagnose"));
    EXPECT_THAT(way_to_node("interface gpon 0/3"),
                ElementsAre("enable", "configure terminal", "interface gpon 0/3"));
}
