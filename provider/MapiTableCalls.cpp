#include "mapi/MapiCodes.h"
#include "platform/Process.h"
#include "provider/BusyPause.h"
#include "provider/Common/Log.h"
#include "provider/MAPIUtils.h"

#include <atomic>

namespace {

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

// A store that is busy mostly is so for seconds, while it synchronizes; a minute is when a caller would rather know.
constexpr int kBusyRetries = 600;
constexpr DWORD kBusyPauseMilliseconds = 100;

void SleepWhileBusy(DWORD milliseconds) {
    Sleep(milliseconds);
}

std::atomic<vx_busy_pause::Pause> g_pause = &SleepWhileBusy;

// Waits before retry number `retry`; false when there were enough.
bool WaitForRetry(const WCHAR* operation, int retry) {
    if (retry > kBusyRetries) {
        VX_LOG('E') << Vx::LogMsg("%s: MAPI_E_BUSY too many times - timeout"_w, operation);
        return false;
    }
    VX_LOG('D') << Vx::LogMsg("%s: MAPI_E_BUSY"_w, operation);
    g_pause.load()(kBusyPauseMilliseconds);
    return true;
}

template <typename Call>
HRESULT RetryWhileBusy(const WCHAR* operation, Call call) {
    HRESULT hr = call();
    for (int retry = 1; hr == MAPI_E_BUSY && WaitForRetry(operation, retry); ++retry) {
        hr = call();
    }
    return hr;
}

}  // namespace

vx_busy_pause::Override::Override(Pause pause) noexcept : m_previous(g_pause.exchange(pause)) {}

vx_busy_pause::Override::~Override() {
    g_pause = m_previous;
}

HRESULT CMapiUtil::QueryRows(IMAPITable* table, LONG rowCount, ULONG flags, SRowSet** rows) {
    return RetryWhileBusy("QueryRows"_w, [=] { return table->QueryRows(rowCount, flags, rows); });
}

HRESULT CMapiUtil::SetColumns(IMAPITable* table, SPropTagArray* columns, ULONG flags) {
    return RetryWhileBusy("SetColumns"_w, [=] { return table->SetColumns(columns, flags); });
}

HRESULT CMapiUtil::GetRowCount(IMAPITable* table, ULONG flags, ULONG* count) {
    return RetryWhileBusy("GetRowCount"_w, [=] { return table->GetRowCount(flags, count); });
}

HRESULT CMapiUtil::SortTable(IMAPITable* table, SSortOrderSet* order, ULONG flags) {
    return RetryWhileBusy("SortTable"_w, [=] { return table->SortTable(order, flags); });
}

HRESULT CMapiUtil::SeekRow(IMAPITable* table, BOOKMARK origin, LONG rowCount, LONG* rowsSought) {
    return RetryWhileBusy("SeekRow"_w, [=] { return table->SeekRow(origin, rowCount, rowsSought); });
}
