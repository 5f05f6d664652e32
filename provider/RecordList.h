// Lists of records on their way to the host.
#pragma once

#include "platform/Variant.h"
#include "provider/ExchObjectData.h"

#include <cstddef>

// A list that is filled from the front, each record moving in. Give() hands it over; a list that is not given is freed
// with what it holds.
class RecordList {
public:
    explicit RecordList(std::size_t size) : m_list(size) {}

    // Moves the record to the next free place; `record` is empty afterwards. There must be a free place.
    void Add(CExchObject& record) {
        VARIANT element;
        record.Dettach(&element);
        m_list.SetVariantFieldVal(m_filled++, &element, true);
    }

    std::size_t Filled() const noexcept { return m_filled; }

    void Give(VARIANT* out) { m_list.Dettach(out); }

private:
    CArrayObjectData m_list;
    std::size_t m_filled = 0;
};
