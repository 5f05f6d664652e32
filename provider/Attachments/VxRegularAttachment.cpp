#include "provider/Attachments/VxRegularAttachment.h"

#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/LastError.h"
#include "provider/AttachmentText.h"
#include "provider/Common/Log.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Item/VxItem.h"
#include "provider/MAPIUtils.h"
#include "provider/MPParams.h"

#include <cstring>
#include <utility>

namespace {

constexpr auto& kSourcePath = "Attachments\\VxRegularAttachment.cpp"_w;

}  // namespace

CVxRegularAttachment::~CVxRegularAttachment() {
    Clear();
}

bool CVxRegularAttachment::OnConnect() {
    VX_SCOPE_TRACE(trace);
    Clear();
    m_attach.release();
    IMessage* message = m_parentItem != nullptr ? m_parentItem->GetMapiMessage() : nullptr;
    if (message == nullptr || FAILED(message->OpenAttach(m_attachNum, nullptr, MAPI_BEST_ACCESS, &m_attach))
        || m_attach.get() == nullptr) {
        return false;
    }
    return LoadBody();
}

void CVxRegularAttachment::OnDisconnect() {
    VX_SCOPE_TRACE(trace);
    m_attach.release();
    Clear();
}

const BYTE* CVxRegularAttachment::GetBlobData() {
    return EnsureBodyLoaded() && !m_blob.empty() ? m_blob.data() : nullptr;
}

LONG CVxRegularAttachment::GetBlobDataSize() {
    return EnsureBodyLoaded() ? m_blobSize : 0;
}

bool CVxRegularAttachment::LoadBody(const CMPParams& params) {
    VX_SCOPE_TRACE(trace);
    ClearBody();
    m_loadedBodyFormat = m_requestBodyFormat;
    if (m_requestBodyFormat == eBodyNone) {
        return true;
    }
    const auto limit = static_cast<ULONG>(GetBodySizeLimit(params));
    bool isLoaded = false;
    if (m_attachType == eVxATOle) {
        isLoaded = LoadOle(limit);
    } else if (m_attachType == eVxATByValue) {
        VX_LOG('D') << Vx::LogMsgDebugOnly("eVxATByValue attachment!"_w);
        VxMapiPtr<IUnknown> data;
        isLoaded =
            OpenData(PR_ATTACH_DATA_BIN, IID_IStream, data) && InitFromStream(static_cast<IStream*>(data.get()), limit);
    }
    if (!isLoaded) {
        m_blob.clear();
        m_blobSize = 0;
    }
    return isLoaded;
}

bool CVxRegularAttachment::LoadOle(ULONG limit) {
    VX_LOG('D') << Vx::LogMsgDebugOnly("eVxATOle attachment!"_w);
    VxMapiPtr<IUnknown> data;
    if (OpenData(PR_ATTACH_DATA_OBJ, IID_IStreamDocfile, data)) {
        return InitFromStream(static_cast<IStream*>(data.get()), limit);
    }
    VX_LOG('D') << Vx::LogMsgDebugOnly("Attempting to open PR_ATTACH_DATA_BIN"_w);
    if (OpenData(PR_ATTACH_DATA_BIN, IID_IStreamDocfile, data)) {
        return InitFromStream(static_cast<IStream*>(data.get()), limit);
    }
    VX_LOG('D') << Vx::LogMsgDebugOnly("Attempting to to get IStorage..."_w);
    return OpenData(PR_ATTACH_DATA_OBJ, IID_IStorage, data)
           && InitFromStorage(static_cast<IStorage*>(data.get()), limit);
}

bool CVxRegularAttachment::OpenData(ULONG tag, const IID& iid, VxMapiPtr<IUnknown>& data) {
    return m_attach.get() != nullptr && SUCCEEDED(m_attach->OpenProperty(tag, &iid, 0, 0, &data))
           && data.get() != nullptr;
}

