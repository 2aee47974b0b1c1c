// SPDX-License-Identifier: GPL-2.0-or-later
// Which log servers get an alarm, and what is said when one does not.
#include "platform/alarms/alarm.hpp"
#include "tests/unit/platform/database_getters_double.hpp"
#include "tests/unit/platform/log_target.hpp"
#include "tests/unit/platform/sinks/loopback.hpp"
#include "tq_errno.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

namespace {

class AlarmRemote : public testing::Test {
protected:
    void SetUp() override
    {
        database_double = {};
        send(); // forgets what earlier tests left
        LogTarget::lines.clear();
    }

    int send(const char *message = "x")
    {
        tq::Alarm alarm{0, 4, {}, message};
        alarm.db = &database;
        return tq::remote_alarm(alarm);
    }
    void configure()
    {
        database_double.ipv4 = {1, "127.0.0.1", v4.port};
        database_double.ipv6 = {1, "::1", v6.port};
    }

    tq_database_t database{};
    const Listener v4{AF_INET}, v6{AF_INET6};
    LogTarget target;
};

} // namespace

TEST_F(AlarmRemote, both_servers_get_the_same_message)
{
    configure();
    EXPECT_EQ(send("hello"), 0);
    const std::string message = v4.receive();
    EXPECT_THAT(message, StartsWith("<187>1 "));
    EXPECT_THAT(message, EndsWith("] hello"));
    EXPECT_EQ(v6.receive(), message);
    EXPECT_THAT(LogTarget::lines, IsEmpty());
}

TEST_F(AlarmRemote, a_server_needs_its_switch_its_address_and_its_port)
{
    for (const ServerDouble &lacking :
         {ServerDouble{-1, "127.0.0.1", v4.port}, ServerDouble{0, "127.0.0.1", v4.port},
          ServerDouble{1, "", v4.port}, ServerDouble{1, "127.0.0.1", -1}, ServerDouble{1, "127.0.0.1", 0}}) {
        configure();
        database_double.ipv4 = lacking;
        EXPECT_EQ(send(), 0);
        v6.receive();
        EXPECT_FALSE(v4.has_more());
    }
    EXPECT_THAT(LogTarget::lines, IsEmpty());
}

TEST_F(AlarmRemote, without_a_database_nothing_is_sent)
{
    EXPECT_EQ(tq::remote_alarm(tq::Alarm{0, 4, {}, "x"}), 0);
}

TEST_F(AlarmRemote, a_database_that_fails_is_an_error_said_once)
{
    configure();
    database_double.server_result = TQ_ERR_NO_DB;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(send(), TQ_ERR_NO_DB);
    EXPECT_THAT(LogTarget::lines,
                ElementsAre(Pair(LOG_WARNING, EndsWith("to the IPv4 log server: Database not reachable")),
                            Pair(LOG_WARNING, EndsWith("to the IPv6 log server: Database not reachable"))));
    database_double.server_result = 0;
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(LogTarget::lines.size(), 4u);
}

TEST_F(AlarmRemote, one_server_that_fails_keeps_the_other)
{
    configure();
    database_double.ipv4.address = "255.255.255.255"; // broadcast is refused
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(send(), TQ_ERR_PEER);
        EXPECT_THAT(v6.receive(), EndsWith("] x"));
    }
    const std::string server = "log server 255.255.255.255 port " + std::to_string(v4.port);
    EXPECT_THAT(LogTarget::lines, ElementsAre(Pair(LOG_WARNING, EndsWith("alarms do not get out to " +
                                                                         server + ": Permission denied"))));
    configure();
    EXPECT_EQ(send(), 0);
    ASSERT_EQ(LogTarget::lines.size(), 2u);
    EXPECT_EQ(LogTarget::lines[1].first, LOG_NOTICE);
    EXPECT_THAT(LogTarget::lines[1].second, EndsWith("alarms get out to log server 127.0.0.1 port " +
                                                     std::to_string(v4.port) + " again"));
}

TEST_F(AlarmRemote, an_address_that_is_none_of_its_family_is_an_error)
{
    for (const char *address : {"::1", "localhost", "127.0.0.1.1"}) {
        configure();
        database_double.ipv4.address = address;
        EXPECT_EQ(send(), TQ_ERR_PEER) << address;
    }
    EXPECT_EQ(LogTarget::lines.size(), 3u);
}

TEST_F(AlarmRemote, a_server_switched_off_and_on_again_is_news_when_it_fails)
{
    database_double.ipv4 = {1, "255.255.255.255", 514};
    send();
    database_double.ipv4.enable = 0;
    send();
    database_double.ipv4.enable = 1;
    send();
    EXPECT_EQ(LogTarget::lines.size(), 2u);
}

TEST_F(AlarmRemote, threads_send_side_by_side_and_nothing_is_mixed)
{
    configure();
    constexpr int each = 50;
    std::vector<std::thread> threads;
    for (const char *text : {"one", "two", "three"})
        threads.emplace_back([this, text] {
            for (int i = 0; i < each; ++i)
                EXPECT_EQ(send(text), 0);
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const Listener *server : {&v4, &v6}) {
        std::map<std::string, int> seen;
        for (int i = 0; i < 3 * each; ++i) {
            const std::string message = server->receive();
            ++seen[message.substr(message.rfind(' ') + 1)];
        }
        EXPECT_THAT(seen, ElementsAre(Pair("one", each), Pair("three", each), Pair("two", each)));
    }
}
