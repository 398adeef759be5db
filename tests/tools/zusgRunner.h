#pragma once

// Runs the built zusg tool in a folder of the test's own and captures what it prints.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace zu::test {

struct RunResult {
    int status = -1;
    std::string out;
    std::string err;
};

inline ::testing::AssertionResult has(const std::string& text, const std::string& part)
{
    if (text.find(part) != std::string::npos)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

// The text as one word for the shell.
inline std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Each test gets a fresh folder under the temporary directory, removed afterwards; the tool
// runs with it as its temporary directory, so that the test sees whether a file is left
// behind. Tests skip when the tool is not built.
class ZusgRunner : public ::testing::Test {
protected:
    void SetUp() override
    {
#ifndef ZUSG_PATH
        GTEST_SKIP() << "zusg is not built";
#endif
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        mDir = std::filesystem::temp_directory_path()
             / ("zusgTest-" + std::to_string(::getpid()) + "-" + info->test_suite_name() + "-" + info->name());
        std::filesystem::remove_all(mDir);
        std::filesystem::create_directories(mDir);
    }
    void TearDown() override
    {
        if (!mDir.empty())
            std::filesystem::remove_all(mDir);
    }

    std::filesystem::path file(const std::string& name) const { return mDir / name; }

    // zusg with these arguments, from the shell, in the test's folder.
    RunResult run(const std::vector<std::string>& arguments) const
    {
        RunResult result;
#ifdef ZUSG_PATH
        std::string command = "cd " + quoted(mDir.string()) + " && TMPDIR=" + quoted(mDir.string()) + " "
                            + quoted(ZUSG_PATH);
        for (const std::string& argument : arguments)
            command.append(" ").append(quoted(argument));
        command.append(" >").append(quoted(file("stdout").string()));
        command.append(" 2>").append(quoted(file("stderr").string()));
        const int raw = std::system(command.c_str());
        result.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        result.out = readFile(file("stdout"));
        result.err = readFile(file("stderr"));
#else
        (void)arguments;
#endif
        return result;
    }

    // The files the test's folder holds besides the captured output.
    std::set<std::string> leftFiles() const
    {
        std::set<std::string> names;
        for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(mDir))
            if (entry.path().filename() != "stdout" && entry.path().filename() != "stderr")
                names.insert(entry.path().filename().string());
        return names;
    }

    std::filesystem::path mDir;
};

} // namespace zu::test
