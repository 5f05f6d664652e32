// Opens a file that lies in memory, for tests of one layer.
#pragma once

#include "localmapi/pst/ndb/Database.h"
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace localmapi::testing {

// An image, the database over it, and what the database reported.
class Opened {
public:
    explicit Opened(Bytes bytes, std::size_t cacheBytes = std::size_t{1} << 20) : image(std::move(bytes)) {
        pst::OpenOptions options;
        options.sink = &sink;
        options.cacheBytes = cacheBytes;
        auto opened = pst::Database::Open(std::make_unique<MemorySource>(image), options);
        EXPECT_TRUE(opened) << opened.Failure().text;
        if (opened) {
            database = *std::move(opened);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    pst::Database* operator->() { return database.get(); }
    pst::Database& operator*() { return *database; }

    pst::NodeEntry Node(std::uint32_t id) {
        const auto node = database->FindNode(pst::NodeId{id});
        EXPECT_TRUE(node) << node.Failure().text;
        return node ? *node : pst::NodeEntry{};
    }

    Bytes image;
    RecordingSink sink;
    std::unique_ptr<pst::Database> database;
};

// A stream, or a value, read whole; an error's text in its place when it fails.
template <class Stream>
Result<Bytes> ReadWhole(Stream& stream, std::size_t piece = 4096) {
    Bytes all;
    Bytes part(piece);
    for (;;) {
        Result<std::size_t> got = stream.ReadAt(all.size(), part);
        if (!got) {
            return got.TakeFailure();
        }
        if (*got == 0) {
            return all;
        }
        all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(*got));
    }
}

}  // namespace localmapi::testing
