// CItemsFilter: which part of a store or of a folder is wanted. A plain value.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"
#include "provider/Common/FileTimeHelpers.h"

class CItemsFilter {
public:
    enum class Kind : LONG {
        None = 0,    // everything
        ById = 1,    // the object with one entry id
        ByTime = 2,  // what was changed after a moment
    };

    CItemsFilter() = default;
    explicit CItemsFilter(const CStringW& id) : m_kind(Kind::ById), m_id(id) {}
    explicit CItemsFilter(const FILETIME& time) : m_kind(Kind::ByTime), m_time(time) {}

    bool HaveFilter() const noexcept { return m_kind != Kind::None; }
    Kind GetKind() const noexcept { return m_kind; }
    const CStringW& GetId() const noexcept { return m_id; }
    const FILETIME& GetTime() const noexcept { return m_time; }

    // Ids compare with regard to case.
    friend bool operator==(const CItemsFilter& a, const CItemsFilter& b) noexcept {
        if (a.m_kind != b.m_kind) {
            return false;
        }
        switch (a.m_kind) {
            case Kind::ById: return a.m_id == b.m_id;
            case Kind::ByTime: return Equal(a.m_time, b.m_time);
            case Kind::None: break;
        }
        return true;
    }

private:
    Kind m_kind = Kind::None;
    CStringW m_id;             // ById: hexadecimal text
    FILETIME m_time = {0, 0};  // ByTime
};
