#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/LastError.h"
#include "platform/Paths.h"
#include "platform/Storage.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"
#include "provider/MapiHolders.h"
#include "provider/StreamReads.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace {

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

constexpr DWORD kMessageFileMode = STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE;

// Messages are written in the wide form, in which no text is lost, unless a MAPI too old for it refuses.
constexpr bool s_bPreferUnicodeMsgFormat = true;

// Deletes the file at `path`; not a folder, and not a file that is in use. Whether it is, only the storages' own locks
// tell where the system deletes any file. Gives 0 or an error number of the system.
int DeleteFileAt(const CStringW& path) {
    const std::filesystem::path file = ToPath(path);
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        return ERROR_ACCESS_DENIED;
    }
    VxMapiPtr<IStorage> probe;
    const HRESULT hr = StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &probe);
    if (hr == STG_E_ACCESSDENIED || hr == STG_E_SHAREVIOLATION || hr == STG_E_LOCKVIOLATION) {
        return ERROR_ACCESS_DENIED;
    }
    probe.release();
    error.clear();
    if (!std::filesystem::remove(file, error) && !error) {
        return ERROR_FILE_NOT_FOUND;
    }
    return error.value();
}

// Creates the file, under the name with "_tmp" in it when the given one is in use.
HRESULT CreateMessageFile(CStringW& path, IStorage** storage) {
    const HRESULT hr = StgCreateDocfile(path.c_str(), kMessageFileMode, 0, storage);
    if (hr != STG_E_ACCESSDENIED) {
        return hr;
    }
    const std::size_t dot = path.rfind('.');
    if (dot == CStringW::npos) {
        return hr;
    }
    path.insert(dot, "_tmp"_w);
    return StgCreateDocfile(path.c_str(), kMessageFileMode, 0, storage);
}

// What the attachment table is asked for, in this order.
constexpr auto kAttachmentColumns = MakeTagArray(PR_ATTACH_METHOD, PR_ATTACH_NUM);
constexpr std::size_t kMethodColumn = 0;
constexpr std::size_t kNumberColumn = 1;

bool IsError(const SPropValue& value) {
    return PROP_TYPE(value.ulPropTag) == PT_ERROR;
}

// The method of the attachment with that number, as the message's table tells it; false when it tells none.
bool FindAttachmentMethod(ULONG number, IMessage* message, ULONG& method) {
    VxMapiPtr<IMAPITable> table;
    if (FAILED(message->GetAttachmentTable(0, &table)) || table.get() == nullptr
        || FAILED(CMapiUtil::SetColumns(table, kAttachmentColumns, 0))
        || FAILED(CMapiUtil::SeekRow(table, BOOKMARK_BEGINNING, 0, nullptr))) {
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    if (FAILED(HrQueryAllRows(table, nullptr, nullptr, nullptr, 0, &rows)) || rows.get() == nullptr) {
        return false;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        const SRow& row = rows->aRow[i];
        if (row.cValues <= kNumberColumn || row.lpProps == nullptr) {
            continue;
        }
        const SPropValue& rowNumber = row.lpProps[kNumberColumn];
        if (!IsError(rowNumber) && rowNumber.Value.ul == number) {
            const SPropValue& rowMethod = row.lpProps[kMethodColumn];
            if (IsError(rowMethod)) {
                return false;
            }
            method = rowMethod.Value.ul;
            return true;
        }
    }
    return false;
}

// The first of long, short and display name that says something.
CStringW AttachmentName(IAttach* attach) {
    constexpr auto kTags = MakeTagArray(PR_ATTACH_FILENAME_W, PR_ATTACH_LONG_FILENAME_W, PR_DISPLAY_NAME_W);
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> values;
    if (FAILED(attach->GetProps(kTags, MAPI_UNICODE, &count, &values)) || values.get() == nullptr
        || count < kTags.cValues) {
        return {};
    }
    for (const std::size_t place : {1U, 0U, 2U}) {
        CStringW name = CMapiUtil::Mapi2SimpleString(&values.get()[place]);
        if (!name.empty()) {
            return name;
        }
    }
    return {};
}

// Opens one of the attachment's data properties as the interface asked for.
template <typename Interface>
bool OpenData(IAttach* attach, ULONG tag, const IID& iid, VxMapiPtr<Interface>& data) {
    LPUNKNOWN opened = nullptr;
    if (FAILED(attach->OpenProperty(tag, &iid, 0, 0, &opened)) || opened == nullptr) {
        return false;
    }
    data.reset(static_cast<Interface*>(opened));
    return true;
}

// False when the file cannot be made or takes less than the whole; a stream that breaks off leaves what it gave.
bool SaveData(IStream* stream, const CStringW& path) {
    constexpr std::size_t kBufferBytes = 65536;
    std::ofstream file(ToPath(path), std::ios::binary | std::ios::trunc);
    if (!file) {
        return false;
    }
    std::vector<BYTE> buffer(kBufferBytes);
    if (!vx_streams::CopyToFile(stream, file, buffer).allWritten) {
        VX_LOG('E') << Vx::LogMsg("Writing failed. file: %s"_w, path);
        return false;
    }
    return true;
}

}  // namespace

