#include "testing/scripted_mapi/ScriptedMapi.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "platform/TaskMemory.h"
#include "provider/ImportProcs.h"
#include "testing/scripted_mapi/AdminObjects.h"
#include "testing/scripted_mapi/PropObject.h"
#include "testing/scripted_mapi/SessionObjects.h"
#include "testing/scripted_mapi/StoreObjects.h"
#include "testing/scripted_mapi/Table.h"

namespace scripted_mapi {

namespace {

ScriptedMapi* g_mapi = nullptr;

}  // namespace

ScriptedMapi::ScriptedMapi()
    : m_context(std::make_shared<Context>()),
      script(m_context->script),
      names(m_context->names),
      profiles(m_context->profiles),
      m_blocksBefore(memory::LiveBlocks()),
      m_misusesBefore(memory::Misuses()) {
    g_mapi = this;
}

ScriptedMapi::~ScriptedMapi() {
    g_mapi = nullptr;
}

std::shared_ptr<ProfileModel> ScriptedMapi::AddProfile(std::string_view name) {
    auto profile = std::make_shared<ProfileModel>();
    profile->name = name;
    profile->isDefault = profiles.empty();
    profiles.push_back(profile);
    return profile;
}

IMessage* ScriptedMapi::OpenMessage(const std::shared_ptr<MessageModel>& model) {
    return NewMessage(m_context, model);
}

std::string ScriptedMapi::Leaks() const {
    std::string text;
    const auto tell = [&](int count, const char* what) {
        if (count != 0) {
            text += std::to_string(count) + what;
        }
    };
    tell(script.LiveObjects(), " objects not released; ");
    tell(memory::LiveBlocks() - m_blocksBefore, " blocks not freed; ");
    tell(memory::Misuses() - m_misusesBefore, " blocks freed wrongly; ");
    return text;
}

}  // namespace scripted_mapi

// ---- The functions that the provider forwards to --------------------------------------------------------------------

using namespace scripted_mapi;

namespace {

// Notes a call of a function; E_FAIL without a scripted MAPI.
template <typename... Arguments>
std::optional<HRESULT> Enter(const char* function, const Arguments&... arguments) {
    if (g_mapi == nullptr) {
        return E_FAIL;
    }
    return g_mapi->script.Enter(CallText(function, arguments...));
}

}  // namespace

HRESULT STDAPICALLTYPE MAPIInitialize(LPVOID start) {
    const auto* flags = static_cast<const MAPIINIT_0*>(start);
    if (const auto answer = Enter("MAPIInitialize", flags->ulVersion, Hex8(flags->ulFlags))) {
        return *answer;
    }
    ++g_mapi->initialized;
    return S_OK;
}

void STDAPICALLTYPE MAPIUninitialize() {
    if (!Enter("MAPIUninitialize")) {
        --g_mapi->initialized;
    }
}

HRESULT STDAPICALLTYPE MAPILogonEx(ULONG_PTR, LPTSTR name, LPTSTR password, ULONG flags, LPMAPISESSION* session) {
    const bool isWide = (flags & MAPI_UNICODE) != 0;
    const std::string profileName = CallerText(name, isWide);
    if (const auto answer = Enter("MAPILogonEx", profileName, CallerText(password, isWide), Hex8(flags))) {
        return *answer;
    }
    auto profile = g_mapi->GetContext()->FindProfile(profileName);
    if (profile == nullptr) {
        return MAPI_E_LOGON_FAILED;
    }
    *session = NewSession(g_mapi->GetContext(), std::move(profile));
    return S_OK;
}

HRESULT STDAPICALLTYPE MAPIAdminProfiles(ULONG flags, LPPROFADMIN* profiles) {
    if (const auto answer = Enter("MAPIAdminProfiles", Hex8(flags))) {
        return *answer;
    }
    *profiles = NewProfAdmin(g_mapi->GetContext());
    return S_OK;
}

SCODE STDAPICALLTYPE MAPIAllocateBuffer(ULONG size, LPVOID* block) {
    if (const auto answer = Enter("MAPIAllocateBuffer", size)) {
        return *answer;
    }
    *block = memory::Allocate(size);
    return S_OK;
}

SCODE STDAPICALLTYPE MAPIAllocateMore(ULONG size, LPVOID root, LPVOID* block) {
    *block = memory::AllocateMore(size, root);
    return *block != nullptr ? S_OK : MAPI_E_INVALID_PARAMETER;
}

