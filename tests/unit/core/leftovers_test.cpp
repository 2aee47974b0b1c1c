// SPDX-License-Identifier: GPL-2.0-or-later
// What a killed daemon left is cleared, and nothing else.
#include "diagd/leftovers.hpp"
#include "tests/unit/temporary_folder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

constexpr uid_t daemon_user = 1;
constexpr uid_t stranger = 65534;

class Leftovers : public testing::Test {
protected:
    void put(const std::string &name, uid_t owner = daemon_user, mode_t mode = 0600)
    {
        const std::string path = folder_.write(name, "text\n");
        ASSERT_EQ(chown(path.c_str(), owner, owner), 0) << "takes root, as all of ./test does";
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
    void put_folder(const std::string &name, uid_t owner = daemon_user)
    {
        ASSERT_EQ(mkdir(folder_.file(name).c_str(), 0700), 0);
        ASSERT_EQ(chown(folder_.file(name).c_str(), owner, owner), 0);
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto &entry : fs::recursive_directory_iterator(folder_.path()))
            found.push_back(fs::relative(entry.path(), folder_.path()).string());
        return found;
    }

    TemporaryFolder folder_;
};

// A number that no process has: that of a child which has ended and was waited for is free for long.
std::string number_of_nobody()
{
    return "4194304"; // above the highest that Linux gives
}

} // namespace

TEST_F(Leftovers, configurations_that_were_being_written_go)
{
    put("diagd.conf.a8Xk2Q.tmp");
    put("diagd.conf.zzzzzz.tmp", daemon_user, 0640);
    put("diagd.conf.sav.tmp", 0, 0640);
    diagd::clear_unfinished_configuration(folder_.file("diagd.conf"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Leftovers, the_configuration_its_backup_and_what_an_operator_keeps_stay)
{
    put("diagd.conf", daemon_user, 0640);
    put("diagd.conf.sav", daemon_user, 0640);
    put("diagd.conf.before"); // as long as a random ending
    put("diagd.conf.before.old");
    put("diagd.conf.new.tmp");
    put("diagd.conf.2026-11");
    put("zebra.conf.a8Xk2Q.tmp");
    put_folder("diagd.conf.folder");
    const auto before = names();
    diagd::clear_unfinished_configuration(folder_.file("diagd.conf"));
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(before));
}

TEST_F(Leftovers, log_buffers_of_processes_that_have_ended_go)
{
    put_folder("diagd." + number_of_nobody());
    put("diagd." + number_of_nobody() + "/logbuf.17");
    put_folder("diagd.1"); // runs, but is another program by now
    diagd::clear_log_buffers(folder_.path(), "diagd");
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Leftovers, those_of_a_process_that_runs_of_other_programs_and_of_strangers_stay)
{
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    put_folder(name + "." + std::to_string(getpid()));
    put_folder("zebra." + number_of_nobody());
    put_folder(name + "." + number_of_nobody(), stranger);
    put_folder(name + ".d");
    const auto before = names();
    diagd::clear_log_buffers(folder_.path(), name);
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(before));
}

TEST_F(Leftovers, what_a_daemon_said_when_it_crashed_stays)
{
    put_folder("diagd." + number_of_nobody());
    put("diagd." + number_of_nobody() + "/crashlog");
    put("diagd." + number_of_nobody() + "/logbuf.17");
    diagd::clear_log_buffers(folder_.path(), "diagd");
    EXPECT_THAT(names(), UnorderedElementsAre("diagd." + number_of_nobody(),
                                              "diagd." + number_of_nobody() + "/crashlog"));
}

TEST_F(Leftovers, a_link_in_the_place_of_the_folder_goes_and_what_it_leads_to_stays)
{
    put_folder("theirs");
    put_folder("theirs/diagd." + number_of_nobody());
    const std::string link = folder_.file("buffers");
    ASSERT_EQ(symlink(folder_.file("theirs").c_str(), link.c_str()), 0);
    ASSERT_EQ(lchown(link.c_str(), stranger, stranger), 0);
    diagd::clear_log_buffers(link, "diagd");
    EXPECT_THAT(names(), UnorderedElementsAre("theirs", "theirs/diagd." + number_of_nobody()));
}
