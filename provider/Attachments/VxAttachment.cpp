#include "provider/Attachments/VxAttachment.h"

#include "provider/Common/Log.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Item/VxItem.h"
#include "provider/MAPIUtils.h"
#include "provider/VxDomain.h"

#include <algorithm>

namespace {

constexpr auto& kSourcePath = "Attachments\\VxAttachment.cpp"_w;

// Units that the path of a temporary file may have.
constexpr std::size_t kMostPathUnits = 1024;

}  // namespace

CVxAttachment::CVxAttachment(CVxItem* parent) noexcept : CVxConnectable(parent), m_parentItem(parent) {}

std::size_t CVxAttachment::GetChildCount() {
    VX_SCOPE_TRACE(trace);
    EnsureConnected();
    return 0;
}

const CStringW& CVxAttachment::GetURLSubject() {
    if (m_urlSubject.empty()) {
        if (m_parentItem != nullptr) {
            m_urlSubject = m_parentItem->GetURLSubject();
            m_urlSubject += '/';
        }
        m_urlSubject += m_values.urlCompName;
    }
    return m_urlSubject;
}

LONG CVxAttachment::GetBodySizeLimit(const CMPParams& params) noexcept {
    if (params.m_bodySizeLimit == -1) {
        return kMostBytes;
    }
    return static_cast<LONG>(std::clamp<std::int64_t>(params.m_bodySizeLimit, 0, kMostBytes));
}

CMPParams CVxAttachment::DomainParams() {
    CVxDomain* domain = GetDomain();
    return domain != nullptr ? *domain->getMPParams() : CMPParams();
}

bool CVxAttachment::LoadBody() {
    VX_SCOPE_TRACE(trace);
    const CMPParams params = DomainParams();
    if (m_values.size > GetBodySizeLimit(params)) {
        RegisteError(VxErrorAttachmentBody);
        return true;
    }
    return LoadBody(params);
}

bool CVxAttachment::EnsureBodyLoaded() {
    try {
        if (m_requestBodyFormat == eBodyNone) {
            VX_LOG('D') << Vx::LogMsgDebugOnly("Skip Body info - not requested"_w);
            return false;
        }
        if (m_requestBodyFormat != m_loadedBodyFormat) {
            VX_LOG('D') << Vx::LogMsgDebugOnly("load Body info"_w);
            return LoadBody();
        }
        return true;
    } catch (...) {
        VX_LOG('D') << Vx::LogMsgDebugOnly("EnsureBodyLoaded exception!"_w);
        return false;
    }
}

const CStringW& CVxAttachment::SaveName() const noexcept {
    return m_values.longFileName.empty() ? m_values.fileName : m_values.longFileName;
}

CStringW CVxAttachment::GetTempFileName() const {
    return CMapiUtil::GetATempFileName(CVxDomain::GetTempFolder(), SaveName(), kMostPathUnits);
}
