// Bodies: which format is read how, and what is done where MAPI does not give it.
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"
#include "provider/AttachmentText.h"
#include "provider/Attachments/SmimeMsgConverter.h"
#include "provider/Common/Format.h"
#include "provider/Common/Log.h"
#include "provider/Common/StringHelpers.h"
#include "provider/ImportProcs.h"
#include "provider/Item/VxItem.h"
#include "provider/VxDomain.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

constexpr auto& kSourcePath = "Item\\VxItem.cpp"_w;

// Bytes that one read of a plain body asks for.
constexpr ULONG kPlainPiece = 4000;

// A name in the folder of the host's parameters, else in the system's.
CStringW TempPath(const CMPParams& params, const CStringW& name) {
    CStringW path = params.m_tempFolder.empty() ? CVxDomain::GetTempFolder() : params.m_tempFolder;
    if (!path.empty() && path.back() != kPathSeparator) {
        path += kPathSeparator;
    }
    return path + name;
}

CStringW Decode(UINT codePage, const BYTE* bytes, std::size_t size) {
    if (size == 0) {
        return {};
    }
    // No page has more characters than bytes. What cannot be decoded, as of a page that there is not, gives none.
    const auto length = static_cast<int>(size);
    CStringW text(size, WCHAR{0});
    const int written =
        MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes), length, text.data(), length);
    text.resize(static_cast<std::size_t>(std::clamp(written, 0, length)));
    return text;
}

void DeleteTempFile(const CStringW& path) {
    VX_LOG('D') << Vx::LogMsg("Delete temp file %s"_w, path);
    std::error_code ignored;
    std::filesystem::remove(ToPath(path), ignored);
}

}  // namespace

LONG CVxItem::GetBodySizeLimit(const CMPParams& params) noexcept {
    if (params.m_bodySizeLimit == -1) {
        return kMostBodyBytes;
    }
    return static_cast<LONG>(std::clamp<std::int64_t>(params.m_bodySizeLimit, 0, kMostBodyBytes));
}

CMPParams CVxItem::DomainParams() {
    CVxDomain* domain = GetDomain();
    return domain != nullptr ? *domain->getMPParams() : CMPParams();
}

CStringW CVxItem::GetBody() {
    if (m_requestBodyFormat == eBodyNone) {
        VX_LOG('D') << Vx::LogMsg("Skip Body info - not requested"_w);
        return {};
    }
    if (m_requestBodyFormat != m_loadedBodyFormat) {
        VX_LOG('D') << Vx::LogMsg("load Body info"_w);
        if (!LoadBody()) {
            return {};
        }
    }
    return m_body;
}

void CVxItem::ClearBody() {
    if (m_loadedBodyFormat == eBodyFileKept && m_body.starts_with("File:"_w)) {
        VX_LOG('D') << Vx::LogMsg("Skip Delete temp file %s"_w, m_body);
    }
    m_body.clear();
    m_loadedBodyFormat = eBodyNone;
}

bool CVxItem::LoadBody() {
    ClearBody();
    const CMPParams params = DomainParams();
    if (params.m_bodySizeLimit != -1 && GetBodySizeProperty() >= params.m_bodySizeLimit) {
        VX_LOG('D') << Vx::LogMsg("Body too big error"_w);
        RegisteError(VxErrorBodyTooBig);
        return true;
    }
    return LoadBody(params);
}

bool CVxItem::LoadBody(const CMPParams& params) {
    ClearBody();
    TBodyFormat format = m_requestBodyFormat;
    if (params.PreviewMode()) {
        format = params.PreviewFileMode() ? eBodyFile : eBodyHtml;
    } else if (format == eBodyNone) {
        VX_LOG('D') << Vx::LogMsg("Skip body load - requested format is 'none'"_w);
        return true;
    }
    if (m_message.get() == nullptr) {
        return false;
    }
    m_loadedBodyFormat = format;
    switch (format) {
        case eBodyFile:
        case eBodyFileKept: return SaveAsMsg(params) || LoadEncodedBody(format);
        case eBodyRtf: return LoadBodyAsRft(params) || LoadEncodedBody(format);
        case eBodyHtml: return LoadBodyAsHtml(params) || LoadEncodedBody(format);
        default: return LoadPlainBody();
    }
}

HRESULT CVxItem::OpenStream(ULONG tag, VxMapiPtr<IUnknown>& stream) {
    return m_message->OpenProperty(tag, &IID_IStream, 0, MAPI_DEFERRED_ERRORS, &stream);
}

bool CVxItem::LoadPlainBody() {
    VxMapiPtr<IUnknown> opened;
    HRESULT hr = OpenStream(PR_BODY_W, opened);
    if (FAILED(hr) || opened.get() == nullptr) {
        VX_LOG('D') << Vx::LogMsg("Unable to get contact body (%x). Try to decode it..."_w, hr);
        return LoadEncodedBody(m_loadedBodyFormat);
    }
    auto* stream = static_cast<IStream*>(opened.get());
    for (;;) {
        WCHAR piece[kPlainPiece / sizeof(WCHAR)];
        ULONG read = 0;
        hr = stream->Read(piece, kPlainPiece, &read);
        if (FAILED(hr)) {
            break;
        }
        const WideView text(piece, std::min(read, kPlainPiece) / sizeof(WCHAR));
        m_body += text.substr(0, text.find(WCHAR{0}));
        if (hr != S_OK || read == 0) {
            break;
        }
    }
    m_loadedBodyFormat = eBodyText;
    return SUCCEEDED(hr);
}

