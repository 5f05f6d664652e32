// What MAPI tells an advise sink: one structure an event, and the union that carries them.
//
// A notification and all it points at belong to the sender and live for the length of the call to OnNotify.
#pragma once

#include "mapi/MapiTypes.h"

// ---- Events: masks for Advise, and the value of ulEventType ---------------------------------------------------------

inline constexpr ULONG fnevCriticalError = 0x00000001;
inline constexpr ULONG fnevNewMail = 0x00000002;
inline constexpr ULONG fnevObjectCreated = 0x00000004;
inline constexpr ULONG fnevObjectDeleted = 0x00000008;
inline constexpr ULONG fnevObjectModified = 0x00000010;
inline constexpr ULONG fnevObjectMoved = 0x00000020;
inline constexpr ULONG fnevObjectCopied = 0x00000040;
inline constexpr ULONG fnevSearchComplete = 0x00000080;
inline constexpr ULONG fnevTableModified = 0x00000100;
inline constexpr ULONG fnevStatusObjectModified = 0x00000200;
inline constexpr ULONG fnevReservedForMapi = 0x40000000;
inline constexpr ULONG fnevExtended = 0x80000000;

// What happened to a table.
inline constexpr ULONG TABLE_CHANGED = 1;
inline constexpr ULONG TABLE_ERROR = 2;
inline constexpr ULONG TABLE_ROW_ADDED = 3;
inline constexpr ULONG TABLE_ROW_DELETED = 4;
inline constexpr ULONG TABLE_ROW_MODIFIED = 5;
inline constexpr ULONG TABLE_SORT_DONE = 6;
inline constexpr ULONG TABLE_RESTRICT_DONE = 7;
inline constexpr ULONG TABLE_SETCOL_DONE = 8;
inline constexpr ULONG TABLE_RELOAD = 9;

// ---- Structures -----------------------------------------------------------------------------------------------------

struct ERROR_NOTIFICATION {
    ULONG cbEntryID;
    LPENTRYID lpEntryID;
    SCODE scode;
    ULONG ulFlags;
    LPMAPIERROR lpMAPIError;
};
static_assert(sizeof(ERROR_NOTIFICATION) == 32 && offsetof(ERROR_NOTIFICATION, lpEntryID) == 8);
static_assert(offsetof(ERROR_NOTIFICATION, scode) == 16 && offsetof(ERROR_NOTIFICATION, ulFlags) == 20);
static_assert(offsetof(ERROR_NOTIFICATION, lpMAPIError) == 24);

struct NEWMAIL_NOTIFICATION {
    ULONG cbEntryID;
    LPENTRYID lpEntryID;
    ULONG cbParentID;
    LPENTRYID lpParentID;
    ULONG ulFlags;  // MAPI_UNICODE when lpszMessageClass is wide
    LPTSTR lpszMessageClass;
    ULONG ulMessageFlags;
};
static_assert(sizeof(NEWMAIL_NOTIFICATION) == 56 && offsetof(NEWMAIL_NOTIFICATION, lpEntryID) == 8);
static_assert(offsetof(NEWMAIL_NOTIFICATION, cbParentID) == 16 && offsetof(NEWMAIL_NOTIFICATION, lpParentID) == 24);
static_assert(offsetof(NEWMAIL_NOTIFICATION, ulFlags) == 32 && offsetof(NEWMAIL_NOTIFICATION, lpszMessageClass) == 40);
static_assert(offsetof(NEWMAIL_NOTIFICATION, ulMessageFlags) == 48);

struct OBJECT_NOTIFICATION {
    ULONG cbEntryID;
    LPENTRYID lpEntryID;
    ULONG ulObjType;
    ULONG cbParentID;
    LPENTRYID lpParentID;
    ULONG cbOldID;
    LPENTRYID lpOldID;
    ULONG cbOldParentID;
    LPENTRYID lpOldParentID;
    LPSPropTagArray lpPropTagArray;  // what changed; null when not known
};
static_assert(sizeof(OBJECT_NOTIFICATION) == 72 && offsetof(OBJECT_NOTIFICATION, lpEntryID) == 8);
static_assert(offsetof(OBJECT_NOTIFICATION, ulObjType) == 16 && offsetof(OBJECT_NOTIFICATION, cbParentID) == 20);
static_assert(offsetof(OBJECT_NOTIFICATION, lpParentID) == 24 && offsetof(OBJECT_NOTIFICATION, cbOldID) == 32);
static_assert(offsetof(OBJECT_NOTIFICATION, lpOldID) == 40 && offsetof(OBJECT_NOTIFICATION, cbOldParentID) == 48);
static_assert(offsetof(OBJECT_NOTIFICATION, lpOldParentID) == 56);
static_assert(offsetof(OBJECT_NOTIFICATION, lpPropTagArray) == 64);

struct TABLE_NOTIFICATION {
    ULONG ulTableEvent;    // TABLE_*
    HRESULT hResult;       // of TABLE_ERROR
    SPropValue propIndex;  // PR_INSTANCE_KEY of the row
    SPropValue propPrior;  // that of the row before it
    SRow row;
    ULONG ulPad;
};
static_assert(sizeof(TABLE_NOTIFICATION) == 80 && offsetof(TABLE_NOTIFICATION, hResult) == 4);
static_assert(offsetof(TABLE_NOTIFICATION, propIndex) == 8 && offsetof(TABLE_NOTIFICATION, propPrior) == 32);
static_assert(offsetof(TABLE_NOTIFICATION, row) == 56 && offsetof(TABLE_NOTIFICATION, ulPad) == 72);

struct EXTENDED_NOTIFICATION {
    ULONG ulEvent;
    ULONG cb;
    LPBYTE pbEventParameters;
};
static_assert(sizeof(EXTENDED_NOTIFICATION) == 16 && offsetof(EXTENDED_NOTIFICATION, cb) == 4);
static_assert(offsetof(EXTENDED_NOTIFICATION, pbEventParameters) == 8);

struct STATUS_OBJECT_NOTIFICATION {
    ULONG cbEntryID;
    LPENTRYID lpEntryID;
    ULONG cValues;
    LPSPropValue lpPropVals;
};
static_assert(sizeof(STATUS_OBJECT_NOTIFICATION) == 32 && offsetof(STATUS_OBJECT_NOTIFICATION, lpEntryID) == 8);
static_assert(offsetof(STATUS_OBJECT_NOTIFICATION, cValues) == 16);
static_assert(offsetof(STATUS_OBJECT_NOTIFICATION, lpPropVals) == 24);

struct NOTIFICATION {
    ULONG ulEventType;  // one fnev* bit, which says which member of info holds
    ULONG ulAlignPad;
    union {
        ERROR_NOTIFICATION err;
        NEWMAIL_NOTIFICATION newmail;
        OBJECT_NOTIFICATION obj;
        TABLE_NOTIFICATION tab;
        EXTENDED_NOTIFICATION ext;
        STATUS_OBJECT_NOTIFICATION statobj;
    } info;
};
using LPNOTIFICATION = NOTIFICATION*;
static_assert(sizeof(NOTIFICATION) == 88 && alignof(NOTIFICATION) == 8 && offsetof(NOTIFICATION, info) == 8);
