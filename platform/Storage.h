// Structured storage: streams, storages (compound files, [MS-CFB]) and byte arrays, behind Windows' interfaces.
//
// Linux: our own implementation, with these rules.
//   Threads    One opened compound file (root) and everything opened from it is used by one thread at a time; different
//              roots are independent. AddRef and Release may be called from any thread, but the last Release of a root
//              counts as a use of it.
//   Reading    Versions 3 and 4. Nothing is loaded whole but the directory: see the limits in linux/storage/Limits.h.
//   Writing    Version 3, so files and streams up to 2 GiB; beyond that STG_E_DOCFILETOOLARGE. A commit writes the
//   whole
//              file anew beside the old one and renames it, so that the path always names one of the two; into a byte
//              array it writes in place. A direct root reaches its file at Commit and at its last Release, a failure of
//              the latter being lost. Data not committed yet beyond a few megabytes waits in an unnamed scratch file.
//   Sharing    Modes are upheld among all openings by this implementation, in this process and others, through advisory
//              locks on the file; where the file system has none, not at all. Two conflicting openings at the same
//              instant may both be refused. A refused StgCreateDocfile is STG_E_ACCESSDENIED, a refused StgOpenStorage
//              STG_E_SHAREVIOLATION.
//   Damage     A damaged file costs as little as it can: a link of the directory that makes no sense is skipped, a
//              stream whose sectors do not make sense reads up to the damage and then fails with STG_E_DOCFILECORRUPT.
//   Revert     An element that was destroyed, or whose storage was released or reverted, answers STG_E_REVERTED.
//   Left out   Locking of regions, property sets, marshalling, IRootStorage on roots, STGM_CONVERT (STG_E_INVALIDFLAG:
//   a
//              file that is not compound is never made one), opening in priority of another storage.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Guid.h"
#include "platform/ResultCodes.h"
#include "platform/Unknown.h"

#ifndef _WIN32

#include <cstddef>

// --- Modes and flags -------------------------------------------------------------------------------------------------

// How an element is opened: one of each group, or-ed; the first of a group is 0.
inline constexpr DWORD STGM_DIRECT = 0x00000000;
inline constexpr DWORD STGM_TRANSACTED = 0x00010000;  // nothing leaves this storage before Commit
inline constexpr DWORD STGM_SIMPLE = 0x08000000;      // accepted; Linux: the same as without it

inline constexpr DWORD STGM_READ = 0x00000000;
inline constexpr DWORD STGM_WRITE = 0x00000001;
inline constexpr DWORD STGM_READWRITE = 0x00000002;

inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x00000010;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x00000020;
inline constexpr DWORD STGM_SHARE_DENY_READ = 0x00000030;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x00000040;

inline constexpr DWORD STGM_FAILIFTHERE = 0x00000000;
inline constexpr DWORD STGM_CREATE = 0x00001000;   // replaces what has the name
inline constexpr DWORD STGM_CONVERT = 0x00020000;  // Linux: STG_E_INVALIDFLAG

inline constexpr DWORD STGM_PRIORITY = 0x00040000;         // reading for a short time; Linux: plain reading
inline constexpr DWORD STGM_NOSCRATCH = 0x00100000;        // accepted, without effect
inline constexpr DWORD STGM_NOSNAPSHOT = 0x00200000;       // accepted, without effect
inline constexpr DWORD STGM_DIRECT_SWMR = 0x00400000;      // STG_E_INVALIDFLAG
inline constexpr DWORD STGM_DELETEONRELEASE = 0x04000000;  // the last Release of the root deletes the file

// What Commit may do; or-ed.
enum STGC {
    STGC_DEFAULT = 0,                             // the bytes are on the disk when Commit returns
    STGC_OVERWRITE = 1,                           // accepted, without effect: the old file is always kept until the end
    STGC_ONLYIFCURRENT = 2,                       // STG_E_NOTCURRENT when somebody else has committed since
    STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,  // does not wait for the disk
    STGC_CONSOLIDATE = 8                          // accepted: every commit consolidates
};

