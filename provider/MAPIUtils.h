// What the whole provider needs of MAPI beyond its interfaces: time values, entry ids as hexadecimal text, table calls
// that wait while MAPI is busy, copies of streams and storages into memory and into files, names of temporary files,
// and the account an object gives of its last failure. Bare FILETIMEs are helped by Common/FileTimeHelpers.h, texts by
// Common/StringHelpers.h.
//
// CMapiUtil holds no state but the counter of temporary names; its operations may be called from any thread, on objects
// that the caller may use there. Results are the HRESULTs of MAPI and COM as they were found. E_OUTOFMEMORY stands for
// a size beyond the caller's limit too, and is how an attachment over its limit is told from a broken one. Objects of
// other makers are not trusted: a stream that claims to have read more than asked is taken to have read what was asked,
// and sizes are held to 32 bits before anything is allocated for them. std::bad_alloc is the only exception of its own,
// from what makes texts and paths; for the bytes read, memory that does not suffice is E_OUTOFMEMORY, too.
#pragma once

#include "mapi/MapiFunctions.h"
#include "platform/Storage.h"
#include "platform/WideText.h"
#include "provider/Common/Holders.h"
#include "provider/ItemTypes.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

class CMapiUtil {
public:
    // ---- Times: FILETIME counts 100 ns since 1601-01-01 UTC ----

    // The 64 bits as they are, either way.
    static FILETIME FileTimeFromInt64(std::int64_t value) noexcept;
    static std::int64_t FromFileTimeToInt64(const FILETIME& time) noexcept;

    // Milliseconds since 1970-01-01 UTC, rounded towards that moment and negative before it; 0 for a zero FILETIME.
    static std::int64_t FromFileTimeToUnix(const FILETIME& time) noexcept;

    // ---- Entry ids as hexadecimal text, and other strings ----

    // Two upper-case digits a byte, high half first. Null bytes give the empty text.
    static CStringW Bin2Hex(ULONG size, const BYTE* bytes);

    // The bytes of a hexadecimal text in either case, up to `capacity` of them into `bytes`. `*size` becomes half the
    // text's length, whatever happens. False for an odd length or one that does not fit, with nothing written, and at
    // the first character that is no digit, with the bytes before it written. The empty text gives size 0 and true.
    // A digit is what the arithmetic takes for one: besides 0-9, A-F and a-f the characters between '9' and 'A' pass,
    // as 3 to 9.
    static bool Hex2Bin(WideView text, BYTE* bytes, ULONG* size, ULONG capacity);

    // The same into a vector of the right size. False for the empty text, too.
    static bool Hex2Bin(WideView text, std::vector<BYTE>& bytes);

    // The text of a PT_UNICODE value; empty for a null property or text and for every other type.
    static CStringW Mapi2SimpleString(const SPropValue* prop);

    // Conversions into a block from new[]; see TextConversion.h.
    static HRESULT AnsiToUnicode(const char* in, WCHAR** out, int length, UINT codePage);
    static HRESULT UnicodeToAnsi(const WCHAR* in, char** out, int length, UINT codePage);

    // PR_ENTRYID of an object as hexadecimal text; empty when it has none.
    static CStringW GetEID(IMAPIProp* prop);

    // Cuts \\server\share\rest; `rest` keeps its leading backslash. Backslashes on every system, since such a path
    // names a Windows share. False, with the outputs untouched, unless all three backslash groups are there.
    static bool GetServerAndShareName(WideView path, CStringW& server, CStringW& share, CStringW& rest);

    // Frees what QueryRows gave, rows included. Null is allowed.
    static void FreeRowSet(SRowSet* rows) noexcept;

    // ---- Table calls, repeated while MAPI is busy ----
    // The method of the same name. MAPI_E_BUSY repeats the call after 100 ms, up to 600 times; the last result counts.

    static HRESULT QueryRows(IMAPITable* table, LONG rowCount, ULONG flags, SRowSet** rows);
    static HRESULT SetColumns(IMAPITable* table, SPropTagArray* columns, ULONG flags);
    static HRESULT GetRowCount(IMAPITable* table, ULONG flags, ULONG* count);
    static HRESULT SortTable(IMAPITable* table, SSortOrderSet* order, ULONG flags);
    static HRESULT SeekRow(IMAPITable* table, BOOKMARK origin, LONG rowCount, LONG* rowsSought);

    // ---- Streams into memory ----

    // The size that the stream claims; E_OUTOFMEMORY above 0xFFFFFFFF.
    static HRESULT GetStreamSize(IStream* stream, ULONG* size);

    // Reads from the stream's position until `size` bytes are in `buffer` or the stream ends. `*read` counts the bytes
    // that are there, on failure too.
    static HRESULT ReadStream(IStream* stream, ULONG size, BYTE* buffer, ULONG* read);

    // Reads to the end of a stream that does not tell its size. E_OUTOFMEMORY as soon as `maxSize` bytes have come,
    // even if these were all; a `maxSize` above 0x7FFFFFFF counts as that. What was read before a failure stays in
    // `bytes`.
    static HRESULT ReadStreamWithUnknownSize(IStream* stream, std::vector<BYTE>& bytes, ULONG maxSize);

    // Reads the stream, from its position, with a single call. `*buffer` becomes a block from new[] of `*size` +
    // `extra` bytes, the caller's to delete[]; the extra bytes are not cleared. E_OUTOFMEMORY for a size that 32 bits
    // do not hold; E_UNEXPECTED when the stream gives another number of bytes than it claims. On failure both outputs
    // are 0.
    static HRESULT CopyStreamToBuffer(IStream* stream, BYTE** buffer, ULONG* size, ULONG extra);