bool CVxItem::LoadBodyAsRft(const CMPParams& params) {
    VxMapiPtr<IUnknown> compressed;
    HRESULT hr = OpenStream(PR_RTF_COMPRESSED, compressed);
    HrToError(hr, "m_pMapiMessage->OpenProperty"_w, m_body);
    if (compressed.get() == nullptr) {
        return SUCCEEDED(hr);
    }
    VxMapiPtr<IStream> text;
    hr = WrapCompressedRTFStream(static_cast<IStream*>(compressed.get()), 0, &text);
    HrToError(hr, "WrapCompressedRTFStream"_w, m_body);
    if (hr != S_OK || text.get() == nullptr) {
        return SUCCEEDED(hr);
    }
    std::vector<BYTE> bytes;
    ULONG read = 0;
    hr = CMapiUtil::CopyStreamToBuffer(text, static_cast<ULONG>(GetBodySizeLimit(params)), bytes, &read, 0);
    HrToError(hr, "CopyStreamToBuffer"_w, m_body);
    if (FAILED(hr)) {
        return false;
    }
    const auto end = std::find(bytes.begin(), bytes.end(), BYTE{0});
    m_body = Decode(CP_ACP, bytes.data(), static_cast<std::size_t>(end - bytes.begin()));
    m_loadedBodyFormat = eBodyRtf;
    return true;
}

bool CVxItem::LoadBodyAsHtml(const CMPParams& params) {
    bool isWide = false;
    VxMapiPtr<IUnknown> opened;
    HRESULT hr = OpenStream(PR_BODY_HTML_A, opened);
    if (FAILED(hr)) {
        VX_LOG('D') << Vx::LogMsg("Open HTML_BODY failed. Try with unicode."_w);
        isWide = true;
        hr = OpenStream(PR_BODY_HTML_W, opened);
        if (SUCCEEDED(hr)) {
            VX_LOG('D') << Vx::LogMsg("Open with PR_HTML_BODY_W succeeded."_w);
        }
    }
    if (opened.get() == nullptr) {
        return false;
    }
    std::vector<BYTE> bytes;
    ULONG read = 0;
    hr = CMapiUtil::CopyStreamToBuffer(static_cast<IStream*>(opened.get()),
                                       static_cast<ULONG>(GetBodySizeLimit(params)), bytes, &read, 0);
    HrToError(hr, "CopyStreamToBuffer"_w, m_body);
    if (FAILED(hr)) {
        return false;
    }
    if (isWide) {
        m_body.resize(bytes.size() / sizeof(WCHAR));
        std::memcpy(m_body.data(), bytes.data(), m_body.size() * sizeof(WCHAR));
    } else if (!bytes.empty()) {
        m_body = Decode(HtmlCodePage(), bytes.data(), bytes.size());
    }
    m_loadedBodyFormat = eBodyHtml;
    return true;
}

UINT CVxItem::HtmlCodePage() {
    VxMapiFrBufPtr<SPropValue> page;
    if (FAILED(HrGetOneProp(m_message, PR_INTERNET_CPID, &page)) || page.get() == nullptr
        || page->ulPropTag != PR_INTERNET_CPID) {
        return CP_ACP;
    }
    return page->Value.ul;
}

bool CVxItem::LoadEncodedBody(TBodyFormat format) {
    const CStringW path = CMapiUtil::GetATempFileName() + ".msg"_w;
    if (FAILED(CSmimeMsgConverter::SaveToMSG(m_message, path))) {
        DeleteTempFile(path);
        return false;
    }
    if (format == eBodyFile || format == eBodyFileKept) {
        m_body = FileReference(path);
        return true;
    }
    CSmimeMsgConverter converter;
    converter.ReadBody(path, format == eBodyText);
    m_body = converter.GetBodyText();
    // Loading the body in another format must not list the attachments again.
    if (!m_body.empty() && !std::exchange(m_isSigned, true)) {
        GetSmimeAttachments(converter.GetEmail());
    }
    DeleteTempFile(path);
    return true;
}

bool CVxItem::SaveAsMsg(const CMPParams& params) {
    CStringW path = TempPath(params, Vx::FormatString("%x-body.msg"_w, GetSimpleHash()));
    const HRESULT hr = CMapiUtil::SaveMessageInFile(m_message, path);
    if (SUCCEEDED(hr)) {
        m_body = FileReference(path);
        return true;
    }
    VX_LOG('E') << Vx::LogMsg("SaveMessageInFile hr=0x%x"_w, hr);
    m_body = "SaveMessageInFile failed"_w;
    return false;
}

bool CVxItem::SaveBodyAsRtf(const CMPParams& params) {
    const CStringW path = TempPath(params, "body.rft"_w);
    VxMapiPtr<IUnknown> compressed;
    VxMapiPtr<IStream> text;
    HRESULT hr = m_message.get() != nullptr ? OpenStream(PR_RTF_COMPRESSED, compressed) : E_FAIL;
    if (SUCCEEDED(hr) && compressed.get() != nullptr) {
        hr = WrapCompressedRTFStream(static_cast<IStream*>(compressed.get()), 0, &text);
    }
    if (SUCCEEDED(hr)) {
        hr = text.get() != nullptr ? CMapiUtil::SaveStreamInFile(text, path) : E_FAIL;
    }
    if (SUCCEEDED(hr)) {
        m_body = FileReference(path);
        return true;
    }
    VX_LOG('E') << Vx::LogMsg("SaveStorageInFile hr=0x%x"_w, hr);
    m_body = "SaveStorageInFile failed"_w;
    return false;
}
