#include "tests/host/VxhostRun.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vx_testing {

std::vector<json> RunResult::Lines() const {
    std::vector<json> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(json::accept(line)) << line;
        lines.push_back(json::parse(line, nullptr, false));
    }
    EXPECT_TRUE(output.empty() || output.ends_with('\n'));
    return lines;
}

std::vector<json> OfKind(const std::vector<json>& lines, const std::string& kind) {
    std::vector<json> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const json& line) { return line.value("kind", "") == kind; });
    return found;
}

std::size_t CountKind(const std::vector<json>& lines, const std::string& kind) {
    return OfKind(lines, kind).size();
}

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::string ReadFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

VxhostRun::VxhostRun() : m_folder(m_home.Path() / "files") {
    std::filesystem::create_directories(m_folder);
    std::filesystem::create_directories(m_home.Path() / "printed");
}

Process VxhostRun::Start(const std::vector<std::string>& arguments, Process::Reader reader) const {
    const char* program = std::getenv("VX_TEST_VXHOST");
    EXPECT_NE(program, nullptr) << "CTest says where vxhost is";
    return Process(program == nullptr ? "vxhost" : program, arguments, m_home.Path() / "printed", reader);
}

RunResult VxhostRun::Run(const std::vector<std::string>& arguments) const {
    Process process = Start(arguments);
    RunResult result;
    result.status = process.Wait();
    result.output = process.Output();
    result.errors = process.Errors();
    return result;
}

std::vector<std::string> VxhostRun::FilesOf(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
        names.push_back(Utf8(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> VxhostRun::Profiles() const {
    std::vector<std::string> names = FilesOf(m_home.Path() / "profiles");
    std::erase(names, "lock");
    return names;
}

}  // namespace vx_testing
