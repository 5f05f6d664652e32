// A mailbox file on disk, made by the tests' own writer.
#pragma once

#include "mapi/PropTags.h"
#include "tests/localmapi/profile/ProfileTestSupport.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::profile::testing {

class MailboxFile {
public:
    // A sound one, whose store has this name; without one when it is empty.
    MailboxFile(std::string_view fileName, std::string_view storeName) {
        using namespace localmapi::testing;
        StoreBuilder builder(kUnicode);
        std::vector<Property> properties = {{PR_RECORD_KEY, kStoreKey}};
        if (!storeName.empty()) {
            properties.push_back({PR_DISPLAY_NAME_W, Utf16(storeName)});
        }
        builder.replaced[0x21] = AddProperties(builder.image, properties);
        Write(fileName, builder.Build());
    }

    MailboxFile(std::string_view fileName, const Bytes& bytes) { Write(fileName, bytes); }

    const std::filesystem::path& Path() const { return m_path; }
    std::string Utf8Path() const { return Utf8(FromPath(m_path)); }

private:
    void Write(std::string_view fileName, const Bytes& bytes) {
        m_path = m_folder.Path() / ToPath(Wide(fileName));
        std::ofstream(m_path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_path;
};

}  // namespace localmapi::profile::testing
