// Holders of what MAPI allocates, in the shape of provider/Common/Holders.h: raw pointers, adopted and freed, without
// counting. Beware, as there: release() frees, and a copy holds the same pointer.
#pragma once

#include "provider/Common/Holders.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"

#include <utility>

// The shape that both holders below share. Unlike with the other holders, assigning moves the source's pointer over
// and leaves the source null; what the target held is not freed, so it must be null or have another owner.
template <typename T, typename Free>
class VxMapiMemory : public VxHolder<T, Free> {
public:
    using VxHolder<T, Free>::VxHolder;
    VxMapiMemory() noexcept = default;
    VxMapiMemory(const VxMapiMemory&) noexcept = default;
    VxMapiMemory(VxMapiMemory&&) noexcept = default;

    VxMapiMemory& operator=(VxMapiMemory& source) noexcept {
        this->TakeFrom(source);
        return *this;
    }
    VxMapiMemory& operator=(VxMapiMemory&& source) noexcept { return *this = source; }

    // The inner pointer's address, for out arguments. Nothing is freed: what is held must be null, or is lost.
    T** operator&() noexcept { return this->Address(); }

    // Frees what is held and holds null.
    void release() noexcept { this->FreeHeld(); }
};

struct VxFreeRows {
    void operator()(SRowSet* rows) const noexcept { CMapiUtil::FreeRowSet(rows); }
};

struct VxFreeMapiBuffer {
    void operator()(void* buffer) const noexcept { MAPIFreeBuffer(buffer); }
};

// A row set, as QueryRows and HrQueryAllRows give it.
template <typename T>
class VxLpRowsPtr : public VxMapiMemory<T, VxFreeRows> {
public:
    using VxMapiMemory<T, VxFreeRows>::VxMapiMemory;
};

// A block of MAPIAllocateBuffer, with all that hangs on it.
template <typename T>
class VxMapiFrBufPtr : public VxMapiMemory<T, VxFreeMapiBuffer> {
public:
    using VxMapiMemory<T, VxFreeMapiBuffer>::VxMapiMemory;
};

// A message session: while it is open, the messages opened with it and their attachments share it. They must be
// released before it closes. Not copied, so that it closes once.
class CMsgSession {
public:
    CMsgSession() noexcept = default;
    explicit CMsgSession(LPMSGSESS session) noexcept : m_session(session) {}
    CMsgSession(const CMsgSession&) = delete;
    CMsgSession& operator=(const CMsgSession&) = delete;
    ~CMsgSession() { close(); }

    LPMSGSESS get() const noexcept { return m_session; }

    // The inner pointer's address, for OpenIMsgSession. What is held must be null, or is lost.
    LPMSGSESS* operator&() noexcept { return &m_session; }

    // Closes the session, if there is one, and holds null.
    void close() noexcept {
        if (LPMSGSESS session = std::exchange(m_session, nullptr)) {
            CloseIMsgSession(session);
        }
    }

private:
    LPMSGSESS m_session = nullptr;
};
