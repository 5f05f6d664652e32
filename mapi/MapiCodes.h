// Result codes of Extended MAPI, and of its incremental synchronization (SYNC_*). The codes that all of COM shares are
// in platform/ResultCodes.h. Some names stand for one of those, and some for one another's value.
//
// MAPI_E_* and SYNC_E_* are failures, MAPI_W_* and SYNC_W_* successes that say more than S_OK. The small numbers of
// Simple MAPI belong to another interface and are not here.
#pragma once

#include "platform/ResultCodes.h"

#include <cstdint>

namespace vx_mapi_codes {

constexpr HRESULT Code(std::uint32_t bits) noexcept {
    return static_cast<HRESULT>(bits);
}

}  // namespace vx_mapi_codes

// COM's own, under MAPI's names.
inline constexpr HRESULT MAPI_E_NO_ACCESS = E_ACCESSDENIED;
inline constexpr HRESULT MAPI_E_NOT_ENOUGH_MEMORY = E_OUTOFMEMORY;
inline constexpr HRESULT MAPI_E_INVALID_PARAMETER = E_INVALIDARG;
inline constexpr HRESULT MAPI_E_INTERFACE_NOT_SUPPORTED = E_NOINTERFACE;
inline constexpr HRESULT MAPI_E_CALL_FAILED = E_FAIL;

// Of any object, and of logging on.
inline constexpr HRESULT MAPI_E_NO_SUPPORT = vx_mapi_codes::Code(0x80040102);
inline constexpr HRESULT MAPI_E_BAD_CHARWIDTH = vx_mapi_codes::Code(0x80040103);
inline constexpr HRESULT MAPI_E_STRING_TOO_LONG = vx_mapi_codes::Code(0x80040105);
inline constexpr HRESULT MAPI_E_UNKNOWN_FLAGS = vx_mapi_codes::Code(0x80040106);
inline constexpr HRESULT MAPI_E_INVALID_ENTRYID = vx_mapi_codes::Code(0x80040107);
inline constexpr HRESULT MAPI_E_INVALID_OBJECT = vx_mapi_codes::Code(0x80040108);
inline constexpr HRESULT MAPI_E_OBJECT_CHANGED = vx_mapi_codes::Code(0x80040109);
inline constexpr HRESULT MAPI_E_OBJECT_DELETED = vx_mapi_codes::Code(0x8004010A);
inline constexpr HRESULT MAPI_E_BUSY = vx_mapi_codes::Code(0x8004010B);
inline constexpr HRESULT MAPI_E_NOT_ENOUGH_DISK = vx_mapi_codes::Code(0x8004010D);
inline constexpr HRESULT MAPI_E_NOT_ENOUGH_RESOURCES = vx_mapi_codes::Code(0x8004010E);
inline constexpr HRESULT MAPI_E_NOT_FOUND = vx_mapi_codes::Code(0x8004010F);
inline constexpr HRESULT MAPI_E_VERSION = vx_mapi_codes::Code(0x80040110);
inline constexpr HRESULT MAPI_E_LOGON_FAILED = vx_mapi_codes::Code(0x80040111);
inline constexpr HRESULT MAPI_E_SESSION_LIMIT = vx_mapi_codes::Code(0x80040112);
inline constexpr HRESULT MAPI_E_USER_CANCEL = vx_mapi_codes::Code(0x80040113);
inline constexpr HRESULT MAPI_E_UNABLE_TO_ABORT = vx_mapi_codes::Code(0x80040114);
inline constexpr HRESULT MAPI_E_NETWORK_ERROR = vx_mapi_codes::Code(0x80040115);
inline constexpr HRESULT MAPI_E_DISK_ERROR = vx_mapi_codes::Code(0x80040116);
inline constexpr HRESULT MAPI_E_TOO_COMPLEX = vx_mapi_codes::Code(0x80040117);
inline constexpr HRESULT MAPI_E_BAD_COLUMN = vx_mapi_codes::Code(0x80040118);
inline constexpr HRESULT MAPI_E_EXTENDED_ERROR = vx_mapi_codes::Code(0x80040119);
inline constexpr HRESULT MAPI_E_COMPUTED = vx_mapi_codes::Code(0x8004011A);
inline constexpr HRESULT MAPI_E_CORRUPT_DATA = vx_mapi_codes::Code(0x8004011B);
inline constexpr HRESULT MAPI_E_UNCONFIGURED = vx_mapi_codes::Code(0x8004011C);
inline constexpr HRESULT MAPI_E_FAILONEPROVIDER = vx_mapi_codes::Code(0x8004011D);
inline constexpr HRESULT MAPI_E_UNKNOWN_CPID = vx_mapi_codes::Code(0x8004011E);
inline constexpr HRESULT MAPI_E_UNKNOWN_LCID = vx_mapi_codes::Code(0x8004011F);
inline constexpr HRESULT MAPI_E_PASSWORD_CHANGE_REQUIRED = vx_mapi_codes::Code(0x80040120);
inline constexpr HRESULT MAPI_E_PASSWORD_EXPIRED = vx_mapi_codes::Code(0x80040121);
inline constexpr HRESULT MAPI_E_INVALID_WORKSTATION_ACCOUNT = vx_mapi_codes::Code(0x80040122);
inline constexpr HRESULT MAPI_E_INVALID_ACCESS_TIME = vx_mapi_codes::Code(0x80040123);
inline constexpr HRESULT MAPI_E_ACCOUNT_DISABLED = vx_mapi_codes::Code(0x80040124);
inline constexpr HRESULT MAPI_E_RECONNECTED = vx_mapi_codes::Code(0x80040125);
inline constexpr HRESULT MAPI_E_OFFLINE = vx_mapi_codes::Code(0x80040126);

