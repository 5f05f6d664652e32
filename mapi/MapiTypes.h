// Extended MAPI's structures: properties, rows, names, entry identifiers, address lists, and what carries them.
//
// Everything here is data as it crosses the interfaces of MAPI: layouts are as published for 64-bit systems, and each
// structure's proof stands beside it. Names and spellings are MAPI's own. Nothing here allocates or frees; arrays and
// texts belong to whoever the interface that handed them over says they belong to.
//
// 8-bit and wide text: where a parameter is an LPTSTR, the flag MAPI_UNICODE of the call decides what it points at, not
// the type. LPTSTR is the wide form on both systems; a caller that means 8-bit text casts, and leaves the flag out.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Guid.h"

#include <cstddef>
#include <cstdint>

#ifndef _WIN32
using LPTSTR = WCHAR*;
using LPCTSTR = const WCHAR*;
using LPGUID = GUID*;
#endif
using LPCIID = const IID*;

using FLAGS = ULONG;
using LHANDLE = ULONG_PTR;
using BOOKMARK = ULONG;

// MAPI declares its trailing arrays with one element; the count beside each tells how many there are.
inline constexpr std::size_t MAPI_DIM = 1;

// ---- Property tags: the id in the high half, the type in the low half -----------------------------------------------

// Types of single values, [MS-OXCDATA] 2.11.1.
inline constexpr ULONG PT_UNSPECIFIED = 0x0000;  // asks for the stored type
inline constexpr ULONG PT_NULL = 0x0001;
inline constexpr ULONG PT_I2 = 0x0002;
inline constexpr ULONG PT_LONG = 0x0003;
inline constexpr ULONG PT_R4 = 0x0004;
inline constexpr ULONG PT_DOUBLE = 0x0005;
inline constexpr ULONG PT_CURRENCY = 0x0006;
inline constexpr ULONG PT_APPTIME = 0x0007;  // days since 1899-12-30
inline constexpr ULONG PT_ERROR = 0x000A;
inline constexpr ULONG PT_BOOLEAN = 0x000B;
inline constexpr ULONG PT_OBJECT = 0x000D;
inline constexpr ULONG PT_I8 = 0x0014;
inline constexpr ULONG PT_STRING8 = 0x001E;
inline constexpr ULONG PT_UNICODE = 0x001F;
inline constexpr ULONG PT_SYSTIME = 0x0040;
inline constexpr ULONG PT_CLSID = 0x0048;
inline constexpr ULONG PT_SVREID = 0x00FB;        // a server's entry id; carried as PT_BINARY
inline constexpr ULONG PT_SRESTRICTION = 0x00FD;  // a pointer to an SRestriction, in lpszA
inline constexpr ULONG PT_ACTIONS = 0x00FE;       // a pointer to ACTIONS, in lpszA
inline constexpr ULONG PT_BINARY = 0x0102;

// Other names of the same types.
inline constexpr ULONG PT_SHORT = PT_I2;
inline constexpr ULONG PT_I4 = PT_LONG;
inline constexpr ULONG PT_FLOAT = PT_R4;
inline constexpr ULONG PT_R8 = PT_DOUBLE;
inline constexpr ULONG PT_LONGLONG = PT_I8;
inline constexpr ULONG PT_TSTRING = PT_UNICODE;
inline constexpr ULONG PT_RESTRICTION = PT_SRESTRICTION;

// Bits that turn a single type into an array, and an array's column into one row a value.
inline constexpr ULONG MV_FLAG = 0x1000;
inline constexpr ULONG MV_INSTANCE = 0x2000;
inline constexpr ULONG MVI_FLAG = MV_FLAG | MV_INSTANCE;

