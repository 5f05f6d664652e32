#include "platform/linux/storage/SectorChain.h"

#include "platform/linux/storage/CompoundFormat.h"

#include <algorithm>

namespace vx_storage {

HRESULT AllocationTable::Next(std::uint32_t sector, std::uint32_t& next) {
    const std::size_t slots = m_block.size() / sizeof(std::uint32_t);
    const std::uint64_t index = sector / slots;
    if (index != m_blockIndex) {
        m_blockIndex = kNoBlock;
        if (const HRESULT hr = ReadBlock(index, m_block); FAILED(hr)) {
            return hr;
        }
        m_blockIndex = index;
    }
    next = LoadU32(m_block.data() + (sector % slots) * sizeof(std::uint32_t));
    return S_OK;
}

HRESULT SectorChain::FindRun(AllocationTable& table, std::uint64_t index, std::uint64_t most, std::uint32_t& sector,
                             std::uint64_t& count) {
    if (const HRESULT hr = Find(table, index, sector); FAILED(hr)) {
        return hr;
    }
    for (count = 1; count < most; ++count) {
        Place next = m_cursor;
        // What goes wrong behind the run is reported when it is asked for.
        if (FAILED(Advance(table, next)) || next.sector != m_cursor.sector + 1) {
            break;
        }
        m_cursor = next;
    }
    return S_OK;
}

HRESULT SectorChain::Find(AllocationTable& table, std::uint64_t index, std::uint32_t& sector) {
    if (!m_started) {
        if (!table.Holds(m_first)) {
            return STG_E_DOCFILECORRUPT;
        }
        m_cursor = m_frontier = m_tortoise = {0, m_first};
        m_marks.push_back(m_first);
        m_started = true;
    }
    if (index >= m_end) {
        return STG_E_DOCFILECORRUPT;
    }
    m_cursor = NearestBefore(index);
    while (m_cursor.index < index) {
        if (const HRESULT hr = Advance(table, m_cursor); FAILED(hr)) {
            return hr;
        }
    }
    sector = m_cursor.sector;
    return S_OK;
}

SectorChain::Place SectorChain::NearestBefore(std::uint64_t index) const noexcept {
    if (m_frontier.index <= index) {
        return m_frontier;
    }
    const std::uint64_t mark = std::min<std::uint64_t>(index / m_markStride, m_marks.size() - 1);
    const Place marked = {mark * m_markStride, m_marks[static_cast<std::size_t>(mark)]};
    return m_cursor.index <= index && m_cursor.index > marked.index ? m_cursor : marked;
}

// One step on. Beyond the frontier each step is checked, so that what lies before it is known to be sound.
HRESULT SectorChain::Advance(AllocationTable& table, Place& place) {
    if (place.index + 1 >= m_end) {
        return STG_E_DOCFILECORRUPT;
    }
    std::uint32_t next = 0;
    if (const HRESULT hr = table.Next(place.sector, next); FAILED(hr)) {
        return hr;
    }
    const Place reached = {place.index + 1, next};
    if (reached.index > m_frontier.index) {
        if (!table.Holds(next)) {
            m_end = reached.index;
            return STG_E_DOCFILECORRUPT;
        }
        if (const std::uint64_t loop = LoopClosedBy(reached); loop != 0) {
            const HRESULT hr = FindFirstRepeat(table, loop, m_end);
            return FAILED(hr) ? hr : STG_E_DOCFILECORRUPT;
        }
        m_frontier = reached;
        Mark(reached);
        if (reached.index + 1 == m_needed) {
            if (const HRESULT hr = CheckTail(table); FAILED(hr)) {
                return hr;
            }
        }
    }
    place = reached;
    return reached.index < m_end ? S_OK : STG_E_DOCFILECORRUPT;
}

// The length of the loop that a step to `place` closes, or 0.
std::uint64_t SectorChain::LoopClosedBy(const Place& place) noexcept {
    if (place.sector == m_tortoise.sector) {
        return place.index - m_tortoise.index;
    }
    if (place.index - m_tortoise.index == m_tortoiseLeap) {
        m_tortoise = place;
        m_tortoiseLeap *= 2;
    }
    return 0;
}

// Of two walkers that keep the length of the loop between them, the hind one meets the other where the loop begins.
HRESULT SectorChain::FindFirstRepeat(AllocationTable& table, std::uint64_t loop, std::uint64_t& index) const {
    std::uint32_t hind = m_first;
    std::uint32_t front = m_first;
    for (std::uint64_t i = 0; i < loop; ++i) {
        if (const HRESULT hr = table.Next(front, front); FAILED(hr)) {
            return hr;
        }
    }
    for (index = loop; hind != front; ++index) {
        if (const HRESULT hr = table.Next(hind, hind); FAILED(hr)) {
            return hr;
        }
        if (const HRESULT hr = table.Next(front, front); FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

// A loop shows only some way behind the sector that comes twice, which may be behind the last one that is needed. So
// the walk goes on from there: one step in a sound chain, which ends. A loop of which a part is needed shows within
// three times what is needed: once to where it begins, up to twice around until the tortoise waits long enough.
HRESULT SectorChain::CheckTail(AllocationTable& table) {
    Place place = m_frontier;
    while (place.index < 4 * m_needed && SUCCEEDED(table.Next(place.sector, place.sector))
           && table.Holds(place.sector)) {
        ++place.index;
        if (const std::uint64_t loop = LoopClosedBy(place); loop != 0) {
            std::uint64_t repeat = 0;
            const HRESULT hr = FindFirstRepeat(table, loop, repeat);
            m_end = repeat < m_needed ? repeat : m_end;
            return hr;
        }
    }
    return S_OK;
}

void SectorChain::Mark(const Place& place) {
    if (place.index != m_marks.size() * m_markStride) {
        return;
    }
    if (m_marks.size() == kMaxChainMarks) {  // every second one makes room
        for (std::size_t i = 0; 2 * i < m_marks.size(); ++i) {
            m_marks[i] = m_marks[2 * i];
        }
        m_marks.resize(m_marks.size() / 2);
        m_markStride *= 2;
        if (place.index % m_markStride != 0) {
            return;
        }
    }
    m_marks.push_back(place.sector);
}

}  // namespace vx_storage