ULONG STDAPICALLTYPE MAPIFreeBuffer(LPVOID block) {
    if (block != nullptr) {
        memory::Free(block);
    }
    return 0;
}

void STDAPICALLTYPE FreeProws(LPSRowSet rows) {
    for (ULONG i = 0; i < rows->cRows; ++i) {
        memory::Free((&rows->aRow[0])[i].lpProps);
    }
    memory::Free(rows);
}

LPMALLOC STDAPICALLTYPE MAPIGetDefaultMalloc() {
    LPMALLOC allocator = nullptr;
    return SUCCEEDED(CoGetMalloc(1, &allocator)) ? allocator : nullptr;
}

// Works on any object through its GetProps, of which the script notes nothing where the object is its own.
HRESULT STDAPICALLTYPE HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* property) {
    if (const auto answer = Enter("HrGetOneProp", Hex8(tag))) {
        return *answer;
    }
    const SizedSPropTagArray<1> tags = {1, {tag}};
    const QuietScope quiet(g_mapi->script);
    ULONG count = 0;
    LPSPropValue values = nullptr;
    const HRESULT hr = object->GetProps(tags, MAPI_UNICODE, &count, &values);
    if (FAILED(hr)) {
        return hr;
    }
    if (PROP_TYPE(values->ulPropTag) == PT_ERROR) {
        const SCODE error = values->Value.err;
        memory::Free(values);
        return error;
    }
    *property = values;
    return S_OK;
}

HRESULT STDAPICALLTYPE HrSetOneProp(LPMAPIPROP object, LPSPropValue property) {
    if (const auto answer = Enter("HrSetOneProp", ValuesText(1, property))) {
        return *answer;
    }
    const QuietScope quiet(g_mapi->script);
    return object->SetProps(1, property, nullptr);
}

HRESULT STDAPICALLTYPE HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray columns, LPSRestriction restriction,
                                      LPSSortOrderSet order, LONG maximum, LPSRowSet* rows) {
    if (const auto answer =
            Enter("HrQueryAllRows", TagsText(columns), RestrictionText(restriction), SortText(order), maximum)) {
        return *answer;
    }
    auto* scripted = dynamic_cast<Table*>(table);
    return scripted != nullptr ? scripted->QueryAllRows(columns, restriction, order, maximum, rows) : E_NOTIMPL;
}

HRESULT STDAPICALLTYPE WrapCompressedRTFStream(IStream* compressed, ULONG flags, IStream** uncompressed) {
    if (const auto answer = Enter("WrapCompressedRTFStream", Hex8(flags))) {
        return *answer;
    }
    Bytes bytes;
    BYTE buffer[512];
    const QuietScope quiet(g_mapi->script);
    for (ULONG read = 0;; bytes.insert(bytes.end(), buffer, buffer + read)) {
        const HRESULT hr = compressed->Read(buffer, sizeof(buffer), &read);
        if (FAILED(hr)) {
            return hr;
        }
        if (read == 0) {
            break;
        }
    }
    *uncompressed = static_cast<IStream*>(NewStream(g_mapi->GetContext(), g_mapi->uncompressRtf(std::move(bytes))));
    return S_OK;
}

SCODE STDAPICALLTYPE OpenIMsgSession(LPMALLOC, ULONG flags, LPMSGSESS* session) {
    if (const auto answer = Enter("OpenIMsgSession", Hex8(flags))) {
        return *answer;
    }
    *session = reinterpret_cast<LPMSGSESS>(g_mapi);
    return S_OK;
}

void STDAPICALLTYPE CloseIMsgSession(LPMSGSESS) {
    Enter("CloseIMsgSession");
}

SCODE STDAPICALLTYPE OpenIMsgOnIStg(LPMSGSESS session, LPALLOCATEBUFFER, LPALLOCATEMORE, LPFREEBUFFER, LPMALLOC, LPVOID,
                                    IStorage* storage, MSGCALLRELEASE*, ULONG, ULONG flags, LPMESSAGE* message) {
    if (const auto answer = Enter("OpenIMsgOnIStg", session != nullptr ? "session" : "no session", Hex8(flags))) {
        return *answer;
    }
    return g_mapi->openMessageOnStorage ? g_mapi->openMessageOnStorage(storage, flags, message) : E_NOTIMPL;
}
