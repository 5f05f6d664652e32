#include "provider/MAPIUtils.h"

#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/TaskMemory.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"
#include "provider/MapiHolders.h"
#include "provider/TextConversion.h"

#include <array>
#include <memory>
#include <utility>

namespace {

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

constexpr auto& gachHex = "0123456789ABCDEF"_w;

// 1970-01-01 as a FILETIME, and how many of its steps make a millisecond.
constexpr std::uint64_t kTicksTo1970 = 116444736000000000;
constexpr std::int64_t kTicksPerMillisecond = 10000;

// The value of a hexadecimal digit; above 15 for what is none. Unsigned, so that what lies before '0' is none either.
unsigned DigitValue(WCHAR unit) {
    const unsigned upper = unit >= 'a' && unit <= 'z' ? unit - ('a' - 'A') : unit;
    const unsigned decimal = upper - '0';
    return decimal <= 9 ? decimal : upper - ('A' - 10);
}

// Decodes pairs of digits; the caller has checked that `bytes` holds half as many bytes as `text` has characters.
bool DecodeHex(WideView text, BYTE* bytes) {
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const unsigned high = DigitValue(text[i]);
        const unsigned low = DigitValue(text[i + 1]);
        if (high > 15 || low > 15) {
            return false;
        }
        *bytes++ = static_cast<BYTE>((high << 4) | low);
    }
    return true;
}

struct ContainerClassRow {
    const WCHAR* containerClass;
    EVxFolderType type;
};

// Feeds hold messages and are indexed as mail.
constexpr auto& CCRSSFeeds = "IPF.Note.OutlookHomepage"_w;
constexpr auto& CCNewsFeed = "IPF.Note.SocialConnector.FeedItems"_w;

constexpr auto kContainerClasses = std::to_array<ContainerClassRow>({
    {"IPF.Note"_w, eVxFolderEmail},
    {"IPF.Contact"_w, eVxFolderContact},
    {"IPF.Appointment"_w, eVxFolderCalendar},
    {"IPF.Task"_w, eVxFolderTask},
    {"IPF.StickyNote"_w, eVxFolderNote},
    {CCRSSFeeds, eVxFolderEmail},
    {CCNewsFeed, eVxFolderEmail},
    {"IPF.Journal"_w, eVxFolderIgnored},
    {"Outlook.Reminder"_w, eVxFolderIgnored},
    {"IPF.Configuration"_w, eVxFolderIgnored},
});

// One text of a MAPIERROR, which is 8-bit text since the error was asked for without MAPI_UNICODE.
void LogErrorText(const WCHAR* format, LPCTSTR text) {
    if (text == nullptr) {
        return;
    }
    WCHAR* converted = nullptr;
    if (SUCCEEDED(AnsiToUnicode(reinterpret_cast<const char*>(text), &converted, -1, CP_THREAD_ACP))) {
        const std::unique_ptr<WCHAR[]> owner(converted);
        VX_LOG('E') << Vx::LogMsg(format, converted);
    }
}

void LogErrorNumber(const WCHAR* format, ULONG number) {
    if (number != 0) {
        VX_LOG('E') << Vx::LogMsg(format, number);
    }
}

void LogMapiError(const MAPIERROR* error) {
    if (error == nullptr) {
        VX_LOG('E') << Vx::LogMsg("get last error did not return information"_w);
        return;
    }
    LogErrorText("component is %s "_w, error->lpszComponent);
    LogErrorText("error is %s "_w, error->lpszError);
    LogErrorNumber("context is %x "_w, error->ulContext);
    LogErrorNumber("low level error is %x "_w, error->ulLowLevelError);
    LogErrorNumber("version is %x "_w, error->ulVersion);
}

// Sessions and stores both have GetLastError, but no interface in common that has it.
template <typename Object>
void LogLastErrorOf(HRESULT hr, Object* object) {
    VxMapiFrBufPtr<MAPIERROR> error;
    const HRESULT asked = object->GetLastError(hr, 0, &error);
    LogMapiError(SUCCEEDED(asked) ? error.get() : nullptr);
}

}  // namespace

FILETIME CMapiUtil::FileTimeFromInt64(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return {static_cast<DWORD>(bits & 0xFFFFFFFF), static_cast<DWORD>(bits >> 32)};
}

std::int64_t CMapiUtil::FromFileTimeToInt64(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(FileTimeTicks(time));
}

std::int64_t CMapiUtil::FromFileTimeToUnix(const FILETIME& time) noexcept {
    if (IsZero(time)) {
        return 0;
    }
    // Subtracted without sign: a FILETIME with its highest bit set is a garbage value, and must not overflow.
    return static_cast<std::int64_t>(FileTimeTicks(time) - kTicksTo1970) / kTicksPerMillisecond;
}

CStringW CMapiUtil::Bin2Hex(ULONG size, const BYTE* bytes) {
    CStringW text;
    if (bytes == nullptr) {
        return text;
    }
    text.reserve(std::size_t{size} * 2);
    for (ULONG i = 0; i < size; ++i) {
        text += gachHex[bytes[i] >> 4];
        text += gachHex[bytes[i] & 0xF];
    }
    return text;
}

