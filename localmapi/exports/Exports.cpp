// The entry points of the library: each checks its pointers, lets no exception out, and passes on to the room that does
// the work. Their types are in mapi/MapiFunctions.h.
#include "localmapi/com/CallArguments.h"
#include "localmapi/com/ComObject.h"
#include "localmapi/exports/Initialisation.h"
#include "localmapi/msg/MessageOnStorage.h"
#include "localmapi/profile/Administration.h"
#include "localmapi/props/Values.h"
#include "localmapi/session/Session.h"
#include "localmapi/store/MessageObject.h"
#include "localmapi/store/RtfStream.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiFunctions.h"
#include "platform/CodePage.h"
#include "platform/Export.h"
#include "platform/Storage.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

using namespace localmapi;

namespace {

template <class Body>
HRESULT Guarded(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return ResultOfException();
    }
}

}  // namespace

// What OpenIMsgSession gives. Messages on storages share nothing here, so there is nothing to hold.
struct IMsgSession {};

extern "C" {

// ---- Start and end --------------------------------------------------------------------------------------------------

VX_EXPORT HRESULT STDAPICALLTYPE MAPIInitialize(LPVOID init) {
    return Initialise(static_cast<const MAPIINIT_0*>(init));
}

VX_EXPORT void STDAPICALLTYPE MAPIUninitialize() {
    Uninitialise();
}

VX_EXPORT HRESULT STDAPICALLTYPE MAPILogonEx(ULONG_PTR, LPTSTR profileName, LPTSTR, ULONG flags,
                                             LPMAPISESSION* session) {
    if (session == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *session = nullptr;
    return Guarded([&]() -> HRESULT {
        if (!IsInitialised()) {
            return MAPI_E_NOT_INITIALIZED;
        }
        ComPtr<IMAPISession> opened;
        std::string problem;
        const HRESULT result = OpenSession(CallText(profileName, flags), opened, problem);
        *session = opened.Detach();
        return result;
    });
}

VX_EXPORT HRESULT STDAPICALLTYPE MAPIAdminProfiles(ULONG, LPPROFADMIN* admin) {
    if (admin == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *admin = nullptr;
    return Guarded([&]() -> HRESULT {
        if (!IsInitialised()) {
            return MAPI_E_NOT_INITIALIZED;
        }
        *admin = profile::MakeProfileAdmin(profile::ProfileStorage()).Detach();
        return S_OK;
    });
}

// What lives of this library in the process: COM objects and root blocks. For tests, which end with none of either.
VX_EXPORT void STDAPICALLTYPE VxMapiLiveCounts(LONGLONG* objects, LONGLONG* buffers) {
    *objects = LiveObjects();
    *buffers = LiveBuffers();
}

// ---- Streams and messages -------------------------------------------------------------------------------------------

VX_EXPORT HRESULT STDAPICALLTYPE WrapCompressedRTFStream(IStream* compressed, ULONG flags, IStream** plain) {
    if (compressed == nullptr || plain == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *plain = nullptr;
    return Guarded([&] {
        ComPtr<IStream> wrapped;
        const HRESULT result = WrapRtf(*compressed, flags, wrapped);
        *plain = wrapped.Detach();
        return result;
    });
}

VX_EXPORT SCODE STDAPICALLTYPE OpenIMsgSession(LPMALLOC, ULONG, LPMSGSESS* session) {
    if (session == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *session = nullptr;
    return Guarded([&]() -> HRESULT {
        *session = std::make_unique<IMsgSession>().release();
        return S_OK;
    });
}

VX_EXPORT void STDAPICALLTYPE CloseIMsgSession(LPMSGSESS session) {
    const std::unique_ptr<IMsgSession> closed(session);
}

VX_EXPORT SCODE STDAPICALLTYPE OpenIMsgOnIStg(LPMSGSESS, LPALLOCATEBUFFER, LPALLOCATEMORE, LPFREEBUFFER, LPMALLOC,
                                              LPVOID, IStorage* storage, MSGCALLRELEASE* released, ULONG callerData,
                                              ULONG flags, LPMESSAGE* message) {
    if (storage == nullptr || message == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *message = nullptr;
    return Guarded([&]() -> HRESULT {
        STATSTG stat{};
        const HRESULT told = storage->Stat(&stat, STATFLAG_NONAME);
        if (FAILED(told)) {
            return told;
        }
        msg::MsgOptions options;
        options.isWritable = (stat.grfMode & (STGM_WRITE | STGM_READWRITE)) != 0;
        options.commits = (flags & IMSG_NO_ISTG_COMMIT) == 0;
        auto source = msg::OpenMessageOnStorage(ComPtr<IStorage>(storage), options);
        if (!source) {
            return ResultOf(source.Failure().code);
        }
        MessageOptions about;
        if (released != nullptr) {
            about.released = [released, callerData](IMessage* gone) { released(callerData, gone); };
        }
        *message = MakeObject<MessageObject>(*std::move(source), nullptr, std::move(about),
                                             std::make_shared<std::recursive_mutex>())
                       .Detach();
        return S_OK;
    });
}

// Bodies are derived from each other when they are read, so nothing is ever out of step.
VX_EXPORT HRESULT STDAPICALLTYPE RTFSync(LPMESSAGE message, ULONG, BOOL* updated) {
    if (message == nullptr || updated == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *updated = FALSE;
    return S_OK;
}

}  // extern "C"
