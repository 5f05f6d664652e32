// Administering profiles as a client of MAPI does: through the published interfaces, and its memory given back.
#pragma once

#include "localmapi/profile/Administration.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/profile/ProfileTestSupport.h"
#include "tests/localmapi/support/LeakCheck.h"

#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::profile::testing {

// An 8-bit text where the declarations say LPTSTR; the flags of the call say that it is one.
inline LPTSTR Narrow(const char* text) {
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text));
}
inline LPTSTR WideText(const CStringW& text) {
    return reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(text.c_str()));
}

// Tags as a call takes them.
class TagArray {
public:
    TagArray(std::initializer_list<ULONG> tags) : m_words{static_cast<ULONG>(tags.size())} {
        m_words.insert(m_words.end(), tags);
    }
    SPropTagArray* Get() { return reinterpret_cast<SPropTagArray*>(m_words.data()); }

private:
    std::vector<ULONG> m_words;
};

// Rows that a table gave, freed at the end.
class Rows {
public:
    explicit Rows(SRowSet* rows) : m_rows(rows) {}
    Rows(Rows&& other) noexcept : m_rows(std::exchange(other.m_rows, nullptr)) {}
    ~Rows() {
        for (ULONG i = 0; i < Count(); ++i) {
            FreeRoot(m_rows->aRow[i].lpProps);
        }
        FreeRoot(m_rows);
    }

    ULONG Count() const { return m_rows == nullptr ? 0 : m_rows->cRows; }
    const SPropValue& At(ULONG row, ULONG column) const { return m_rows->aRow[row].lpProps[column]; }

    std::string Text(ULONG row, ULONG column) const {
        const SPropValue& value = At(row, column);
        switch (PROP_TYPE(value.ulPropTag)) {
            case PT_UNICODE: return "w:" + Utf8(value.Value.lpszW);
            case PT_STRING8: return "a:" + std::string(value.Value.lpszA);
            default: return "?";
        }
    }
    MAPIUID Uid(ULONG row, ULONG column) const {
        MAPIUID uid{};
        const SPropValue& value = At(row, column);
        EXPECT_EQ(PROP_TYPE(value.ulPropTag), PT_BINARY);
        EXPECT_EQ(value.Value.bin.cb, sizeof(uid.ab));
        std::memcpy(uid.ab, value.Value.bin.lpb, sizeof(uid.ab));
        return uid;
    }

private:
    SRowSet* m_rows;
};

inline SRestriction FullText(SPropValue& value) {
    SRestriction restriction{};
    restriction.rt = RES_CONTENT;
    restriction.res.resContent = {FL_FULLSTRING, value.ulPropTag, &value};
    return restriction;
}

// All rows of a table.
inline Rows QueryAll(IMAPITable* table, std::initializer_list<ULONG> columns, SRestriction* restriction = nullptr) {
    TagArray tags(columns);
    SRowSet* rows = nullptr;
    EXPECT_EQ(table->SetColumns(tags.Get(), 0), S_OK);
    if (restriction != nullptr) {
        EXPECT_EQ(table->Restrict(restriction, 0), S_OK);
    }
    EXPECT_EQ(table->QueryRows(4000, 0, &rows), S_OK);
    return Rows(rows);
}

template <class Admin>
std::string LastErrorOf(Admin& admin, HRESULT result) {
    MAPIERROR* error = nullptr;
    EXPECT_EQ(admin.GetLastError(result, 0, &error), S_OK);
    const std::string text = error == nullptr ? "" : reinterpret_cast<const char*>(error->lpszError);
    FreeRoot(error);
    return text;
}

class AdminTest : public localmapi::testing::LeakCheck {
protected:
    ComPtr<IProfAdmin> Profiles() { return MakeProfileAdmin(m_folder.storage); }

    // The services of a profile that is made when it is not there.
    ComPtr<IMsgServiceAdmin> Services(const char* profile = "p") {
        const ComPtr<IProfAdmin> profiles = Profiles();
        if (!m_folder.storage.Load(Wide(profile))) {
            EXPECT_EQ(profiles->CreateProfile(Narrow(profile), nullptr, 0, 0), S_OK);
        }
        ComPtr<IMsgServiceAdmin> services;
        EXPECT_EQ(profiles->AdminServices(Narrow(profile), nullptr, 0, 0, services.Receive()), S_OK);
        return services;
    }

    static Rows ServiceRows(IMsgServiceAdmin& services, SRestriction* restriction = nullptr) {
        ComPtr<IMAPITable> table;
        EXPECT_EQ(services.GetMsgServiceTable(0, table.Receive()), S_OK);
        return QueryAll(table.Get(), {PR_SERVICE_NAME_W, PR_SERVICE_UID, PR_DISPLAY_NAME_W}, restriction);
    }

    // The services whose name is exactly "MSEMS".
    Rows ExchangeRows(IMsgServiceAdmin& services) {
        Arena memory;
        SPropValue name = WideValue(PR_SERVICE_NAME_W, "MSEMS"_w, memory);
        SRestriction restriction = FullText(name);
        return ServiceRows(services, &restriction);
    }

    MAPIUID AddService(IMsgServiceAdmin& services, const char* name) {
        EXPECT_EQ(services.CreateMsgService(Narrow(name), Narrow("shown"), 0, 0), S_OK);
        const Rows rows = ServiceRows(services);
        return rows.Uid(rows.Count() - 1, 1);
    }

    Profile Loaded(const char* name = "p") {
        auto profile = m_folder.storage.Load(Wide(name));
        EXPECT_TRUE(profile) << profile.Failure().text;
        return profile ? *std::move(profile) : Profile({});
    }

    StorageFolder m_folder;
};

}  // namespace localmapi::profile::testing
