// What vxhost says to arguments, and with which status it ends.
#include "tests/host/VxhostRun.h"

#include <fstream>

namespace vx_testing {
namespace {

using Arguments = VxhostRun;

TEST_F(Arguments, ThatMakeNoSenseAreTold) {
    const std::string mailbox = Utf8(SampleFile());
    const std::string none = Utf8(Folder() / "none.pst");
    struct Row {
        const char* what;
        std::vector<std::string> arguments;
        int status;
        const char* message;
    };
    const Row rows[] = {
        {"none at all", {}, 1, "--help"},
        {"an unknown command", {"frobnicate"}, 1, "no command frobnicate"},
        {"an unknown option", {"index", mailbox, "--frob"}, 1, "--frob"},
        {"nothing to read", {"index"}, 1, "nothing to read"},
        {"no time", {"index", mailbox, "--since", "yesterday"}, 1, "yesterday is no time"},
        {"no body form", {"index", mailbox, "--body", "pdf"}, 1, "--body"},
        {"no size", {"index", mailbox, "--max-body", "much"}, 1, "--max-body"},
        {"a negative size", {"index", mailbox, "--max-attachment=-1"}, 1, "--max-attachment"},
        {"no level", {"--log-level", "loud", "profiles"}, 1, "--log-level"},
        {"too few", {"items", mailbox}, 1, "too few"},
        {"too many", {"folders", mailbox, "/Inbox", "x"}, 1, "too many"},
        {"a profile and a file", {"stores", "--profile", "Mail", mailbox}, 1, "too many"},
        {"no profile command", {"profile"}, 1, "--help"},
        {"no file", {"index", none}, 2, "there is no such file"},
        {"no profile", {"folders", "--profile", "Nobody"}, 2, "no profile Nobody"},
        {"an output without a folder",
         {"index", mailbox, "-o", Utf8(Folder() / "none" / "out")},
         2,
         "there is no folder"},
        {"no folder", {"items", mailbox, "/Nowhere"}, 3, "no folder /Nowhere"},
        {"no folder to index", {"index", mailbox, "--folder", "/Nowhere"}, 3, "no folder /Nowhere"},
        {"no store", {"folders", mailbox, "--store", "Other"}, 3, "no store Other"},
        {"no item", {"show", mailbox, "/Inbox", "00"}, 3, "no such item"},
        {"no attachment", {"save", mailbox, "/Inbox", "00", "7"}, 3, "no such item"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const RunResult result = Run(row.arguments);
        EXPECT_EQ(result.status, row.status);
        EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
        EXPECT_TRUE(result.errors.starts_with("vxhost: ") && result.errors.find("\n  ") != std::string::npos)
            << "what happened, and what to do: " << result.errors;
        EXPECT_EQ(result.errors.find('\x1b'), std::string::npos) << "colour in a file";
    }
    EXPECT_TRUE(Profiles().empty());
}

TEST_F(Arguments, ThatAskAreAnswered) {
    const RunResult version = Run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("vxhost ")) << version.output;
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{},
                                               {"index"},
                                               {"profiles"},
                                               {"stores"},
                                               {"folders"},
                                               {"items"},
                                               {"count"},
                                               {"attachments"},
                                               {"special-folders"},
                                               {"show"},
                                               {"body"},
                                               {"save"},
                                               {"profile"},
                                               {"profile", "create"},
                                               {"profile", "delete"},
                                               {"profile", "add-pst"},
                                               {"profile", "add-exchange"},
                                               {"profile", "add-delegate"},
                                               {"profile", "remove-delegate"}}) {
        std::vector<std::string> arguments = command;
        arguments.push_back("--help");
        const RunResult help = Run(arguments);
        SCOPED_TRACE(help.output);
        EXPECT_EQ(help.status, 0);
        const std::string usage = "Usage: vxhost " + (command.empty() ? "COMMAND" : command.front());
        EXPECT_NE(help.output.find(usage), std::string::npos);
        EXPECT_NE(help.output.find("Example"), std::string::npos);
        EXPECT_TRUE(help.errors.empty());
    }
}

// Names outside of the code page that profiles keep paths in.
TEST_F(Arguments, MayNameFilesInAnyScript) {
    const std::string name = "\xD0\x9F\xD0\xBE\xD1\x87\xD1\x82\xD0\xB0 \xE6\x97\xA5\xE6\x9C\xAC.pst";
    const std::filesystem::path file = Folder() / std::filesystem::path(std::u8string(name.begin(), name.end()));
    std::filesystem::copy_file(SampleFile(), file);
    const std::string output = Utf8(Folder()) + "/\xD0\xB8\xD1\x82\xD0\xBE\xD0\xB3.ndjson";
    const RunResult result = Run({"index", Utf8(file), "-o", output});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.output.empty());
    const std::string text = ReadFile(std::filesystem::path(std::u8string(output.begin(), output.end())));
    EXPECT_EQ(CountKind(RunResult{0, text, {}}.Lines(), "store"), 1U);
}

TEST_F(Arguments, NameAFolderForTheLog) {
    const std::filesystem::path logs = Folder() / "a" / "b";
    const RunResult result = Run({"stores", Utf8(SampleFile()), "--log-dir", Utf8(logs), "--log-level", "Verbose"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(ReadFile(logs / "logs" / "vxhost.log").find("Log level Verbose"), std::string::npos);
    EXPECT_EQ(FilesOf(logs), std::vector<std::string>{"logs"});
}

}  // namespace
}  // namespace vx_testing
