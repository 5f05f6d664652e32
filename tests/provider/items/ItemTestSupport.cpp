#include "tests/provider/items/ItemTestSupport.h"

#include "platform/Paths.h"
#include "platform/Process.h"
#include "provider/MAPIUtils.h"

#include <algorithm>
#include <filesystem>

using namespace scripted_mapi;

namespace {

std::function<std::unique_ptr<DecodedEmail>(const std::string&)> g_decode;

}  // namespace

// In the place of the provider's own, which then stays out of the program.
std::unique_ptr<DecodedEmail> DecodeEmailFile(const std::string& path) {
    return g_decode ? g_decode(path) : nullptr;
}

bool FakeEmail::GetPlainTextBody(CStringW& text) {
    text = Wide(plain);
    return !plain.empty();
}

bool FakeEmail::GetHtmlBody(CStringW& text) {
    text = Wide(html);
    return !html.empty();
}

bool FakeEmail::GetAttachmentFilename(LONG index, CStringW& name) {
    name = Wide(parts.at(static_cast<std::size_t>(index)).name);
    return name != CStringW("?"_w);
}

LONG FakeEmail::GetAttachmentSize(LONG index) {
    return static_cast<LONG>(parts.at(static_cast<std::size_t>(index)).bytes.size());
}

bool FakeEmail::GetAttachmentData(LONG index, std::vector<BYTE>& bytes) {
    bytes = BytesOf(parts.at(static_cast<std::size_t>(index)).bytes);
    return bytes != BytesOf("unreadable");
}

bool FakeEmail::SetAttachmentFilename(LONG index, const CStringW& name) {
    parts.at(static_cast<std::size_t>(index)).name = Ascii(name);
    return true;
}

bool FakeEmail::SaveAttachedFile(LONG index, const CStringW& folder) {
    if (canSave) {
        const Part& part = parts.at(static_cast<std::size_t>(index));
        WriteFile(folder + Wide(part.name), part.bytes);
    }
    return canSave;
}

ItemTest::ItemTest() {
    auto profile = mapi.AddProfile("Work");
    storeModel = AddStore(*profile, "Mail", {0x0A}, kPersonalFoldersStore);
    inbox = AddFolder(*storeModel->root, "Inbox", "IPF.Note", {0xF1});
    message = AddMessage(*inbox, "IPM.Note", 116444736000000000 + 70000000, {0xE1});  // 7 s after 1970
    g_decode = [this](const std::string& path) {
        decodedPaths.push_back(path);
        return decode ? decode() : nullptr;
    };
}

ItemTest::~ItemTest() {
    g_decode = nullptr;
}

void ItemTest::TearDown() {
    domain.reset();
    EXPECT_EQ(mapi.Leaks(), "");
}

void ItemTest::SetClass(std::string_view messageClass) {
    message->properties.Set(Text(PR_MESSAGE_CLASS_W, messageClass));
}

CVxDomain& ItemTest::Domain() {
    if (domain == nullptr) {
        domain = std::make_unique<CVxDomain>(CStringW(), CStringW(), VxItems());
        domain->EnsureConnected();
    }
    return *domain;
}

CVxOutlookStore& ItemTest::Store() {
    CVxOutlookProfile* profile = Domain().GetProfile("Work"_w);
    CVxOutlookStore* store = profile != nullptr ? profile->GetStorebyId("0A"_w) : nullptr;
    if (store == nullptr) {
        throw std::runtime_error("no store");
    }
    return *store;
}

CVxItem& ItemTest::Item() {
    CVxOutlookFolder* opened = Store().GetFolder("F1"_w);
    CVxItem* item = opened != nullptr ? opened->FindItemByID("E1"_w) : nullptr;
    if (item == nullptr) {
        throw std::runtime_error("no item");
    }
    return *item;
}

CVxItem& ItemTest::Connected(TBodyFormat format) {
    CVxItem& item = Item();
    item.SetRequestBodyFormat(format);
    mapi.script.TakeCalls();
    if (!item.EnsureConnected()) {
        throw std::runtime_error("the item does not connect");
    }
    return item;
}

std::shared_ptr<AttachmentModel> ItemTest::Attach(LONG method, std::string_view name, std::string_view data) {
    auto attachment = AddAttachment(*message, method, name);
    attachment->properties.Set(Number(PR_ATTACH_SIZE, static_cast<LONG>(data.size())));
    attachment->properties.Set(Binary(PR_ATTACH_DATA_BIN, BytesOf(data)));
    return attachment;
}

std::shared_ptr<MessageModel> ItemTest::Embed(MessageModel& outer, std::string_view name,
                                              std::string_view messageClass) {
    auto attachment = AddAttachment(outer, ATTACH_EMBEDDED_MSG, name);
    attachment->properties.Set(Number(PR_ATTACH_SIZE, 1));
    attachment->embedded = std::make_shared<MessageModel>();
    attachment->embedded->properties = {Text(PR_MESSAGE_CLASS_W, messageClass), Time(PR_LAST_MODIFICATION_TIME, 1)};
    return attachment->embedded;
}

void ItemTest::AllowMessageFiles() {
    // Programs that run at once count on from different numbers, so that no two files have the same name.
    CMapiUtil::s_tempFilesCounter = static_cast<int>(GetCurrentProcessId() % 1'000'000 * 1000);
    mapi.openMessageOnStorage = [this](IStorage*, ULONG, IMessage** opened) {
        *opened = mapi.OpenMessage(std::make_shared<MessageModel>());
        return S_OK;
    };
    mapi.script.Fail("IMessage::CopyTo", S_OK);
}

Words ItemTest::LogLines(std::initializer_list<std::string_view> parts) const {
    Words wanted;
    for (const LogLine& line : m_log->Lines()) {
        if (std::any_of(parts.begin(), parts.end(),
                        [&](std::string_view part) { return line.text.find(part) != std::string::npos; })) {
            wanted.push_back(line.level + ": " + line.text);
        }
    }
    return wanted;
}