enum STGTY { STGTY_STORAGE = 1, STGTY_STREAM = 2, STGTY_LOCKBYTES = 3, STGTY_PROPERTY = 4 };
enum STATFLAG { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1, STATFLAG_NOOPEN = 2 };
enum STREAM_SEEK { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STGMOVE { STGMOVE_MOVE = 0, STGMOVE_COPY = 1, STGMOVE_SHALLOWCOPY = 2 };
enum LOCKTYPE { LOCK_WRITE = 1, LOCK_EXCLUSIVE = 2, LOCK_ONLYONCE = 4 };

// --- Structures ------------------------------------------------------------------------------------------------------

// What is known of an element. `pwcsName` is the receiver's to free with CoTaskMemFree; null with STATFLAG_NONAME and
// for a root on a byte array. The root of a file has the full path for its name.
struct STATSTG {
    LPOLESTR pwcsName;
    DWORD type;             // STGTY_...
    ULARGE_INTEGER cbSize;  // streams and byte arrays: bytes
    FILETIME mtime;         // storages: 0 when the file does not say; streams: always 0
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;            // of an opened element, the mode it was opened with
    DWORD grfLocksSupported;  // 0: none
    CLSID clsid;              // storages
    DWORD grfStateBits;       // storages
    DWORD reserved;
};
static_assert(sizeof(STATSTG) == 80 && offsetof(STATSTG, cbSize) == 16 && offsetof(STATSTG, clsid) == 56);

// A block of element names: pointers to names, the last one null.
using SNB = OLECHAR**;

// --- Interfaces ------------------------------------------------------------------------------------------------------

struct ISequentialStream : IUnknown {
    // Reads up to `cb` bytes at the position and moves it. At the end of the stream gives fewer bytes, 0 at last, with
    // S_OK. `pcbRead` may be null.
    virtual HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
    // Writes at the position and moves it; the stream grows, with zeros up to a position beyond its end.
    virtual HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
};

struct IStream : ISequentialStream {
    // Moves the position, which may lie beyond the end but not before 0 (STG_E_INVALIDFUNCTION, position kept).
    virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin, ULARGE_INTEGER* plibNewPosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER libNewSize) = 0;
    // Copies `cb` bytes, or what is left, from this position to the other stream's; both move.
    virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                                             ULARGE_INTEGER* pcbWritten) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
    // Gives a second object on the same bytes, with a position of its own that starts at this one's.
    virtual HRESULT STDMETHODCALLTYPE Clone(IStream** ppstm) = 0;
};
using LPSTREAM = IStream*;

// Elements of one storage, in the order of [MS-CFB] 2.6.4: shorter names first, then by upper-case code units.
struct IEnumSTATSTG : IUnknown {
    // Gives the next `celt` elements; S_FALSE when fewer were left. `pceltFetched` may be null if `celt` is 1.
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** ppenum) = 0;
};
using LPENUMSTATSTG = IEnumSTATSTG*;

// Names have 1 to 31 characters, none of / \ : !; their case is kept and ignored in look-ups. An element is opened by
// one object at a time, with STGM_SHARE_EXCLUSIVE and no more access than its storage has.
struct IStorage : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                                   DWORD reserved2, IStream** ppstm) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode,
                                                 DWORD reserved2, IStream** ppstm) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                                    DWORD reserved2, IStorage** ppstg) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode,
                                                  SNB snbExclude, DWORD reserved, IStorage** ppstg) = 0;
    // Copies class, state bits and elements into another storage of any implementation: storages of one name are
    // merged, streams replaced. IID_IStorage or IID_IStream among the exclusions leaves out that kind, `snbExclude`
    // names elements of this storage to leave out.
    virtual HRESULT STDMETHODCALLTYPE CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                                             IStorage* pstgDest) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest,
                                                    const OLECHAR* pwcsNewName, DWORD grfFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
    // Transacted: drops what was not committed, and with it everything opened from this storage. Direct: nothing.
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                                   IEnumSTATSTG** ppenum) = 0;
    virtual HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* pwcsName) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) = 0;
    // Sets the times of a storage element, of this storage itself with a null name; streams keep none.
    virtual HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                                      const FILETIME* patime, const FILETIME* pmtime) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetStateBits(DWORD grfStateBits, DWORD grfMask) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};
