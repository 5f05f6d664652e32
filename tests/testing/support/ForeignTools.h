// Programs of others that read mailbox files, run in a folder of the test's own, which is gone afterwards.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace mailbox_builder {

class ForeignTools : public testing::Test {
protected:
    void SetUp() override {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        m_folder = std::filesystem::path(testing::TempDir())
                   / (std::string(test.test_suite_name()) + "-" + std::string(test.name()));
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    const std::filesystem::path& Folder() const { return m_folder; }

    void EmptyFolder() const {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }

    static bool IsMissing(const std::string& program) {
        return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) != 0;
    }

    // All that the command says.
    std::string Run(const std::string& command) const {
        const int result =
            std::system(("cd '" + m_folder.string() + "' && " + command + " >said 2>&1 </dev/null").c_str());
        EXPECT_EQ(result, 0) << command;
        return ContentOf(m_folder / "said");
    }

    static std::string ContentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    // Whether what was said tells of something wrong.
    static bool IsComplaint(std::string said) {
        std::transform(said.begin(), said.end(), said.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        constexpr const char* kWords[] = {"unable",      "error",   "warning", "corrupt", "invalid",
                                          "unsupported", "missing", "failed",  "mismatch"};
        return std::any_of(std::begin(kWords), std::end(kWords),
                           [&](const char* word) { return said.find(word) != std::string::npos; });
    }

private:
    std::filesystem::path m_folder;
};

}  // namespace mailbox_builder