bool CVxRegularAttachment::InitFromStream(IStream* stream, ULONG limit) {
    VX_SCOPE_TRACE(trace);
    ULONG size = 0;
    if (m_requestBodyFormat == eBodyFile || m_requestBodyFormat == eBodyFileKept) {
        const CStringW path = GetTempFileName();
        const HRESULT hr = CMapiUtil::SaveStreamInFile(stream, path);
        if (SUCCEEDED(hr)) {
            SetBlobText(FileReference(path));
        }
        return Judge(hr);
    }
    if (m_requestBodyFormat == eBodySection) {
        BYTE* buffer = nullptr;
        const HRESULT hr = CMapiUtil::CopyStreamToBuffer(stream, &buffer, &size, 0);
        const VxArrayPtr<BYTE> owner(buffer);
        return SUCCEEDED(hr) ? MakeSection(buffer, size) : Judge(hr);
    }
    const HRESULT hr = CMapiUtil::CopyStreamToBuffer(stream, limit, m_blob, &size, 0);
    return SUCCEEDED(hr) ? TakeBytes(size) : Judge(hr);
}

bool CVxRegularAttachment::InitFromStorage(IStorage* storage, ULONG limit) {
    VX_SCOPE_TRACE(trace);
    if (m_requestBodyFormat == eBodyFile || m_requestBodyFormat == eBodyFileKept) {
        const CStringW path = GetTempFileName();
        const HRESULT hr = CMapiUtil::SaveStorageInFile(storage, path);
        if (SUCCEEDED(hr)) {
            SetBlobText(FileReference(path));
        }
        return Judge(hr);
    }
    ULONG size = 0;
    const HRESULT hr = CMapiUtil::ReadStorageInMemory(storage, limit, m_blob, &size);
    if (FAILED(hr)) {
        return Judge(hr);
    }
    if (m_requestBodyFormat == eBodySection) {
        const std::vector<BYTE> bytes = std::exchange(m_blob, {});
        return MakeSection(bytes.data(), size);
    }
    return TakeBytes(size);
}

bool CVxRegularAttachment::Judge(HRESULT hr) {
    if (hr == E_OUTOFMEMORY) {
        RegisteError(VxErrorAttachmentBody);
        m_blob.clear();
        m_blobSize = 0;
        return true;
    }
    return SUCCEEDED(hr);
}

bool CVxRegularAttachment::TakeBytes(ULONG size) {
    m_values.size = m_blobSize = static_cast<LONG>(size);
    return true;
}

void CVxRegularAttachment::SetBlobText(const CStringW& text) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
    m_blob.assign(bytes, bytes + text.size() * sizeof(WCHAR));
    m_blobSize = static_cast<LONG>(m_blob.size());
}

bool CVxRegularAttachment::MakeSection(const BYTE* bytes, ULONG size) {
    const CStringW section = SectionReference(size, SaveName());
    if (!FillSection(section, bytes, size)) {
        return false;
    }
    SetBlobText(section);
    return true;
}

bool CVxRegularAttachment::FillSection(const CStringW& section, const BYTE* bytes, ULONG size) {
    m_fileMapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, section.c_str());
    if (m_fileMapping == nullptr) {
        VX_LOG('E') << Vx::LogMsg("CreateFileMapping failed with ErrorCode %d, dataSize %d, filename %s"_w,
                                  GetLastError(), size, SaveName());
        return false;
    }
    // The size is asked for, though the whole section is wanted: a section of this name that somebody else has made
    // smaller must not be written past its end.
    m_mappedView = MapViewOfFile(m_fileMapping, FILE_MAP_WRITE, 0, 0, size);
    if (m_mappedView == nullptr) {
        VX_LOG('E') << Vx::LogMsg("MapViewOfFile failed with ErrorCode %d, dataSize %d, filename %s"_w, GetLastError(),
                                  size, SaveName());
        return false;
    }
    std::memcpy(m_mappedView, bytes, size);
    return true;
}

void CVxRegularAttachment::ClearBody() {
    VX_SCOPE_TRACE(trace);
    m_blob = {};
    m_blobSize = 0;
    m_loadedBodyFormat = eBodyNone;
    if (HANDLE section = std::exchange(m_fileMapping, nullptr)) {
        CloseHandle(section);
        if (const void* view = std::exchange(m_mappedView, nullptr)) {
            UnmapViewOfFile(view);
        }
    }
}