using LPSTORAGE = IStorage*;

struct ILockBytes : IUnknown {
    // Reads up to `cb` bytes; fewer, with S_OK, at the end.
    virtual HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER ulOffset, void* pv, ULONG cb, ULONG* pcbRead) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER ulOffset, const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
    virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER cb) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};
using LPLOCKBYTES = ILockBytes*;

struct IRootStorage : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SwitchToFile(LPOLESTR pszFile) = 0;
};
using LPROOTSTORAGE = IRootStorage*;

struct IPersist : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) = 0;
};
using LPPERSIST = IPersist*;

inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_ILockBytes = OleGuid(0x0000000A);
inline constexpr IID IID_IStorage = OleGuid(0x0000000B);
inline constexpr IID IID_IStream = OleGuid(0x0000000C);
inline constexpr IID IID_IEnumSTATSTG = OleGuid(0x0000000D);
inline constexpr IID IID_IRootStorage = OleGuid(0x00000012);
inline constexpr IID IID_IPersist = OleGuid(0x0000010C);

// --- Functions -------------------------------------------------------------------------------------------------------

// Creates a compound file, or replaces one with STGM_CREATE (without it an existing file is STG_E_FILEALREADYEXISTS).
// A null name makes a file with a name of its own in the folder for temporary files; Stat tells it. The mode must allow
// writing; a direct one must be STGM_SHARE_EXCLUSIVE (STG_E_INVALIDFLAG). Transacted, the bytes of a replaced file stay
// until Commit. `reserved` is 0. Names are paths in native spelling.
[[nodiscard]] HRESULT StgCreateDocfile(const WCHAR* pwcsName, DWORD grfMode, DWORD reserved,
                                       IStorage** ppstgOpen) noexcept;

// Opens a compound file. STG_E_FILENOTFOUND when there is none, STG_E_FILEALREADYEXISTS when the file is not a compound
// one, STG_E_DOCFILECORRUPT when its header or tables make no sense. A direct reader must deny others writing, a direct
// writer everything (STG_E_INVALIDFLAG). `pstgPriority` and `snbExclude` are null.
[[nodiscard]] HRESULT StgOpenStorage(const WCHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude,
                                     DWORD reserved, IStorage** ppstgOpen) noexcept;

// The same over a byte array, which the root holds a reference to. Creating replaces what the bytes were.
[[nodiscard]] HRESULT StgCreateDocfileOnILockBytes(ILockBytes* plkbyt, DWORD grfMode, DWORD reserved,
                                                   IStorage** ppstgOpen) noexcept;
[[nodiscard]] HRESULT StgOpenStorageOnILockBytes(ILockBytes* plkbyt, IStorage* pstgPriority, DWORD grfMode,
                                                 SNB snbExclude, DWORD reserved, IStorage** ppstgOpen) noexcept;

// S_OK when the bytes begin as a compound file does, S_FALSE when not; a failure when they cannot be read.
[[nodiscard]] HRESULT StgIsStorageFile(const WCHAR* pwcsName) noexcept;
[[nodiscard]] HRESULT StgIsStorageILockBytes(ILockBytes* plkbyt) noexcept;

// A byte array, or a stream, in a movable global block: in `hGlobal`, whose size is the initial size, or in one of its
// own if that is null. With `fDeleteOnRelease` the last Release frees the block.
[[nodiscard]] HRESULT CreateILockBytesOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease, ILockBytes** pplkbyt) noexcept;
[[nodiscard]] HRESULT CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease, LPSTREAM* ppstm) noexcept;

// The block under such an object; it stays the object's. E_INVALIDARG for an object of another make.
[[nodiscard]] HRESULT GetHGlobalFromILockBytes(ILockBytes* plkbyt, HGLOBAL* phglobal) noexcept;
[[nodiscard]] HRESULT GetHGlobalFromStream(IStream* pstm, HGLOBAL* phglobal) noexcept;

// The class of a storage: SetClass, and Stat's `clsid`.
HRESULT WriteClassStg(IStorage* pStg, REFCLSID rclsid) noexcept;
HRESULT ReadClassStg(IStorage* pStg, CLSID* pclsid) noexcept;

#endif
