#include "tests/provider/tree/TreeTestSupport.h"

#include "provider/StoreAndFolder/VxAddressBook.h"
#include "provider/StoreAndFolder/VxOutlookAddrFolder.h"

#include <algorithm>

using scripted_mapi::Ascii;
using scripted_mapi::Wide;

bool FakeAttachment::OnConnect() {
    m_events.push_back("attachment connects for " + std::to_string(m_requestBodyFormat));
    return true;
}

void FakeAttachment::OnDisconnect() {
    m_events.push_back("attachment disconnects");
}

std::vector<unsigned char> FakeAttachment::GetBlobDataVector() {
    return {'b', 'l', 'o', 'b'};
}

FakeItem::FakeItem(CVxConnectable* parent, EVxItemType type, Words& events, int& live)
    : CVxItem(parent), m_events(events), m_live(live) {
    m_type = type;
    ++m_live;
}

FakeItem::~FakeItem() {
    --m_live;
}

bool FakeItem::MapiConnect() {
    m_events.push_back("item opens");
    return true;
}

void FakeItem::MapiDisconnect() {
    m_events.push_back("item closes");
}

void FakeItem::Clear() {
    m_events.push_back("item clears");
}

CStringW FakeItem::GetBody() {
    return Wide("body in format " + std::to_string(m_requestBodyFormat));
}

CVxConnectable* FakeItem::FindAttachment(const CStringW& id) {
    const auto found = children.find(id);
    return found != children.end() ? found->second.get() : nullptr;
}

std::unique_ptr<FakeItem> FakeItemFactory::Make(CVxConnectable* parent, EVxItemType type) const {
    auto item = std::make_unique<FakeItem>(parent, type, events, m_live);
    if (onMake) {
        onMake(*item);
    }
    return item;
}

std::unique_ptr<CVxItem> FakeItemFactory::MakeItem(EVxItemType type, CVxOutlookFolder* folder) const {
    return type == eVxItemUnknown ? nullptr : Make(folder, type);
}

std::unique_ptr<CVxItem> FakeItemFactory::MakeAddressBookContact(CVxOutlookAddrFolder* folder, const CStringW& id,
                                                                 CVxAddressBook* book) const {
    auto contact = Make(folder, eVxItemContact);
    contact->SetEntryId(id);
    contact->SetFolder(folder);
    contact->SetStore(book);
    return contact;
}

IMessage* FakeItemFactory::OpenMapiMessage(const CStringW& id, IMsgStore* store) const {
    std::vector<BYTE> bytes;
    ULONG type = 0;
    IUnknown* message = nullptr;
    if (!CMapiUtil::Hex2Bin(id, bytes)
        || store->OpenEntry(static_cast<ULONG>(bytes.size()), reinterpret_cast<ENTRYID*>(bytes.data()), nullptr,
                            MAPI_BEST_ACCESS, &type, &message)
               != S_OK) {
        return nullptr;
    }
    return static_cast<IMessage*>(message);
}

std::unique_ptr<CVxItem> FakeItemFactory::CreateItem(CVxConnectable* parent, const CStringW& id,
                                                     CVxOutlookFolder* folder, CVxOutlookStore* store,
                                                     IMessage* message) const {
    if (message == nullptr) {
        return nullptr;
    }
    auto item = Make(parent, eVxItemEmail);
    item->SetEntryId(id);
    item->SetFolder(folder);
    item->SetStore(store);
    return item;
}

TreeTest::TreeTest() {
    mapi.AddProfile("Work");
}

void TreeTest::TearDown() {
    domain.reset();
    EXPECT_EQ(mapi.Leaks(), "");
    EXPECT_EQ(items.Live(), 0);
}

CVxDomain& TreeTest::Domain() {
    if (domain == nullptr) {
        domain = std::make_unique<CVxDomain>(CStringW(), CStringW(), items);
        domain->EnsureConnected();
    }
    return *domain;
}

CVxOutlookProfile& TreeTest::Profile(std::string_view name) {
    CVxOutlookProfile* profile = Domain().GetProfile(Wide(name));
    if (profile == nullptr) {
        throw std::runtime_error("no such profile");
    }
    return *profile;
}

CVxOutlookStore& TreeTest::Store(std::string_view idHex) {
    CVxOutlookStore* store = Profile().GetStorebyId(Wide(idHex));
    if (store == nullptr) {
        throw std::runtime_error("no such store");
    }
    return *store;
}

Words TreeTest::LogLines(std::initializer_list<std::string_view> parts) const {
    Words wanted;
    for (const LogLine& line : m_log->Lines()) {
        if (std::any_of(parts.begin(), parts.end(),
                        [&](std::string_view part) { return line.text.find(part) != std::string::npos; })) {
            wanted.push_back(line.level + ": " + line.text);
        }
    }
    return wanted;
}

bool TreeTest::IsLogged(std::string_view text) const {
    const Words lines = LogLines({text});
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.substr(line.find(": ") + 2) == text; });
}

void Order(scripted_mapi::Script& script, const FailureRow& row) {
    if (row.nth != 0) {
        script.FailNth(row.nth, row.call, row.result);
    } else {
        script.Fail(row.call, row.result);
    }
}
