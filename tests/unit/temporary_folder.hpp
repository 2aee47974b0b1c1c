// SPDX-License-Identifier: GPL-2.0-or-later
// A folder that goes away with the test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        char name[] = "/tmp/diagd-unit-XXXXXX";
        const char *made = ::mkdtemp(name);
        path_ = made != nullptr ? made : "";
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] std::string file(const std::string &name) const { return path_ + "/" + name; }
    std::string write(const std::string &name, const std::string &content) const
    {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }

private:
    std::string path_;
};
