// CMPParams: what the host sets for the whole provider, in one text of pieces separated by "|". A plain value.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class CMPParams {
public:
    // The registry key of an application that names none.
    inline static const CStringW s_sApplication;

    // Takes the pieces from `startIndex` on, in the order
    //
    //   0 m_bodySizeLimit   1 m_attachmentSizeLimit   2 m_reservedFlag   3 m_reservedNumber   4 m_previewMode
    //   5 m_tempFolder      6 m_application           7 m_logName        8 m_logPeriodHours
    //
    // What lies behind the end of the list keeps its default. Numbers are read up to the first character that is no
    // digit, 0 when there is none, and held to the range of their field; a flag is set by the piece "1" alone.
    static CMPParams parse(const std::vector<CStringW>& pieces, std::size_t startIndex);

    bool PreviewMode() const noexcept { return m_previewMode; }

    // Preview into files, which needs a folder to put them in.
    bool PreviewFileMode() const noexcept { return m_previewMode && !m_tempFolder.empty(); }

    std::int64_t m_bodySizeLimit = -1;        // bytes; -1: the host sets none
    std::int64_t m_attachmentSizeLimit = -1;  // the same
    bool m_reservedFlag = false;              // carried for the host, without a meaning here
    std::int32_t m_reservedNumber = -1;       // likewise
    std::int32_t m_logPeriodHours = 12;       // how long old logs are kept
    bool m_previewMode = false;
    CStringW m_tempFolder;                    // empty: the system's
    CStringW m_logName;                       // of the log's file, without extension
    CStringW m_application = s_sApplication;  // key below HKEY_CURRENT_USER\Software
};
