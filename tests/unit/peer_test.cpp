// SPDX-License-Identifier: GPL-2.0-or-later
// The peers: the zebra client and the port numbers.
#include "frr.hpp"
#include "port_map.hpp"
#include "privileges.hpp"
#include "state.hpp"

#include "tq_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

int diag_zclient_init(struct thread_master *master);
int diag_port_init(void);

namespace {

std::vector<std::string> calls;
int port_info_result;
struct zclient zebra_client;
struct thread_master *const loop = reinterpret_cast<struct thread_master *>(&calls);

} // namespace

extern "C" {
struct zclient *zclient_new(struct thread_master *master, struct zclient_options *options,
                            zclient_handler *const *, size_t handlers)
{
    EXPECT_EQ(master, loop);
    EXPECT_EQ(options, &zclient_options_default);
    EXPECT_EQ(handlers, 0u);
    calls.emplace_back("zclient_new");
    return &zebra_client;
}
void zclient_init(struct zclient *zebra, int type, unsigned short instance, struct zebra_privs_t *privs)
{
    EXPECT_EQ(zebra, &zebra_client);
    EXPECT_EQ(privs, &diagd_privs);
    calls.push_back("zclient_init " + std::to_string(type) + " " + std::to_string(instance));
}
int database_dev_get_port_info(tq_database_t *, tq_port_info_t *record)
{
    for (std::uint8_t i = 0; i < 16; ++i)
        record->b[i] = i;
    return port_info_result;
}
}

class Peer : public testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        port_info_result = 0;
        diag_port = {};
    }
};

TEST_F(Peer, the_zebra_client_has_route_type_32)
{
    EXPECT_EQ(diag_zclient_init(loop), 0);
    EXPECT_THAT(calls, ElementsAre("zclient_new", "zclient_init 32 0"));
}

TEST_F(Peer, port_numbers_come_in_the_daemons_order)
{
    diag_port_init();
    EXPECT_THAT(diag_port, ElementsAre(10, 11, 12, 13, 3, 4, 1, 0));
}

TEST_F(Peer, without_port_record_the_port_numbers_stay_zero)
{
    port_info_result = -1;
    testing::internal::CaptureStdout();
    diag_port_init();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "diagd port init failed\r\n");
    EXPECT_THAT(diag_port, testing::Each(0));
}