    // Reads the stream from its start. `bytes` becomes as large as the stream claims plus `extra`, the rest zero, and
    // `*size` counts the bytes read. A stream that cannot tell its size is read to its end, without extra bytes.
    // E_OUTOFMEMORY for more than `maxSize` bytes. On failure `bytes` is empty, unless the size was not known.
    static HRESULT CopyStreamToBuffer(IStream* stream, ULONG maxSize, std::vector<BYTE>& bytes, ULONG* size,
                                      ULONG extra);

    // Reads the 8-bit text of an uncompressed RTF stream to its end. `*buffer` becomes a zero-terminated block, the
    // caller's to free(); null on failure. E_OUTOFMEMORY for a stream of 4 GiB and more.
    static HRESULT CopyWrappedRtfStreamToBuffer(IStream* stream, char** buffer);

    // ---- Storages into memory, storages and streams into files ----

    // The bytes of a compound file with the storage's class and elements; `*size` counts them. E_OUTOFMEMORY when there
    // are more than `maxSize`.
    static HRESULT ReadStorageInMemory(IStorage* storage, ULONG maxSize, std::vector<BYTE>& bytes, ULONG* size);

    // A compound file with the storage's class and elements, replacing what has the path. Deleted again on failure.
    static HRESULT SaveStorageInFile(IStorage* storage, const CStringW& path);

    // A file with the stream's bytes from its position to its end. 0x80070052 (ERROR_CANNOT_MAKE) when the file cannot
    // be opened, STG_E_WRITEFAULT when it cannot be written, otherwise the result of the last read.
    static HRESULT SaveStreamInFile(IStream* stream, const CStringW& path);

    // ---- Messages and attachments into files ----

    // An MSG file with the whole message. When the file at `path` is in use, the name gets "_tmp" before its last ".",
    // and `path` tells the new one; STG_E_ACCESSDENIED when there is no "." or that file is in use, too.
    static HRESULT SaveMessageInFile(IMessage* message, CStringW& path);

    // Finds the attachment with that PR_ATTACH_NUM and opens it. `method` is its PR_ATTACH_METHOD, of which only
    // ATTACH_BY_VALUE, ATTACH_EMBEDDED_MSG and ATTACH_OLE are opened; `name` its long name, else its short one, else
    // its display name, else empty. False when there is no such attachment, or one of the steps fails; `attach` is then
    // untouched.
    static bool GetAttachment(ULONG number, IMessage* message, VxMapiPtr<IAttach>& attach, ULONG& method,
                              CStringW& name);

    // Writes the data of that attachment to the file at `path`, an OLE object without a stream as a compound file.
    // Gives `path`, also when the data break off, or the empty text when there are none, as of an embedded message, or
    // no file takes them.
    static CStringW SaveMsgAttachmentOnDisk(ULONG number, IMessage* message, const CStringW& path);

    // ---- Names of temporary files ----

    // A path in `folder` (the name alone when that is empty) of at most `maxLength` units: "tmp_", a number that is new
    // in this process, "_", the date and time, and `suffix`, as a valid file name.
    static CStringW GetATempFileName(WideView folder, WideView suffix, std::size_t maxLength);
    static CStringW GetATempFileName(WideView folder);  // no suffix, 1024 units
    static CStringW GetATempFileName();                 // in the system's folder for temporary files

    // The local date and time as "ddMMyy@hh-mm-sstt", such as "310124@11-59-00PM".
    static CStringW GetDateTimeForFileName();

    // Makes a name valid on every system: what no file name may hold becomes "%" and two hexadecimal digits, an empty
    // name or one that ends in a blank gets "%00", a name of a device gets "%reserved" in front. A name longer than
    // `maxLength` units is cut, in front of its extension.
    static void ConvertToValidFileName(CStringW& name, std::size_t maxLength);

    // What follows the last "." of the last part of a path or URL, up to its "?"; empty without one.
    static CStringW GetExtension(WideView path);

    // The number in the latest temporary name; whoever makes such a name adds 1 first. Wraps around.
    static std::atomic<std::int32_t> s_tempFilesCounter;

    // ---- Objects ----

    // Logs what the object says of its last failure `hr`.
    static void PrintErrorInformation(HRESULT hr, IMAPISession* session);
    static void PrintErrorInformation(HRESULT hr, IMsgStore* store);

    // The store behind a store that the client has wrapped, with a reference of the caller's own. A success may leave
    // `*unwrapped` untouched, when the wrapper names no store.
    static HRESULT HrUnWrapMDB(IMsgStore* store, IMsgStore** unwrapped);
};

// The kind of a folder by its PR_CONTAINER_CLASS, which must match exactly; -1 for an unknown class. Classes that are
// not 1 to 5 leave a line in the log.
EVxFolderType ParseContainerClass(WideView containerClass);

// Opens a message object on a storage, in the wide form that keeps all characters, or else in the 8-bit one. `session`
// may be null. The message is the caller's to release before the storage.
HRESULT MyOpenIMsgOnIStg(LPMSGSESS session, IStorage* storage, IMessage** message);

// Appends "Error 0x<hr>. Msg: <text>", with lower-case digits, for a negative `hr`; otherwise does nothing.
void HrToError(HRESULT hr, WideView text, CStringW& message);

// Frees the name in what Stat gave, and makes it null.
void FreeName(STATSTG& stat) noexcept;

// Where a skipped object would be noted; such notes are not kept.
inline void PrintSkipNote() noexcept {}