inline constexpr ULONG PT_MV_I2 = MV_FLAG | PT_I2;
inline constexpr ULONG PT_MV_LONG = MV_FLAG | PT_LONG;
inline constexpr ULONG PT_MV_R4 = MV_FLAG | PT_R4;
inline constexpr ULONG PT_MV_DOUBLE = MV_FLAG | PT_DOUBLE;
inline constexpr ULONG PT_MV_CURRENCY = MV_FLAG | PT_CURRENCY;
inline constexpr ULONG PT_MV_APPTIME = MV_FLAG | PT_APPTIME;
inline constexpr ULONG PT_MV_I8 = MV_FLAG | PT_I8;
inline constexpr ULONG PT_MV_STRING8 = MV_FLAG | PT_STRING8;
inline constexpr ULONG PT_MV_UNICODE = MV_FLAG | PT_UNICODE;
inline constexpr ULONG PT_MV_SYSTIME = MV_FLAG | PT_SYSTIME;
inline constexpr ULONG PT_MV_CLSID = MV_FLAG | PT_CLSID;
inline constexpr ULONG PT_MV_BINARY = MV_FLAG | PT_BINARY;

inline constexpr ULONG PT_MV_SHORT = PT_MV_I2;
inline constexpr ULONG PT_MV_I4 = PT_MV_LONG;
inline constexpr ULONG PT_MV_FLOAT = PT_MV_R4;
inline constexpr ULONG PT_MV_R8 = PT_MV_DOUBLE;
inline constexpr ULONG PT_MV_LONGLONG = PT_MV_I8;
inline constexpr ULONG PT_MV_TSTRING = PT_MV_UNICODE;

inline constexpr ULONG PROP_TYPE_MASK = 0x0000FFFF;

constexpr ULONG PROP_TYPE(ULONG tag) noexcept {
    return tag & PROP_TYPE_MASK;
}
constexpr ULONG PROP_ID(ULONG tag) noexcept {
    return tag >> 16;
}
constexpr ULONG PROP_TAG(ULONG type, ULONG id) noexcept {
    return (id << 16) | type;
}
constexpr ULONG CHANGE_PROP_TYPE(ULONG tag, ULONG type) noexcept {
    return (tag & ~PROP_TYPE_MASK) | type;
}

inline constexpr ULONG PROP_ID_NULL = 0;
inline constexpr ULONG PROP_ID_INVALID = 0xFFFF;
inline constexpr ULONG PR_NULL = PROP_TAG(PT_NULL, PROP_ID_NULL);

// ---- Identifiers and plain arrays -----------------------------------------------------------------------------------

// Sixteen bytes in the order of the file or wire, unlike a GUID's three numbers.
struct MAPIUID {
    BYTE ab[16];

    friend constexpr bool operator==(const MAPIUID&, const MAPIUID&) noexcept = default;
};
using LPMAPIUID = MAPIUID*;
static_assert(sizeof(MAPIUID) == 16 && alignof(MAPIUID) == 1);

struct ENTRYID {
    BYTE abFlags[4];
    BYTE ab[MAPI_DIM];
};
using LPENTRYID = ENTRYID*;
static_assert(sizeof(ENTRYID) == 5 && alignof(ENTRYID) == 1 && offsetof(ENTRYID, ab) == 4);

struct SPropTagArray {
    ULONG cValues;
    ULONG aulPropTag[MAPI_DIM];
};
using LPSPropTagArray = SPropTagArray*;
static_assert(sizeof(SPropTagArray) == 8 && alignof(SPropTagArray) == 4 && offsetof(SPropTagArray, aulPropTag) == 4);

struct SBinary {
    ULONG cb;
    LPBYTE lpb;
};
using LPSBinary = SBinary*;
static_assert(sizeof(SBinary) == 16 && offsetof(SBinary, lpb) == 8);

// ---- Multi-valued properties: a count and a pointer, all of one shape -----------------------------------------------

struct SShortArray {
    ULONG cValues;
    SHORT* lpi;
};

struct SGuidArray {
    ULONG cValues;
    GUID* lpguid;
};

struct SRealArray {
    ULONG cValues;
    float* lpflt;
};

struct SLongArray {
    ULONG cValues;
    LONG* lpl;
};

struct SLargeIntegerArray {
    ULONG cValues;
    LARGE_INTEGER* lpli;
};

struct SDateTimeArray {
    ULONG cValues;
    FILETIME* lpft;
};