bool CMapiUtil::Hex2Bin(WideView text, BYTE* bytes, ULONG* size, ULONG capacity) {
    const std::size_t needed = text.size() / 2;
    *size = static_cast<ULONG>(needed);
    if (text.size() % 2 != 0 || needed > capacity) {
        return false;
    }
    return DecodeHex(text, bytes);
}

bool CMapiUtil::Hex2Bin(WideView text, std::vector<BYTE>& bytes) {
    if (text.empty() || text.size() % 2 != 0) {
        return false;
    }
    bytes.resize(text.size() / 2);
    return DecodeHex(text, bytes.data());
}

CStringW CMapiUtil::Mapi2SimpleString(const SPropValue* prop) {
    if (prop == nullptr || PROP_TYPE(prop->ulPropTag) != PT_UNICODE || prop->Value.lpszW == nullptr) {
        return {};
    }
    return prop->Value.lpszW;
}

HRESULT CMapiUtil::AnsiToUnicode(const char* in, WCHAR** out, int length, UINT codePage) {
    return ::AnsiToUnicode(in, out, length, codePage);
}

HRESULT CMapiUtil::UnicodeToAnsi(const WCHAR* in, char** out, int length, UINT codePage) {
    return ::UnicodeToAnsi(in, out, length, codePage);
}

CStringW CMapiUtil::GetEID(IMAPIProp* prop) {
    static constexpr auto kTags = MakeTagArray(PR_ENTRYID);
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> value;
    if (FAILED(prop->GetProps(kTags, MAPI_UNICODE, &count, &value)) || count == 0 || value.get() == nullptr
        || value->ulPropTag != PR_ENTRYID) {
        return {};
    }
    CStringW id = Bin2Hex(value->Value.bin.cb, value->Value.bin.lpb);
    VX_LOG('D') << Vx::LogMsg("EID: %s"_w, id);
    return id;
}

bool CMapiUtil::GetServerAndShareName(WideView path, CStringW& server, CStringW& share, CStringW& rest) {
    constexpr WCHAR kBackslash = '\\';
    const std::size_t start = path.find("\\\\"_w);
    if (start == WideView::npos) {
        return false;
    }
    const std::size_t serverStart = start + 2;
    const std::size_t serverEnd = path.find(kBackslash, serverStart);
    if (serverEnd == WideView::npos) {
        return false;
    }
    const std::size_t shareEnd = path.find(kBackslash, serverEnd + 1);
    if (shareEnd == WideView::npos) {
        return false;
    }
    // Made first, then handed over: an output may be the text that `path` looks at.
    CStringW serverText(path.substr(serverStart, serverEnd - serverStart));
    CStringW shareText(path.substr(serverEnd + 1, shareEnd - serverEnd - 1));
    CStringW restText(path.substr(shareEnd));
    server = std::move(serverText);
    share = std::move(shareText);
    rest = std::move(restText);
    return true;
}

void CMapiUtil::FreeRowSet(SRowSet* rows) noexcept {
    if (rows != nullptr) {
        FreeProws(rows);
    }
}

void CMapiUtil::PrintErrorInformation(HRESULT hr, IMAPISession* session) {
    LogLastErrorOf(hr, session);
}

void CMapiUtil::PrintErrorInformation(HRESULT hr, IMsgStore* store) {
    LogLastErrorOf(hr, store);
}

HRESULT CMapiUtil::HrUnWrapMDB(IMsgStore* store, IMsgStore** unwrapped) {
    VxMapiPtr<IProxyStoreObject> proxy;
    HRESULT hr = store->QueryInterface(IID_IProxyStoreObject, reinterpret_cast<void**>(&proxy));
    if (FAILED(hr) || proxy.get() == nullptr) {
        return hr;
    }
    void* object = nullptr;
    hr = proxy->UnwrapNoRef(&object);
    if (SUCCEEDED(hr) && object != nullptr) {
        *unwrapped = static_cast<IMsgStore*>(object);
        (*unwrapped)->AddRef();
    }
    return hr;
}

EVxFolderType ParseContainerClass(WideView containerClass) {
    for (const ContainerClassRow& row : kContainerClasses) {
        if (containerClass == row.containerClass) {
            if (row.type == eVxFolderIgnored) {
                VX_LOG('D') << Vx::LogMsg("Ignored folder type '%s'"_w, containerClass);
            }
            return row.type;
        }
    }
    VX_LOG('E') << Vx::LogMsg("Unknown folder type '%s'"_w, containerClass);
    return eVxFolderUnknown;
}

void HrToError(HRESULT hr, WideView text, CStringW& message) {
    if (FAILED(hr)) {
        message += Vx::FormatString("Error 0x%x. Msg: "_w, hr);
        message += text;
    }
}

void FreeName(STATSTG& stat) noexcept {
    CoTaskMemFree(std::exchange(stat.pwcsName, nullptr));
}
