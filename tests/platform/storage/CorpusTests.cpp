// Real message files, where a collection of them is at hand: $VX_CORPUS, else ../shared/corpus beside the sources.
#include "StorageTestSupport.h"

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace storage_test;

namespace {

std::vector<std::filesystem::path> Messages() {
    const char* const named = std::getenv("VX_CORPUS");
    const std::filesystem::path folder =
        named != nullptr ? std::filesystem::path(named) : std::filesystem::path(VX_SOURCE_DIR) / "../shared/corpus";
    std::vector<std::filesystem::path> files;
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, missing)) {
        if (entry.path().extension() == ".msg") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 65536> buffer = {};
    for (std::size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        output.append(buffer.data(), got);
    }
    pclose(pipe);
    return output;
}

struct Walked {
    std::uint64_t fileSize = 0;
    std::map<CStringW, std::uint64_t> sizes;  // of the streams, by path
    std::size_t impossible = 0;               // streams that claim more than the file has: some messages are damaged
};

// Walks everything; each stream must give as many bytes as it says.
void Walk(IStorage* storage, const CStringW& prefix, Walked& walked) {
    Held<IEnumSTATSTG> enumerator;
    ASSERT_EQ(storage->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    STATSTG stat = {};
    while (enumerator->Next(1, &stat, nullptr) == S_OK) {
        const CStringW name = stat.pwcsName;
        CoTaskMemFree(stat.pwcsName);
        SCOPED_TRACE(std::filesystem::path(name).string());
        if (stat.type == STGTY_STREAM && stat.cbSize.QuadPart > walked.fileSize) {
            ++walked.impossible;
            continue;
        }
        if (stat.type == STGTY_STREAM) {
            Bytes bytes;
            EXPECT_EQ(ReadStream(storage, name, bytes), S_OK);
            EXPECT_EQ(bytes.size(), stat.cbSize.QuadPart);
            walked.sizes[prefix + name] = bytes.size();
            continue;
        }
        Held<IStorage> inner;
        ASSERT_EQ(storage->OpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, inner.Put()), S_OK);
        Walk(inner.Get(), prefix + name + "/"_w, walked);
    }
}

TEST(Corpus, EveryMessageReadsWholeAndIsListedTheSameByGsf) {
    const std::vector<std::filesystem::path> files = Messages();
    if (files.empty()) {
        GTEST_SKIP() << "no message files: set VX_CORPUS to a folder that holds some";
    }
    std::size_t damaged = 0;
    const bool hasGsf = !OutputOf("command -v gsf").empty();
    for (std::size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(files[i].string());
        Held<IStorage> root;
        ASSERT_EQ(
            StgOpenStorage(TestFolder::Wide(files[i]).c_str(), nullptr, STGM_SHARE_DENY_WRITE, nullptr, 0, root.Put()),
            S_OK);
        Walked walked;
        walked.fileSize = std::filesystem::file_size(files[i]);
        Walk(root.Get(), {}, walked);
        EXPECT_GT(walked.sizes.size(), 0U);
        if (walked.impossible != 0) {
            ++damaged;
            continue;
        }
        if (hasGsf && i % 7 == 0) {
            const std::string listing = OutputOf("gsf list '" + files[i].string() + "'");
            std::size_t listed = 0;
            for (std::size_t at = 0; (at = listing.find("\nf ", at)) != std::string::npos; ++at) {
                ++listed;
            }
            EXPECT_EQ(listed, walked.sizes.size());
            for (const auto& [path, size] : walked.sizes) {
                char line[300] = {};
                std::snprintf(line, sizeof line, "f %32llu %s\n", static_cast<unsigned long long>(size),
                              std::filesystem::path(path).c_str());
                EXPECT_NE(listing.find(line), std::string::npos) << line;
            }
        }
        Held<ILockBytes> bytes;
        Held<IStorage> copy;
        ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put()), S_OK);
        ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kExclusive, 0, copy.Put()), S_OK);
        EXPECT_EQ(root->CopyTo(0, nullptr, nullptr, copy.Get()), S_OK);
        copy.Reset();
        ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, copy.Put()), S_OK);
        EXPECT_TRUE(Tree(copy.Get()) == Tree(root.Get()));
    }
    EXPECT_LE(damaged, 1 + files.size() / 20);
}

}  // namespace
