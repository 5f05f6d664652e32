// vxhost run as people and scripts run it: arguments in, exit status and text out.
#pragma once

#include "testing/local_mapi/LocalMapi.h"
#include "tests/host/Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace vx_testing {

using nlohmann::json;

struct RunResult {
    int status = -1;
    std::string output;
    std::string errors;

    // The output as objects, one a line; a line that is none fails the test.
    std::vector<json> Lines() const;
};

// How many of the objects have that kind, and those.
std::size_t CountKind(const std::vector<json>& lines, const std::string& kind);
std::vector<json> OfKind(const std::vector<json>& lines, const std::string& kind);

std::string Utf8(const std::filesystem::path& path);
std::string ReadFile(const std::filesystem::path& file);

// Each test has a home of its own, for profiles and for its files. No run may leave anything in it.
class VxhostRun : public ::testing::Test {
protected:
    VxhostRun();

    RunResult Run(const std::vector<std::string>& arguments) const;
    Process Start(const std::vector<std::string>& arguments, Process::Reader reader = Process::Reader::Present) const;

    // The names of files of that folder, which need not exist; of the folder of profiles.
    static std::vector<std::string> FilesOf(const std::filesystem::path& folder);
    std::vector<std::string> Profiles() const;

    const std::filesystem::path& Folder() const { return m_folder; }

private:
    LocalMapiHome m_home;
    std::filesystem::path m_folder;
};

}  // namespace vx_testing
