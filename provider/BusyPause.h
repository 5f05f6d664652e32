// How the table calls of CMapiUtil wait while MAPI is busy. Tests put their own wait in its place, so that 600 of them
// take no time.
#pragma once

#include "platform/BaseTypes.h"

namespace vx_busy_pause {

using Pause = void (*)(DWORD milliseconds);

// From its construction to its end every wait calls `pause` instead of sleeping; then the wait before it is back. For
// the whole process, so one at a time, while no other thread waits.
class Override {
public:
    explicit Override(Pause pause) noexcept;
    ~Override();
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;

private:
    Pause m_previous;
};

}  // namespace vx_busy_pause