HRESULT MyOpenIMsgOnIStg(LPMSGSESS session, IStorage* storage, IMessage** message) {
    const auto open = [=](ULONG flags) {
        *message = nullptr;
        return OpenIMsgOnIStg(session, &MAPIAllocateBuffer, &MAPIAllocateMore, &MAPIFreeBuffer, MAPIGetDefaultMalloc(),
                              nullptr, storage, nullptr, 0, flags, message);
    };
    constexpr ULONG kPreferred = s_bPreferUnicodeMsgFormat ? MAPI_UNICODE : 0;
    const HRESULT hr = open(kPreferred);
    return FAILED(hr) ? open(kPreferred ^ MAPI_UNICODE) : hr;
}

HRESULT CMapiUtil::SaveMessageInFile(IMessage* message, CStringW& path) {
    if (const int error = DeleteFileAt(path)) {
        VX_LOG('D') << Vx::LogMsg("DeleteFile failed - error code: %d"_w, error);
    }
    CMsgSession session;  // closed last, whatever leaves this function: the message below is part of it
    VxMapiPtr<IStorage> storage;
    HRESULT hr = CreateMessageFile(path, &storage);
    if (FAILED(hr)) {
        return hr;
    }
    OpenIMsgSession(MAPIGetDefaultMalloc(), 0, &session);
    VxMapiPtr<IMessage> target;
    hr = MyOpenIMsgOnIStg(session.get(), storage, &target);
    if (target.get() == nullptr) {
        storage.release();
        DeleteFileAt(path);
        return FAILED(hr) ? hr : E_FAIL;
    }
    // What follows is not judged step by step: a message of which a part cannot be copied is worth having without it.
    WriteClassStg(storage, CLSID_MailMessage);
    message->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMessage, target.get(), 0, nullptr);
    target->SaveChanges(KEEP_OPEN_READWRITE);
    return storage->Commit(STGC_DEFAULT);
}

bool CMapiUtil::GetAttachment(ULONG number, IMessage* message, VxMapiPtr<IAttach>& attach, ULONG& method,
                              CStringW& name) {
    if (!FindAttachmentMethod(number, message, method)) {
        return false;
    }
    if (method != ATTACH_BY_VALUE && method != ATTACH_EMBEDDED_MSG && method != ATTACH_OLE) {
        return false;
    }
    VxMapiPtr<IAttach> opened;
    if (FAILED(message->OpenAttach(number, nullptr, MAPI_BEST_ACCESS, &opened)) || opened.get() == nullptr) {
        return false;
    }
    name = AttachmentName(opened);
    attach.reset(opened.releasePointer());
    return true;
}

CStringW CMapiUtil::SaveMsgAttachmentOnDisk(ULONG number, IMessage* message, const CStringW& path) {
    VxMapiPtr<IAttach> attach;
    ULONG method = 0;
    CStringW ownName;  // the file is named by the caller
    if (!GetAttachment(number, message, attach, method, ownName)) {
        return {};
    }
    VxMapiPtr<IStream> stream;
    if (method == ATTACH_OLE) {
        if (!OpenData(attach, PR_ATTACH_DATA_OBJ, IID_IStreamDocfile, stream)
            && !OpenData(attach, PR_ATTACH_DATA_BIN, IID_IStreamDocfile, stream)) {
            VxMapiPtr<IStorage> storage;
            if (OpenData(attach, PR_ATTACH_DATA_OBJ, IID_IStorage, storage)) {
                return SUCCEEDED(SaveStorageInFile(storage, path)) ? path : CStringW();
            }
        }
    } else if (method == ATTACH_BY_VALUE) {
        OpenData(attach, PR_ATTACH_DATA_BIN, IID_IStream, stream);
    }
    return stream.get() != nullptr && SaveData(stream, path) ? path : CStringW();
}
