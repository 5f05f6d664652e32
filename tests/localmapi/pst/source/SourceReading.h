// Values of sources in a form that tests compare, and a walk through everything that a store source has.
#pragma once

#include "localmapi/model/StoreSource.h"
#include "localmapi/pst/source/OpenStoreSource.h"
#include "mapi/MapiTypes.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace localmapi::testing {

// A value as "TTTTTTTT:" and the hexadecimal digits of its bytes as a file keeps them; the values of a multiple one are
// told apart by commas.
std::string Shown(ULONG tag, ByteView bytes);
std::string Shown(const SPropValue& value);

// The value of a property in that form, or why there is none: "not found", "too large", "corrupt", "failed",
// "unsupported".
std::string Shown(PropertySource& source, ULONG id, std::uint64_t limit = UINT64_MAX);
std::string Shown(RowSource& rows, std::size_t row, ULONG id);
std::string Why(const Error& error);

// The bytes of Open, or why there are none.
std::string Streamed(PropertySource& source, ULONG id);

// A text property as UTF-16 or 8-bit text of ASCII letters; others as "\?".
std::string TextOf(PropertySource& source, ULONG id);

// A store source over bytes in memory, with what was reported.
class OpenedSource {
public:
    explicit OpenedSource(Bytes bytes);
    explicit OpenedSource(std::unique_ptr<ByteSource> bytes);

    StoreSource* operator->() { return source.get(); }
    StoreSource& operator*() { return *source; }
    std::unique_ptr<MessageSource> Message(std::uint32_t node);
    std::unique_ptr<FolderSource> Folder(std::uint32_t node);

    Bytes image;
    RecordingSink sink;
    std::unique_ptr<StoreSource> source;

private:
    void Open(std::unique_ptr<ByteSource> bytes);
};

// What a walk found.
struct Walked {
    std::size_t folders = 0;
    std::size_t rows = 0;
    std::size_t messages = 0;  // opened, those in attachments among them
    std::size_t values = 0;
    std::size_t errors = 0;  // other than NotFound and TooLarge
};

// Reads every property, row and stream of a store, as deep as it goes.
Walked WalkThrough(StoreSource& store);

}  // namespace localmapi::testing
