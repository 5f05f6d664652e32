// HRESULT codes and the tests on them. The values of the SDK; MAPI's own codes are in mapi/.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

constexpr bool SUCCEEDED(HRESULT hr) noexcept {
    return hr >= 0;
}
constexpr bool FAILED(HRESULT hr) noexcept {
    return hr < 0;
}

// Makes an HRESULT or SCODE from its 32 bits.
constexpr HRESULT MakeResultCode(std::uint32_t bits) noexcept {
    return static_cast<HRESULT>(bits);
}

// Win32 error number to HRESULT: facility 7, the low 16 bits kept; 0 and negative values pass.
constexpr HRESULT HRESULT_FROM_WIN32(std::uint32_t code) noexcept {
    return static_cast<HRESULT>(code) <= 0 ? static_cast<HRESULT>(code)
                                           : MakeResultCode((code & 0xFFFFU) | 0x80070000U);
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT NOERROR = 0;
inline constexpr HRESULT E_NOTIMPL = MakeResultCode(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = MakeResultCode(0x80004002);
inline constexpr HRESULT E_POINTER = MakeResultCode(0x80004003);
inline constexpr HRESULT E_ABORT = MakeResultCode(0x80004004);
inline constexpr HRESULT E_FAIL = MakeResultCode(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = MakeResultCode(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = MakeResultCode(0x80070005);
inline constexpr HRESULT E_HANDLE = MakeResultCode(0x80070006);
inline constexpr HRESULT E_OUTOFMEMORY = MakeResultCode(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = MakeResultCode(0x80070057);
inline constexpr HRESULT RPC_E_CHANGED_MODE = MakeResultCode(0x80010106);
inline constexpr HRESULT CO_E_CLASSSTRING = MakeResultCode(0x800401F3);

inline constexpr HRESULT DISP_E_TYPEMISMATCH = MakeResultCode(0x80020005);
inline constexpr HRESULT DISP_E_BADVARTYPE = MakeResultCode(0x80020008);
inline constexpr HRESULT DISP_E_OVERFLOW = MakeResultCode(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = MakeResultCode(0x8002000B);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = MakeResultCode(0x8002000D);

inline constexpr HRESULT REGDB_E_READREGDB = MakeResultCode(0x80040150);
inline constexpr HRESULT REGDB_E_WRITEREGDB = MakeResultCode(0x80040151);
inline constexpr HRESULT REGDB_E_KEYMISSING = MakeResultCode(0x80040152);
inline constexpr HRESULT REGDB_E_INVALIDVALUE = MakeResultCode(0x80040153);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeResultCode(0x80040154);
inline constexpr HRESULT REGDB_E_IIDNOTREG = MakeResultCode(0x80040155);
inline constexpr HRESULT REGDB_E_BADTHREADINGMODEL = MakeResultCode(0x80040156);
inline constexpr HRESULT OLEOBJ_E_NOVERBS = MakeResultCode(0x80040180);
inline constexpr HRESULT OLEOBJ_E_INVALIDVERB = MakeResultCode(0x80040181);
inline constexpr HRESULT OLEOBJ_S_INVALIDVERB = 0x00040180;
inline constexpr HRESULT OLEOBJ_S_CANNOT_DOVERB_NOW = 0x00040181;
inline constexpr HRESULT OLEOBJ_S_INVALIDHWND = 0x00040182;

inline constexpr HRESULT STG_E_INVALIDFUNCTION = MakeResultCode(0x80030001);
inline constexpr HRESULT STG_E_FILENOTFOUND = MakeResultCode(0x80030002);
inline constexpr HRESULT STG_E_PATHNOTFOUND = MakeResultCode(0x80030003);
inline constexpr HRESULT STG_E_TOOMANYOPENFILES = MakeResultCode(0x80030004);
inline constexpr HRESULT STG_E_ACCESSDENIED = MakeResultCode(0x80030005);
inline constexpr HRESULT STG_E_INVALIDHANDLE = MakeResultCode(0x80030006);
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = MakeResultCode(0x80030008);
inline constexpr HRESULT STG_E_INVALIDPOINTER = MakeResultCode(0x80030009);
inline constexpr HRESULT STG_E_NOMOREFILES = MakeResultCode(0x80030012);
inline constexpr HRESULT STG_E_DISKISWRITEPROTECTED = MakeResultCode(0x80030013);
inline constexpr HRESULT STG_E_SEEKERROR = MakeResultCode(0x80030019);
inline constexpr HRESULT STG_E_WRITEFAULT = MakeResultCode(0x8003001D);
inline constexpr HRESULT STG_E_READFAULT = MakeResultCode(0x8003001E);
inline constexpr HRESULT STG_E_SHAREVIOLATION = MakeResultCode(0x80030020);
inline constexpr HRESULT STG_E_LOCKVIOLATION = MakeResultCode(0x80030021);
inline constexpr HRESULT STG_E_FILEALREADYEXISTS = MakeResultCode(0x80030050);
inline constexpr HRESULT STG_E_INVALIDPARAMETER = MakeResultCode(0x80030057);
inline constexpr HRESULT STG_E_MEDIUMFULL = MakeResultCode(0x80030070);
inline constexpr HRESULT STG_E_PROPSETMISMATCHED = MakeResultCode(0x800300F0);
inline constexpr HRESULT STG_E_ABNORMALAPIEXIT = MakeResultCode(0x800300FA);
inline constexpr HRESULT STG_E_INVALIDHEADER = MakeResultCode(0x800300FB);
inline constexpr HRESULT STG_E_INVALIDNAME = MakeResultCode(0x800300FC);
inline constexpr HRESULT STG_E_UNKNOWN = MakeResultCode(0x800300FD);
inline constexpr HRESULT STG_E_UNIMPLEMENTEDFUNCTION = MakeResultCode(0x800300FE);
inline constexpr HRESULT STG_E_INVALIDFLAG = MakeResultCode(0x800300FF);
inline constexpr HRESULT STG_E_INUSE = MakeResultCode(0x80030100);
inline constexpr HRESULT STG_E_NOTCURRENT = MakeResultCode(0x80030101);
inline constexpr HRESULT STG_E_REVERTED = MakeResultCode(0x80030102);
inline constexpr HRESULT STG_E_CANTSAVE = MakeResultCode(0x80030103);
inline constexpr HRESULT STG_E_OLDFORMAT = MakeResultCode(0x80030104);
inline constexpr HRESULT STG_E_OLDDLL = MakeResultCode(0x80030105);
inline constexpr HRESULT STG_E_SHAREREQUIRED = MakeResultCode(0x80030106);
inline constexpr HRESULT STG_E_NOTFILEBASEDSTORAGE = MakeResultCode(0x80030107);
inline constexpr HRESULT STG_E_EXTANTMARSHALLINGS = MakeResultCode(0x80030108);
inline constexpr HRESULT STG_E_DOCFILECORRUPT = MakeResultCode(0x80030109);
inline constexpr HRESULT STG_E_BADBASEADDRESS = MakeResultCode(0x80030110);
inline constexpr HRESULT STG_E_DOCFILETOOLARGE = MakeResultCode(0x80030111);
inline constexpr HRESULT STG_E_NOTSIMPLEFORMAT = MakeResultCode(0x80030112);
inline constexpr HRESULT STG_E_INCOMPLETE = MakeResultCode(0x80030201);
inline constexpr HRESULT STG_E_TERMINATED = MakeResultCode(0x80030202);
inline constexpr HRESULT STG_E_STATUS_COPY_PROTECTION_FAILURE = MakeResultCode(0x80030305);
inline constexpr HRESULT STG_E_CSS_AUTHENTICATION_FAILURE = MakeResultCode(0x80030306);
inline constexpr HRESULT STG_E_CSS_KEY_NOT_PRESENT = MakeResultCode(0x80030307);
inline constexpr HRESULT STG_E_CSS_KEY_NOT_ESTABLISHED = MakeResultCode(0x80030308);
inline constexpr HRESULT STG_E_CSS_SCRAMBLED_SECTOR = MakeResultCode(0x80030309);
inline constexpr HRESULT STG_E_CSS_REGION_MISMATCH = MakeResultCode(0x8003030A);
inline constexpr HRESULT STG_E_RESETS_EXHAUSTED = MakeResultCode(0x8003030B);
inline constexpr HRESULT STG_S_CONVERTED = 0x00030200;
inline constexpr HRESULT STG_S_BLOCK = 0x00030201;
inline constexpr HRESULT STG_S_RETRYNOW = 0x00030202;
inline constexpr HRESULT STG_S_MONITORING = 0x00030203;
inline constexpr HRESULT STG_S_MULTIPLEOPENS = 0x00030204;
inline constexpr HRESULT STG_S_CONSOLIDATIONFAILED = 0x00030205;
inline constexpr HRESULT STG_S_CANNOTCONSOLIDATE = 0x00030206;

#endif