struct SAppTimeArray {
    ULONG cValues;
    double* lpat;
};

struct SCurrencyArray {
    ULONG cValues;
    CURRENCY* lpcur;
};

struct SBinaryArray {
    ULONG cValues;
    SBinary* lpbin;
};

struct SDoubleArray {
    ULONG cValues;
    double* lpdbl;
};

struct SWStringArray {
    ULONG cValues;
    LPWSTR* lppszW;
};

struct SLPSTRArray {
    ULONG cValues;
    LPSTR* lppszA;
};

static_assert(sizeof(SShortArray) == 16 && offsetof(SShortArray, lpi) == 8);
static_assert(sizeof(SGuidArray) == 16 && offsetof(SGuidArray, lpguid) == 8);
static_assert(sizeof(SRealArray) == 16 && offsetof(SRealArray, lpflt) == 8);
static_assert(sizeof(SLongArray) == 16 && offsetof(SLongArray, lpl) == 8);
static_assert(sizeof(SLargeIntegerArray) == 16 && offsetof(SLargeIntegerArray, lpli) == 8);
static_assert(sizeof(SDateTimeArray) == 16 && offsetof(SDateTimeArray, lpft) == 8);
static_assert(sizeof(SAppTimeArray) == 16 && offsetof(SAppTimeArray, lpat) == 8);
static_assert(sizeof(SCurrencyArray) == 16 && offsetof(SCurrencyArray, lpcur) == 8);
static_assert(sizeof(SBinaryArray) == 16 && offsetof(SBinaryArray, lpbin) == 8);
static_assert(sizeof(SDoubleArray) == 16 && offsetof(SDoubleArray, lpdbl) == 8);
static_assert(sizeof(SWStringArray) == 16 && offsetof(SWStringArray, lppszW) == 8);
static_assert(sizeof(SLPSTRArray) == 16 && offsetof(SLPSTRArray, lppszA) == 8);

using ENTRYLIST = SBinaryArray;
using LPENTRYLIST = ENTRYLIST*;

// ---- Properties, problems and rows ----------------------------------------------------------------------------------

// One property. The type in the tag's low half says which member of Value holds.
struct SPropValue {
    // What a property can hold, beside the type that selects the member.
    union Contents {
        SHORT i;                  // PT_I2
        LONG l;                   // PT_LONG
        ULONG ul;                 // PT_LONG, read as unsigned
        float flt;                // PT_R4
        double dbl;               // PT_DOUBLE
        USHORT b;                 // PT_BOOLEAN: 0 or 1; only these two bytes hold
        CURRENCY cur;             // PT_CURRENCY
        double at;                // PT_APPTIME
        FILETIME ft;              // PT_SYSTIME
        LPSTR lpszA;              // PT_STRING8
        SBinary bin;              // PT_BINARY
        LPWSTR lpszW;             // PT_UNICODE
        GUID* lpguid;             // PT_CLSID
        LARGE_INTEGER li;         // PT_I8
        SShortArray MVi;          // PT_MV_I2
        SLongArray MVl;           // PT_MV_LONG
        SRealArray MVflt;         // PT_MV_R4
        SDoubleArray MVdbl;       // PT_MV_DOUBLE
        SCurrencyArray MVcur;     // PT_MV_CURRENCY
        SAppTimeArray MVat;       // PT_MV_APPTIME
        SDateTimeArray MVft;      // PT_MV_SYSTIME
        SBinaryArray MVbin;       // PT_MV_BINARY
        SLPSTRArray MVszA;        // PT_MV_STRING8
        SWStringArray MVszW;      // PT_MV_UNICODE
        SGuidArray MVguid;        // PT_MV_CLSID
        SLargeIntegerArray MVli;  // PT_MV_I8
        SCODE err;                // PT_ERROR
        LONG x;                   // PT_NULL, PT_OBJECT: no value
    };

    ULONG ulPropTag;
    ULONG dwAlignPad;
    Contents Value;
};
using LPSPropValue = SPropValue*;
static_assert(sizeof(SPropValue) == 24 && alignof(SPropValue) == 8);
static_assert(sizeof(SPropValue::Contents) == 16 && offsetof(SPropValue, Value) == 8);

