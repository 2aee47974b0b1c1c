// SPDX-License-Identifier: GPL-2.0-or-later
#include "base/json_writer.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(JsonWriter, objects_and_arrays_nest)
{
    base::JsonWriter json;
    json.begin_object();
    json.key("empty").begin_array();
    json.end_array();
    json.key("list").begin_array();
    json.value(1);
    json.value("two");
    json.begin_object();
    json.key("three").value(true);
    json.key("four").null();
    json.end_object();
    json.value(false);
    json.end_array();
    json.key("last").value(-5);
    json.end_object();
    EXPECT_EQ(json.text(), R"({"empty":[],"list":[1,"two",{"three":true,"four":null},false],"last":-5})");
}

TEST(JsonWriter, numbers_have_the_digits_of_a_measurement)
{
    base::JsonWriter json;
    json.begin_array();
    for (const double number : {0.1, 25.5, -1.0 / 256, 6361 * 1e-4, 1e-7, 0.0})
        json.value(number);
    json.value(std::numeric_limits<double>::infinity());
    json.value(std::numeric_limits<double>::quiet_NaN());
    json.end_array();
    EXPECT_EQ(json.text(), "[0.1,25.5,-0.00390625,0.6361,1e-07,0,null,null]");
}

TEST(JsonWriter, texts_of_any_bytes_stay_json)
{
    base::JsonWriter json;
    json.begin_object();
    json.key("a\"b").value("quote \" backslash \\ newline \n escape \x1b delete \x7f");
    json.key("utf8").value("\xc3\xa9 \xe2\x82\xac");
    json.key("none").value("\xff\xc3");
    json.end_object();
    EXPECT_EQ(json.text(), R"({"a\"b":"quote \" backslash \\ newline \u000a escape \u001b delete \u007f",)"
                           "\"utf8\":\"\xc3\xa9 \xe2\x82\xac\","
                           R"("none":"\ufffd\ufffd"})");
}

} // namespace
