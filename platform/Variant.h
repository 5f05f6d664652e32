// VARIANT: a value with its type, 24 bytes on 64-bit systems, and the operations that own what it holds.
//
// A VARIANT is plain memory: copying the bytes copies no ownership. VariantInit makes one of any memory, VariantClear
// gives up what it holds, VariantCopy makes a second owner. Any thread may call these, one VARIANT in one thread at a
// time.
//
// Linux: the types and members that Windows has, except IDispatch's and IRecordInfo's methods: a VT_DISPATCH value is
// released and shared through IUnknown, and a VT_RECORD value is refused (DISP_E_BADVARTYPE).
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Bstr.h"
#include "platform/ResultCodes.h"
#include "platform/Unknown.h"

#include <cstddef>

#ifndef _WIN32

struct SAFEARRAY;
struct VARIANT;
struct IDispatch;    // declared only: nothing here calls its methods
struct IRecordInfo;  // declared only: records are refused

using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
using FLOAT = float;
using DOUBLE = double;
using DATE = double;  // days since 1899-12-30, the fraction being the time of day

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

// The types of a value. VT_ARRAY and VT_BYREF are added to one of them; VT_VECTOR and the types from VT_VOID up belong
// to property sets and type libraries, and no VARIANT has them.
enum VARENUM {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_CARRAY = 28,
    VT_USERDEFINED = 29,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_RECORD = 36,
    VT_INT_PTR = 37,
    VT_UINT_PTR = 38,
    VT_FILETIME = 64,
    VT_BLOB = 65,
    VT_STREAM = 66,
    VT_STORAGE = 67,
    VT_STREAMED_OBJECT = 68,
    VT_STORED_OBJECT = 69,
    VT_BLOB_OBJECT = 70,
    VT_CF = 71,
    VT_CLSID = 72,
    VT_VERSIONED_STREAM = 73,
    VT_BSTR_BLOB = 0x0FFF,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_RESERVED = 0x8000,
    VT_ILLEGAL = 0xFFFF,
    VT_ILLEGALMASKED = 0x0FFF,
    VT_TYPEMASK = 0x0FFF,
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"  // members without names inside members without names, as published

// A 96-bit integer with a sign and a power of ten. Its first two bytes are a VARIANT's type.
struct DECIMAL {
    USHORT wReserved;
    union {
        struct {
            BYTE scale;  // digits after the point, 0 to 28
            BYTE sign;   // 0, or 0x80 for a negative number
        };
        USHORT signscale;
    };
    ULONG Hi32;
    union {
        struct {
            ULONG Lo32;
            ULONG Mid32;
        };
        ULONGLONG Lo64;
    };
};
static_assert(sizeof(DECIMAL) == 16 && offsetof(DECIMAL, Lo64) == 8);

// The type is in `vt`; it says which one of the members below holds the value. With VT_BYREF the value is elsewhere,
// owned by somebody else, and the pointer to it is the member whose name starts with p (or `byref`). With VT_ARRAY it
// is `parray`. No member has a name between `vt` and the value, as in the SDK without NONAMELESSUNION.
struct VARIANT {
    union {
        struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                CHAR cVal;             // VT_I1
                BYTE bVal;             // VT_UI1
                SHORT iVal;            // VT_I2
                USHORT uiVal;          // VT_UI2
                LONG lVal;             // VT_I4
                ULONG ulVal;           // VT_UI4
                LONGLONG llVal;        // VT_I8
                ULONGLONG ullVal;      // VT_UI8
                INT intVal;            // VT_INT
                UINT uintVal;          // VT_UINT
                FLOAT fltVal;          // VT_R4
                DOUBLE dblVal;         // VT_R8
                VARIANT_BOOL boolVal;  // VT_BOOL
                SCODE scode;           // VT_ERROR
                CY cyVal;              // VT_CY
                DATE date;             // VT_DATE
                BSTR bstrVal;          // VT_BSTR, owned
                IUnknown* punkVal;     // VT_UNKNOWN, one reference owned
                IDispatch* pdispVal;   // VT_DISPATCH, one reference owned
                SAFEARRAY* parray;     // VT_ARRAY, owned
                CHAR* pcVal;
                BYTE* pbVal;
                SHORT* piVal;
                USHORT* puiVal;
                LONG* plVal;
                ULONG* pulVal;
                LONGLONG* pllVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                DECIMAL* pdecVal;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                void* byref;
                struct {
                    void* pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal;  // VT_DECIMAL: fills the VARIANT, its first two bytes being `vt`
    };
};

#pragma GCC diagnostic pop

using VARIANTARG = VARIANT;
using LPVARIANT = VARIANT*;

static_assert(sizeof(VARIANT) == 24 && alignof(VARIANT) == 8 && offsetof(VARIANT, vt) == 0);
static_assert(offsetof(VARIANT, llVal) == 8 && offsetof(VARIANT, pRecInfo) == 16 && offsetof(VARIANT, decVal) == 0);

// Makes *pvarg an empty value, without looking at what it was.
void VariantInit(VARIANTARG* pvarg) noexcept;

// Frees, destroys or releases what *pvarg holds and leaves VT_EMPTY; what a VT_BYREF value points at stays.
// DISP_E_BADVARTYPE for a type that no VARIANT has, with *pvarg as it was; DISP_E_ARRAYISLOCKED for a locked array.
// Linux: *pvarg is as it was after a locked array too. E_INVALIDARG for null. Arrays nested in arrays to any depth take
// no stack (SafeArrayDestroy).
HRESULT VariantClear(VARIANTARG* pvarg) noexcept;

// Clears *pvargDest and copies *pvargSrc into it, with what it holds: texts and arrays are duplicated (a null BSTR
// becomes an empty one), interfaces get one more reference. A VT_BYREF value is copied as the pointer that it is.
// VariantClear's codes for either side, and E_OUTOFMEMORY. *pvargDest is untouched when *pvargSrc has a bad type.
// Linux: *pvargDest is untouched after every failure, and may be what owns *pvargSrc.
HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) noexcept;

#endif