// Why one property of a call could not be set, copied or deleted.
struct SPropProblem {
    ULONG ulIndex;  // place of the property in the caller's array
    ULONG ulPropTag;
    SCODE scode;
};
using LPSPropProblem = SPropProblem*;
static_assert(sizeof(SPropProblem) == 12 && alignof(SPropProblem) == 4 && offsetof(SPropProblem, scode) == 8);

struct SPropProblemArray {
    ULONG cProblem;
    SPropProblem aProblem[MAPI_DIM];
};
using LPSPropProblemArray = SPropProblemArray*;
static_assert(sizeof(SPropProblemArray) == 16 && offsetof(SPropProblemArray, aProblem) == 4);

// What a property may be used for: GetAttribIMsgOnIStg gives one word for each tag asked.
struct SPropAttrArray {
    ULONG cValues;
    ULONG aPropAttr[MAPI_DIM];
};
using LPSPropAttrArray = SPropAttrArray*;
static_assert(sizeof(SPropAttrArray) == 8 && offsetof(SPropAttrArray, aPropAttr) == 4);

struct SRow {
    ULONG ulAdrEntryPad;  // makes a row and an ADRENTRY of one layout
    ULONG cValues;
    LPSPropValue lpProps;  // an allocation of its own for every row
};
using LPSRow = SRow*;
static_assert(sizeof(SRow) == 16 && offsetof(SRow, cValues) == 4 && offsetof(SRow, lpProps) == 8);

struct SRowSet {
    ULONG cRows;
    SRow aRow[MAPI_DIM];
};
using LPSRowSet = SRowSet*;
static_assert(sizeof(SRowSet) == 24 && alignof(SRowSet) == 8 && offsetof(SRowSet, aRow) == 8);

// The name of a named property: a number or a text within a property set.
struct MAPINAMEID {
    LPGUID lpguid;
    ULONG ulKind;  // MNID_ID or MNID_STRING
    union {
        LONG lID;
        LPWSTR lpwstrName;
    } Kind;
};
using LPMAPINAMEID = MAPINAMEID*;
static_assert(sizeof(MAPINAMEID) == 24 && offsetof(MAPINAMEID, ulKind) == 8 && offsetof(MAPINAMEID, Kind) == 16);

// ---- Flat lists: identifiers in one block, as they are stored -------------------------------------------------------

struct FLATENTRY {
    ULONG cb;
    BYTE abEntry[MAPI_DIM];
};
using LPFLATENTRY = FLATENTRY*;
static_assert(sizeof(FLATENTRY) == 8 && alignof(FLATENTRY) == 4 && offsetof(FLATENTRY, abEntry) == 4);

// PR_REPLY_RECIPIENT_ENTRIES and the like: FLATENTRYs behind each other, each padded to 4 bytes.
struct FLATENTRYLIST {
    ULONG cEntries;
    ULONG cbEntries;
    BYTE abEntries[MAPI_DIM];
};
using LPFLATENTRYLIST = FLATENTRYLIST*;
static_assert(sizeof(FLATENTRYLIST) == 12 && alignof(FLATENTRYLIST) == 4 && offsetof(FLATENTRYLIST, abEntries) == 8);

struct MTSID {
    ULONG cb;
    BYTE ab[MAPI_DIM];
};
using LPMTSID = MTSID*;
static_assert(sizeof(MTSID) == 8 && offsetof(MTSID, ab) == 4);

struct FLATMTSIDLIST {
    ULONG cMTSIDs;
    ULONG cbMTSIDs;
    BYTE abMTSIDs[MAPI_DIM];
};
using LPFLATMTSIDLIST = FLATMTSIDLIST*;
static_assert(sizeof(FLATMTSIDLIST) == 12 && offsetof(FLATMTSIDLIST, abMTSIDs) == 8);

// ---- Address book ---------------------------------------------------------------------------------------------------

