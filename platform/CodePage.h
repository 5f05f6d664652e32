// Text in numbered code pages to and from UTF-16, with Windows' names and Windows' rules.
//
// Any thread may call any of these at any time. A page's tables are built at its first use and kept for the life of the
// process (about 256 KB for a page with double-byte characters, half of that for others).
//
// Linux:
// - The pages are 437, 737, 775, 850, 852, 855, 857, 858, 860 to 866, 869, 874, 932, 936, 949, 950, 1250 to 1258,
//   1361, 10000, 10007, 10017, 10029, 20127, 20866, 20936, 20949, 21866, 28591 to 28599, 28603, 28605, 38598, 51932,
//   51936 and 51949; of EBCDIC 37, 500, 870, 875, 1026, 1047, 1140 to 1149, 20273, 20277, 20278, 20280, 20284, 20285,
//   20290, 20297, 20420, 20423, 20424, 20871, 20880, 20905 and 21025; of 7 bits 50220 to 50222, 50225, 50227, 52936
//   and 65000; 54936 (GB 18030); 65001. Missing: 42, 708, 720, 20838, 20924, 20932, ISCII, the mixed EBCDIC pages and
//   some of the Macintosh's.
// - Mappings are the C library's with Windows' differences laid over them. A page whose mapping the C library lacks
//   on a machine is no valid page there. Kept from the C library: the later editions of 28597 and 28598, with the
//   euro and the marks of direction, and the compatibility letters of 1361, where Windows has conjoining ones.
// - The Unicode pages 1200, 1201, 12000, 12001, 65005 and 65006 (UTF-16 and UTF-32, little-endian first) convert too;
//   Windows refuses them here. A negative length of theirs ends with one zero unit of the page's own width.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

// Pages that are named by what they are for. CP_MACCP is 10000; the others of the first four are GetACP's.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;
inline constexpr UINT CP_MACCP = 2;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF7 = 65000;
inline constexpr UINT CP_UTF8 = 65001;

// MultiByteToWideChar's flags. MB_PRECOMPOSED asks for what is done anyway.
inline constexpr DWORD MB_PRECOMPOSED = 0x1;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;

// WideCharToMultiByte's flags.
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

inline constexpr int MAX_LEADBYTES = 12;
inline constexpr int MAX_DEFAULTCHAR = 2;

struct CPINFO {
    UINT MaxCharSize;                   // bytes that one character can take
    BYTE DefaultChar[MAX_DEFAULTCHAR];  // what stands for a character that the page lacks; zero-filled
    BYTE LeadByte[MAX_LEADBYTES];       // pairs of first and last, ended by a pair of zeros
};

// Bytes of a page to UTF-16. Gives the number of code units written, or, when cchWideChar is 0, the number that there
// would be; 0 on failure, with GetLastError telling why:
//   ERROR_INVALID_PARAMETER      no such page; a null or empty input; a negative cchWideChar; output without a buffer,
//                                or a buffer that is the input; a result beyond what an int counts
//   ERROR_INVALID_FLAGS          a flag that the page does not take (below)
//   ERROR_INSUFFICIENT_BUFFER    the result does not fit; the buffer then holds a beginning of it
//   ERROR_NO_UNICODE_TRANSLATION invalid bytes, and MB_ERR_INVALID_CHARS was asked for
//   ERROR_SUCCESS                no failure: the input was nothing but shifts and escapes. Linux only
// A negative cbMultiByte says that the input ends with a zero, which is then converted with the rest. Without
// MB_ERR_INVALID_CHARS an invalid sequence becomes the page's replacement: U+FFFD for each maximal part of a broken
// UTF-8 sequence ([Unicode] 3.9) and in the other Unicode pages, mostly '?' elsewhere. Undefined bytes 0x80 to 0x9F of
// the ANSI pages become the control characters of the same numbers.
// Flags: 50220 to 50227, 52936 and 65000 take none; 54936 and the Unicode pages take MB_ERR_INVALID_CHARS only; the
// others take MB_PRECOMPOSED too. Linux: MB_COMPOSITE and MB_USEGLYPHCHARS are not provided (ERROR_INVALID_FLAGS).
int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                        int cchWideChar) noexcept;

// UTF-16 to bytes of a page. Results and failures are those of MultiByteToWideChar, with the sides exchanged.
// A character that the page lacks becomes the one at lpDefaultChar (the page's own when null, mostly '?'), and
// *lpUsedDefaultChar tells whether that happened; each half of a surrogate pair counts as one character in the pages
// of one and two bytes. The Unicode pages, the 7-bit pages and 54936 take neither argument (ERROR_INVALID_PARAMETER).
// A lone surrogate is EF BF BD in UTF-8, or a failure with WC_ERR_INVALID_CHARS, which only the Unicode pages (65000
// excepted) and 54936 take. A buffer that is too small holds whole characters only.
// Linux: without WC_NO_BEST_FIT_CHARS, a lacking character is written as one that looks alike where this is plain in
// any language: fullwidth forms as ASCII, Latin letters without their accents, typographic quotes, dashes and spaces
// as ASCII's. Windows' own tables, one per page, go further. WC_COMPOSITECHECK and its companions are not provided
// (ERROR_INVALID_FLAGS).
int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                        int cbMultiByte, LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar) noexcept;

// The page that CP_ACP stands for. Linux: 65001, or the page that the environment variable VX_ANSI_CODEPAGE names in
// decimal, if that is a valid page of one or two bytes a character. Read at the first use, then fixed for the process.
UINT GetACP() noexcept;

// The page that CP_OEMCP stands for. Linux: the same as GetACP.
UINT GetOEMCP() noexcept;

// Whether the page can be converted. The names CP_ACP to CP_THREAD_ACP are not pages.
BOOL IsValidCodePage(UINT CodePage) noexcept;

// Describes a page, or one of the names. FALSE with ERROR_INVALID_PARAMETER for an invalid page or a null pointer.
BOOL GetCPInfo(UINT CodePage, CPINFO* lpCPInfo) noexcept;

#endif
