// SPDX-License-Identifier: GPL-2.0-or-later
#include "base/whole_file.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/resource.h>

namespace {

namespace fs = std::filesystem;

class WholeFile : public testing::Test {
protected:
    WholeFile()
    {
        std::string name = fs::temp_directory_path() / "whole-file.XXXXXX";
        folder_ = ::mkdtemp(name.data());
        path_ = folder_ / "file";
    }
    ~WholeFile() override { fs::remove_all(folder_); }

    std::string content() const
    {
        std::ifstream in(path_);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    auto files() const { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); }

    fs::path folder_;
    fs::path path_;
};

// Files of this process end at so many bytes: what is beyond fails as on a full disk.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    SmallFiles(const SmallFiles &) = delete;
    SmallFiles &operator=(const SmallFiles &) = delete;

private:
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

TEST_F(WholeFile, holds_what_was_written)
{
    EXPECT_EQ(base::write_whole_file(path_, "one", base::Sync::yes), 0);
    EXPECT_EQ(content(), "one");
    EXPECT_EQ(base::write_whole_file(path_, "", base::Sync::no), 0);
    EXPECT_EQ(content(), "");
    EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, stays_as_it_was_when_the_new_content_does_not_fit)
{
    ASSERT_EQ(base::write_whole_file(path_, "before", base::Sync::yes), 0);
    {
        const SmallFiles limit(4096);
        EXPECT_EQ(base::write_whole_file(path_, std::string(4097, 'x'), base::Sync::yes), EFBIG);
    }
    EXPECT_EQ(content(), "before");
    EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, keeps_its_mode_and_is_written_through_a_link)
{
    const fs::path link = folder_ / "link";
    ASSERT_EQ(base::write_whole_file(path_, "before", base::Sync::yes), 0);
    fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink("file", link);
    EXPECT_EQ(base::write_whole_file(link, "after", base::Sync::yes), 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(content(), "after");
    EXPECT_EQ(fs::status(path_).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST_F(WholeFile, a_device_is_written_to_and_not_replaced)
{
    EXPECT_EQ(base::write_whole_file("/dev/full", "x", base::Sync::yes), ENOSPC);
    EXPECT_EQ(base::write_whole_file("/dev/null", "x", base::Sync::yes), 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(WholeFile, a_folder_that_is_not_there_is_told)
{
    EXPECT_EQ(base::write_whole_file(folder_ / "no" / "file", "x", base::Sync::yes), ENOENT);
}

} // namespace