struct ADRENTRY {
    ULONG ulReserved1;
    ULONG cValues;
    LPSPropValue rgPropVals;  // an allocation of its own for every entry
};
using LPADRENTRY = ADRENTRY*;
static_assert(sizeof(ADRENTRY) == 16 && offsetof(ADRENTRY, cValues) == 4 && offsetof(ADRENTRY, rgPropVals) == 8);

struct ADRLIST {
    ULONG cEntries;
    ADRENTRY aEntries[MAPI_DIM];
};
using LPADRLIST = ADRLIST*;
static_assert(sizeof(ADRLIST) == 24 && alignof(ADRLIST) == 8 && offsetof(ADRLIST, aEntries) == 8);

// One word a name: MAPI_UNRESOLVED, MAPI_AMBIGUOUS or MAPI_RESOLVED.
struct FlagList {
    ULONG cFlags;
    ULONG ulFlag[MAPI_DIM];
};
using LPFlagList = FlagList*;
static_assert(sizeof(FlagList) == 8 && offsetof(FlagList, ulFlag) == 4);

// Callbacks of the address book's dialogs.
using ACCELERATEABSDI = BOOL STDAPICALLTYPE(ULONG_PTR ulUIParam, LPVOID lpvmsg);
using LPFNABSDI = ACCELERATEABSDI*;
using DISMISSMODELESS = void STDAPICALLTYPE(ULONG_PTR ulUIParam, LPVOID lpvContext);
using LPFNDISMISS = DISMISSMODELESS*;
using LPFNBUTTON = SCODE(STDAPICALLTYPE*)(ULONG_PTR ulUIParam, LPVOID lpvContext, ULONG cbEntryID,
                                          LPENTRYID lpSelection, ULONG ulFlags);

struct SRestriction;

// What IAddrBook::Address shows and asks.
struct ADRPARM {
    ULONG cbABContEntryID;
    LPENTRYID lpABContEntryID;
    ULONG ulFlags;
    LPVOID lpReserved;
    ULONG ulHelpContext;
    LPTSTR lpszHelpFileName;
    LPFNABSDI lpfnABSDI;
    LPFNDISMISS lpfnDismiss;
    LPVOID lpvDismissContext;
    LPTSTR lpszCaption;
    LPTSTR lpszNewEntryTitle;
    LPTSTR lpszDestWellsTitle;
    ULONG cDestFields;
    ULONG nDestFieldFocus;
    LPTSTR* lppszDestTitles;
    ULONG* lpulDestComps;
    SRestriction* lpContRestriction;
    SRestriction* lpHierRestriction;
};
using LPADRPARM = ADRPARM*;
static_assert(sizeof(ADRPARM) == 136 && alignof(ADRPARM) == 8);
static_assert(offsetof(ADRPARM, lpABContEntryID) == 8 && offsetof(ADRPARM, ulFlags) == 16);
static_assert(offsetof(ADRPARM, lpReserved) == 24 && offsetof(ADRPARM, ulHelpContext) == 32);
static_assert(offsetof(ADRPARM, lpszHelpFileName) == 40 && offsetof(ADRPARM, lpfnABSDI) == 48);
static_assert(offsetof(ADRPARM, lpszCaption) == 72 && offsetof(ADRPARM, cDestFields) == 96);
static_assert(offsetof(ADRPARM, nDestFieldFocus) == 100 && offsetof(ADRPARM, lppszDestTitles) == 104);
static_assert(offsetof(ADRPARM, lpulDestComps) == 112 && offsetof(ADRPARM, lpContRestriction) == 120);
static_assert(offsetof(ADRPARM, lpHierRestriction) == 128);

// ---- Start-up, errors and streams of formatted text -----------------------------------------------------------------

struct MAPIINIT_0 {
    ULONG ulVersion;  // MAPI_INIT_VERSION
    ULONG ulFlags;
};
using MAPIINIT = MAPIINIT_0;
using LPMAPIINIT_0 = MAPIINIT_0*;
using LPMAPIINIT = MAPIINIT*;
static_assert(sizeof(MAPIINIT_0) == 8 && offsetof(MAPIINIT_0, ulFlags) == 4);