// Sessions, entry identifiers, services.
inline constexpr HRESULT MAPI_E_END_OF_SESSION = vx_mapi_codes::Code(0x80040200);
inline constexpr HRESULT MAPI_E_UNKNOWN_ENTRYID = vx_mapi_codes::Code(0x80040201);
inline constexpr HRESULT MAPI_E_MISSING_REQUIRED_COLUMN = vx_mapi_codes::Code(0x80040202);
inline constexpr HRESULT MAPI_W_NO_SERVICE = 0x00040203;

// Properties.
inline constexpr HRESULT MAPI_E_BAD_VALUE = vx_mapi_codes::Code(0x80040301);
inline constexpr HRESULT MAPI_E_INVALID_TYPE = vx_mapi_codes::Code(0x80040302);
inline constexpr HRESULT MAPI_E_TYPE_NO_SUPPORT = vx_mapi_codes::Code(0x80040303);
inline constexpr HRESULT MAPI_E_UNEXPECTED_TYPE = vx_mapi_codes::Code(0x80040304);
inline constexpr HRESULT MAPI_E_TOO_BIG = vx_mapi_codes::Code(0x80040305);
inline constexpr HRESULT MAPI_E_DECLINE_COPY = vx_mapi_codes::Code(0x80040306);
inline constexpr HRESULT MAPI_E_UNEXPECTED_ID = vx_mapi_codes::Code(0x80040307);
inline constexpr HRESULT MAPI_W_ERRORS_RETURNED = 0x00040380;

// Tables.
inline constexpr HRESULT MAPI_E_UNABLE_TO_COMPLETE = vx_mapi_codes::Code(0x80040400);
inline constexpr HRESULT MAPI_E_TIMEOUT = vx_mapi_codes::Code(0x80040401);
inline constexpr HRESULT MAPI_E_TABLE_EMPTY = vx_mapi_codes::Code(0x80040402);
inline constexpr HRESULT MAPI_E_TABLE_TOO_BIG = vx_mapi_codes::Code(0x80040403);
inline constexpr HRESULT MAPI_E_INVALID_BOOKMARK = vx_mapi_codes::Code(0x80040405);
inline constexpr HRESULT MAPI_W_POSITION_CHANGED = 0x00040481;
inline constexpr HRESULT MAPI_W_APPROX_COUNT = 0x00040482;

