// What the tests of items and attachments share: a scripted MAPI with one message in a folder, the provider's tree over
// it down to the item of that message, and a decoder of message files that a test can set.
#pragma once

#include "mapi/Mapi.h"
#include "mapi/NamedProps.h"
#include "provider/Item/VxItem.h"
#include "provider/Item/VxItemFactory.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"
#include "provider/mime/EmailDecoding.h"
#include "testing/scripted_mapi/ScriptedMapi.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using Words = std::vector<std::string>;

// A decoded e-mail of a test's making.
struct FakeEmail final : DecodedEmail {
    struct Part {
        std::string name;  // "?": cannot be read
        std::string bytes;
    };

    bool GetPlainTextBody(CStringW& text) override;
    bool GetHtmlBody(CStringW& text) override;
    LONG GetNumAttachments() override { return static_cast<LONG>(parts.size()); }
    bool GetAttachmentFilename(LONG index, CStringW& name) override;
    LONG GetAttachmentSize(LONG index) override;
    bool GetAttachmentData(LONG index, std::vector<BYTE>& bytes) override;
    bool SetAttachmentFilename(LONG index, const CStringW& name) override;
    bool SaveAttachedFile(LONG index, const CStringW& folder) override;

    std::string plain;
    std::string html;
    std::vector<Part> parts;
    bool canSave = true;
};

// Writes nothing and reads nothing by itself: a message that is copied into a file only notes it.
class ItemTest : public testing::Test {
protected:
    ItemTest();
    ~ItemTest() override;
    void TearDown() override;

    // Gives the message its class, which makes it an item of that kind.
    void SetClass(std::string_view messageClass);

    // The item of the message, from its folder; not connected.
    CVxItem& Item();

    // The same, connected with that format of the body; throws when it cannot be.
    CVxItem& Connected(TBodyFormat format = eBodyNone);
    template <typename Class>
    Class& ConnectedAs(std::string_view messageClass, TBodyFormat format = eBodyNone) {
        SetClass(messageClass);
        return dynamic_cast<Class&>(Connected(format));
    }

    // An attachment with a size, and data where they are given.
    std::shared_ptr<scripted_mapi::AttachmentModel> Attach(LONG method, std::string_view name,
                                                           std::string_view data = {});

    // Another message, embedded in one.
    static std::shared_ptr<scripted_mapi::MessageModel> Embed(scripted_mapi::MessageModel& outer, std::string_view name,
                                                              std::string_view messageClass);

    CVxDomain& Domain();
    CVxOutlookStore& Store();

    // The parameters of the host, from now on.
    CMPParams& Params() { return *Domain().getMPParams(); }

    // Makes message files writable: their message is one that takes everything.
    void AllowMessageFiles();

    // The texts of the log's lines that contain one of these, in order, with their levels.
    Words LogLines(std::initializer_list<std::string_view> parts) const;
    void ForgetLog() { m_log = std::make_unique<LogCapture>(); }

    scripted_mapi::ScriptedMapi mapi;
    std::shared_ptr<scripted_mapi::StoreModel> storeModel;
    std::shared_ptr<scripted_mapi::FolderModel> inbox;
    std::shared_ptr<scripted_mapi::MessageModel> message;
    std::unique_ptr<CVxDomain> domain;
    TempFolder folder;

    // What comes out of a message file, and the paths that were asked for.
    std::function<std::unique_ptr<DecodedEmail>()> decode;
    Words decodedPaths;

private:
    std::unique_ptr<LogCapture> m_log = std::make_unique<LogCapture>();
};

inline scripted_mapi::Bytes BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}
