// What the tests of the object tree share: a scripted MAPI with a profile, a domain over it, items without content, and
// the lines of the log.
#pragma once

#include "mapi/Mapi.h"
#include "provider/Attachments/VxAttachment.h"
#include "provider/Item/VxItem.h"
#include "provider/ItemFactory.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"
#include "testing/scripted_mapi/CallText.h"
#include "testing/scripted_mapi/ScriptedMapi.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Provider ids of the kinds of stores.
inline constexpr MAPIUID kHotmailStore = {
    {0x97, 0x5C, 0x4F, 0xC3, 0x05, 0xEB, 0x4B, 0xBB, 0xB1, 0x99, 0x2A, 0x75, 0x70, 0xEC, 0x7C, 0xF9}};
inline constexpr MAPIUID kOracleStore = {
    {0x77, 0xD2, 0xDD, 0x08, 0x7F, 0x09, 0x43, 0xCA, 0x91, 0x4E, 0x54, 0xBD, 0x2C, 0x8B, 0xDA, 0x66}};
inline constexpr MAPIUID kSecondOracleStore = {
    {0x70, 0x8A, 0x22, 0x44, 0x7A, 0x57, 0x47, 0xAC, 0xA2, 0xFB, 0x75, 0xA7, 0x82, 0xCB, 0x31, 0x24}};
inline constexpr MAPIUID kImapStore = {
    {0xE9, 0x2F, 0xEB, 0x75, 0x96, 0x50, 0x44, 0x86, 0x83, 0xB8, 0x7D, 0xE5, 0x22, 0xAA, 0x49, 0x48}};

using Words = std::vector<std::string>;

// An attachment whose payload is a text of the test's.
class FakeAttachment final : public CVxAttachment {
public:
    FakeAttachment(CVxItem* parent, Words& events) : CVxAttachment(parent), m_events(events) {}

    bool OnConnect() override;
    void OnDisconnect() override;
    std::vector<unsigned char> GetBlobDataVector() override;
    const BYTE* GetBlobData() override { return nullptr; }
    LONG GetBlobDataSize() override { return 0; }
    bool LoadBody(const CMPParams&) override { return true; }
    void ClearBody() override {}

private:
    Words& m_events;
};

// An item that notes what is done with it and has what a test gives it.
class FakeItem final : public CVxItem {
public:
    FakeItem(CVxConnectable* parent, EVxItemType type, Words& events, int& live);
    ~FakeItem() override;

    bool OnConnect() override { return true; }
    void OnDisconnect() override {}
    bool MapiConnect() override;
    void MapiDisconnect() override;
    void Clear() override;
    CStringW GetBody() override;
    CVxConnectable* FindAttachment(const CStringW& id) override;
    void SetReadStatus(bool isRead) override { m_readStatus = isRead ? 1 : 0; }
    int GetReadStatus() override { return m_readStatus; }
    IMAPIProp* GetMapiPropObj() override { return nullptr; }
    std::int64_t GetDateTimeForDisplay() override { return 0; }
    CStringW GetUISubject() override { return {}; }
    bool GetTypeSpecificProperties() override { return true; }
    void GetProperty(ULONG, const SPropValue*) override {}

    std::map<CStringW, std::unique_ptr<CVxConnectable>> children;

private:
    Words& m_events;
    int& m_live;
    int m_readStatus = -1;  // nobody has told
};

class FakeItemFactory final : public CVxItemFactory {
public:
    std::unique_ptr<CVxItem> MakeItem(EVxItemType type, CVxOutlookFolder* folder) const override;
    std::unique_ptr<CVxItem> MakeAddressBookContact(CVxOutlookAddrFolder* folder, const CStringW& id,
                                                    CVxAddressBook* book) const override;
    IMessage* OpenMapiMessage(const CStringW& id, IMsgStore* store) const override;
    std::unique_ptr<CVxItem> CreateItem(CVxConnectable* parent, const CStringW& id, CVxOutlookFolder* folder,
                                        CVxOutlookStore* store, IMessage* message) const override;

    // Called for each item that is made.
    std::function<void(FakeItem&)> onMake;

    int Live() const { return m_live; }
    mutable Words events;  // what items were told, in order

private:
    std::unique_ptr<FakeItem> Make(CVxConnectable* parent, EVxItemType type) const;

    mutable int m_live = 0;
};

// A domain without parameters over a scripted MAPI. Whatever a test does, at its end everything has been released.
class TreeTest : public testing::Test {
protected:
    TreeTest();
    void TearDown() override;

    CVxDomain& Domain();

    // The profile object, of the domain's list.
    CVxOutlookProfile& Profile(std::string_view name = "Work");

    // The store with that id of the profile "Work".
    CVxOutlookStore& Store(std::string_view idHex);

    // The texts of the log's lines that contain one of these, in order.
    Words LogLines(std::initializer_list<std::string_view> parts) const;
    bool IsLogged(std::string_view text) const;

    // Begins a new stretch of the log.
    void ForgetLog() { m_log = std::make_unique<LogCapture>(); }

    scripted_mapi::ScriptedMapi mapi;
    FakeItemFactory items;
    std::unique_ptr<CVxDomain> domain;

private:
    std::unique_ptr<LogCapture> m_log = std::make_unique<LogCapture>();
};

// One way for an operation to fail, and what is to be seen of it.
struct FailureRow {
    const char* name;
    const char* call;    // the call that fails, as the script has it
    HRESULT result;      // what it gives; S_OK: a success without any output
    const char* logged;  // the line that tells of it
    int nth = 0;         // only the n-th such call; 0: all of them
};

void Order(scripted_mapi::Script& script, const FailureRow& row);
