// SPDX-License-Identifier: GPL-2.0-or-later
// A boardsim of its own for a test, and the hand on it.
#pragma once

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "sim/boardctl/control_client.hpp"
#include "sim/boardctl/file_verbs.hpp"
#include "tests/unit/temporary_folder.hpp"

class RunningBoard {
public:
    explicit RunningBoard(std::vector<std::string> more = {}) : more_(std::move(more)) { start(); }
    RunningBoard(const RunningBoard &) = delete;
    RunningBoard &operator=(const RunningBoard &) = delete;
    ~RunningBoard() { end(SIGTERM); }

    void start()
    {
        std::vector<std::string> words = {BOARDSIM,  "--pinned", "--board",
                                          OLT8_JSON, "--dir",    folder_.path()};
        words.insert(words.end(), more_.begin(), more_.end());
        std::vector<char *> argv;
        argv.reserve(words.size() + 1);
        for (std::string &word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        pid_ = ::fork();
        if (pid_ == 0) {
            // A test that crashes takes its board with it.
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::execv(BOARDSIM, argv.data());
            ::_exit(127);
        }
        if (pid_ < 0)
            throw std::runtime_error("boardsim does not start");
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (status({"log", "next"}) != 0) {
            if (std::chrono::steady_clock::now() > deadline)
                throw std::runtime_error("boardsim does not answer");
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    // Exit status of boardsim, or the signal that ended it plus 128.
    int end(int signal)
    {
        if (pid_ < 0)
            return -1;
        int status = 0;
        ::kill(pid_, signal);
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    void signal(int number) const { ::kill(pid_, number); }
    [[nodiscard]] const std::string &path() const { return folder_.path(); }

    // Runs a verb and returns its text without the last newline; a refusal is an exception with the text.
    std::string ask(std::vector<std::string> words) const
    {
        std::string text;
        if (sim::is_file_verb(words))
            words = sim::prepare_file_verb(words);
        const int result =
            sim::ask_board(path(), words, [&](bool, std::string_view piece) { text += piece; });
        if (!text.empty() && text.back() == '\n')
            text.pop_back();
        if (result != 0)
            throw std::runtime_error(text);
        return text;
    }
    int status(const std::vector<std::string> &words) const
    {
        return sim::ask_board(path(), words, [](bool, std::string_view) {});
    }
    // Text of the refusal.
    std::string refusal(const std::vector<std::string> &words) const
    {
        try {
            ask(words);
        } catch (const std::exception &error) {
            return error.what();
        }
        return "accepted";
    }

private:
    TemporaryFolder folder_;
    std::vector<std::string> more_;
    pid_t pid_ = -1;
};