// An object's account of its last failure. One allocation: the texts go with the structure.
struct MAPIERROR {
    ULONG ulVersion;  // MAPI_ERROR_VERSION
    LPTSTR lpszError;
    LPTSTR lpszComponent;
    ULONG ulLowLevelError;
    ULONG ulContext;
};
using LPMAPIERROR = MAPIERROR*;
static_assert(sizeof(MAPIERROR) == 32 && offsetof(MAPIERROR, lpszError) == 8);
static_assert(offsetof(MAPIERROR, lpszComponent) == 16 && offsetof(MAPIERROR, ulLowLevelError) == 24);
static_assert(offsetof(MAPIERROR, ulContext) == 28);

// What WrapCompressedRTFStreamEx is asked for, and what it says of the stream.
struct RTF_WCSINFO {
    ULONG size;  // of this structure
    ULONG ulFlags;
    ULONG ulInCodePage;
    ULONG ulOutCodePage;
};
static_assert(sizeof(RTF_WCSINFO) == 16);

struct RTF_WCSRETINFO {
    ULONG size;  // of this structure
    ULONG ulStreamFlags;
};
static_assert(sizeof(RTF_WCSRETINFO) == 8);

// ---- Sizes in bytes of structures with n elements in their trailing array -------------------------------------------
// Wider than the ULONG that MAPI's allocators take, so that a foreign count cannot wrap: check before narrowing.

constexpr std::size_t CbNewENTRYID(std::size_t bytes) noexcept {
    return offsetof(ENTRYID, ab) + bytes;
}
constexpr std::size_t CbNewSPropTagArray(std::size_t tags) noexcept {
    return offsetof(SPropTagArray, aulPropTag) + tags * sizeof(ULONG);
}
constexpr std::size_t CbNewSPropProblemArray(std::size_t problems) noexcept {
    return offsetof(SPropProblemArray, aProblem) + problems * sizeof(SPropProblem);
}
constexpr std::size_t CbNewSPropAttrArray(std::size_t words) noexcept {
    return offsetof(SPropAttrArray, aPropAttr) + words * sizeof(ULONG);
}
constexpr std::size_t CbNewSRowSet(std::size_t rows) noexcept {
    return offsetof(SRowSet, aRow) + rows * sizeof(SRow);
}
constexpr std::size_t CbNewADRLIST(std::size_t entries) noexcept {
    return offsetof(ADRLIST, aEntries) + entries * sizeof(ADRENTRY);
}
constexpr std::size_t CbNewFlagList(std::size_t words) noexcept {
    return offsetof(FlagList, ulFlag) + words * sizeof(ULONG);
}
constexpr std::size_t CbNewFLATENTRY(std::size_t bytes) noexcept {
    return offsetof(FLATENTRY, abEntry) + bytes;
}
constexpr std::size_t CbNewFLATENTRYLIST(std::size_t bytes) noexcept {
    return offsetof(FLATENTRYLIST, abEntries) + bytes;
}

// A tag array with room for N tags: SizedSPropTagArray columns = {2, {PR_ENTRYID, PR_SUBJECT_W}}; the count can be left
// to deduction with MakeTagArray.
template <ULONG N>
struct SizedSPropTagArray {
    ULONG cValues = N;
    ULONG aulPropTag[N];

    // The form that MAPI's methods take. They never write through it, though they ask for a pointer to non-const.
    // NOLINTNEXTLINE(google-explicit-constructor): handed to a method as an array would be.
    operator LPSPropTagArray() const noexcept {
        return reinterpret_cast<LPSPropTagArray>(const_cast<SizedSPropTagArray*>(this));
    }
};
static_assert(sizeof(SizedSPropTagArray<3>) == CbNewSPropTagArray(3));

// The tags of a call as one constant: constexpr auto kColumns = MakeTagArray(PR_ENTRYID, PR_SUBJECT_W);
template <typename... Tags>
constexpr SizedSPropTagArray<sizeof...(Tags)> MakeTagArray(Tags... tags) noexcept {
    return {sizeof...(Tags), {tags...}};
}
