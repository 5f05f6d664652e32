// What the tests of COutlookInstance share: an instance over a scripted MAPI with one mail, the host's side of a call,
// the operations as a table, and values and log lines as text.
#pragma once

#include "provider/OutlookInstance.h"
#include "provider/URIObjectData.h"
#include "tests/provider/items/ItemTestSupport.h"
#include "tests/provider/records/HostValue.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A value as text: "7" a number, "7L" a 64-bit one, "yes" or "no", "0.5d", a text as it is, "<0A0B>" bytes, "-" nothing.
// A record is its fields with bars between them.
std::string Show(const VARIANT& value);

// The records of a list; one line "no list" for any other value.
Words ShowList(const VARIANT& list);

// A field of a record.
std::string ShowField(const VARIANT& record, std::size_t field);

// What a host passes to an operation, and where the operation may write.
struct Host {
    explicit Host(COutlookInstance& used) : instance(used) { Reset(); }
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Frees what was given, and fills every place with something that no operation leaves there.
    void Reset();

    // The places that have been written to: "value empty; text=; counts=0,7,7; result=no", or less.
    std::string Changes() const;

    // URIs of what the names name, lent until the end of the host.
    VARIANT Uri(int type, const CStringW& path = CStringW());
    VARIANT Folder() { return Uri(eUriFolder); }
    VARIANT Item() { return Uri(eUriItem); }
    VARIANT Plain() { return Uri(eUriAttachment, plain); }
    VARIANT Embedded() { return Uri(eUriAttachment, embedded); }

    COutlookInstance& instance;
    CStringW profile = "Work"_w;
    CStringW store = "0A"_w;
    CStringW folder = "F1"_w;
    CStringW item = "E1"_w;
    CStringW plain = "0"_w;              // the attachment "a.txt"
    CStringW embedded = "VxEMBITEM1"_w;  // the mail in the mail
    CStringW file;                       // one that exists

    VARIANT value = {};
    CStringW text;
    LONG counts[3];
    bool result;

private:
    std::vector<VARIANT> m_uris;
};

// An operation, called for what the host's names name.
struct Operation {
    const char* name;
    HRESULT (*call)(Host& host);
    HRESULT early;             // without a domain; E_FAIL goes with a line that says so
    const char* earlyChanges;  // what it has written then
    const char* lateChanges;   // what it has written when it does not find what is named
    const char* names;         // what must be there: p(rofile), s(tore), f(older), i(tem), a(ttachment)
};
const std::vector<Operation>& Operations();

// The message "E1" in the folder "F1" of the store "0A" of "Work" has a body, a plain attachment and an embedded mail.
// Whatever a test does, at its end the instance is released, and nothing of MAPI's is left.
class FacadeTest : public ItemTest {
protected:
    FacadeTest();
    void TearDown() override;

    void Initialize(std::string_view params = "");

    // The facade's own lines since the last time this was asked: "ERROR GetItemData: Not initialized!".
    Words TakeLines();

    // The value that the last call gave, taken from the host.
    std::string TakeValue();
    Words TakeList();

    std::shared_ptr<scripted_mapi::MessageModel> inner;  // the embedded mail
    COutlookInstance instance;
    Host host{instance};

private:
    std::size_t m_logRead;
};
