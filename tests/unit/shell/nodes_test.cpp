// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/nodes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using diagsh::steps_between;
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

TEST(StepsBetween, leads_on_from_where_a_person_is)
{
    EXPECT_THAT(steps_between("view", "config"), ElementsAre("enable", "configure terminal"));
    EXPECT_THAT(steps_between("enable", "config"), ElementsAre("configure terminal"));
    EXPECT_THAT(steps_between("gpon", "diagnose"), ElementsAre("diagnose"));
    EXPECT_THAT(steps_between("config", "xgpon"), ElementsAre("interface xgpon 0/1"));
}

TEST(StepsBetween, goes_back_to_enable_with_end)
{
    EXPECT_THAT(steps_between("diagnose", "enable"), ElementsAre("end"));
}

TEST(StepsBetween, knows_no_way_into_nodes_that_nobody_enters)
{
    EXPECT_THAT(steps_between("view", "alarm-log"), IsEmpty());
}