// Transport and queues.
inline constexpr HRESULT MAPI_E_WAIT = vx_mapi_codes::Code(0x80040500);
inline constexpr HRESULT MAPI_E_CANCEL = vx_mapi_codes::Code(0x80040501);
inline constexpr HRESULT MAPI_E_NOT_ME = vx_mapi_codes::Code(0x80040502);
inline constexpr HRESULT MAPI_W_CANCEL_MESSAGE = 0x00040580;

// Stores, folders and messages.
inline constexpr HRESULT MAPI_E_CORRUPT_STORE = vx_mapi_codes::Code(0x80040600);
inline constexpr HRESULT MAPI_E_NOT_IN_QUEUE = vx_mapi_codes::Code(0x80040601);
inline constexpr HRESULT MAPI_E_NO_SUPPRESS = vx_mapi_codes::Code(0x80040602);
inline constexpr HRESULT MAPI_E_COLLISION = vx_mapi_codes::Code(0x80040604);
inline constexpr HRESULT MAPI_E_NOT_INITIALIZED = vx_mapi_codes::Code(0x80040605);
inline constexpr HRESULT MAPI_E_NON_STANDARD = vx_mapi_codes::Code(0x80040606);
inline constexpr HRESULT MAPI_E_NO_RECIPIENTS = vx_mapi_codes::Code(0x80040607);
inline constexpr HRESULT MAPI_E_SUBMITTED = vx_mapi_codes::Code(0x80040608);
inline constexpr HRESULT MAPI_E_HAS_FOLDERS = vx_mapi_codes::Code(0x80040609);
inline constexpr HRESULT MAPI_E_HAS_MESSAGES = vx_mapi_codes::Code(0x8004060A);
inline constexpr HRESULT MAPI_E_FOLDER_CYCLE = vx_mapi_codes::Code(0x8004060B);
inline constexpr HRESULT MAPI_E_STORE_FULL = vx_mapi_codes::Code(0x8004060C);
inline constexpr HRESULT MAPI_W_PARTIAL_COMPLETION = 0x00040680;

// Address book, and what no code of its own exists for.
inline constexpr HRESULT MAPI_E_AMBIGUOUS_RECIP = vx_mapi_codes::Code(0x80040700);
inline constexpr HRESULT MAPI_E_NOT_IMPLEMENTED = vx_mapi_codes::Code(0x80040FFF);

// Synchronization, [MS-OXCDATA] 2.4. SYNC_E_CYCLE is the later name of SYNC_E_INCEST.
inline constexpr HRESULT SYNC_E_INVALID_PARAMETER = E_INVALIDARG;
inline constexpr HRESULT SYNC_E_UNKNOWN_FLAGS = MAPI_E_UNKNOWN_FLAGS;
inline constexpr HRESULT SYNC_E_OBJECT_DELETED = vx_mapi_codes::Code(0x80040800);
inline constexpr HRESULT SYNC_E_IGNORE = vx_mapi_codes::Code(0x80040801);
inline constexpr HRESULT SYNC_E_CONFLICT = vx_mapi_codes::Code(0x80040802);
inline constexpr HRESULT SYNC_E_NO_PARENT = vx_mapi_codes::Code(0x80040803);
inline constexpr HRESULT SYNC_E_CYCLE = vx_mapi_codes::Code(0x80040804);
inline constexpr HRESULT SYNC_E_INCEST = vx_mapi_codes::Code(0x80040804);
inline constexpr HRESULT SYNC_E_UNSYNCHRONIZED = vx_mapi_codes::Code(0x80040805);
inline constexpr HRESULT SYNC_W_PROGRESS = 0x00040820;
inline constexpr HRESULT SYNC_W_CLIENT_CHANGE_NEWER = 0x00040821;
inline constexpr HRESULT SYNC_E_ERROR = E_FAIL;
