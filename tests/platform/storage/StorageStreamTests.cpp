// Streams: positions, sizes around every boundary of the format, copying and cloning.
#include "StorageTestSupport.h"

using namespace storage_test;

namespace {

class StorageStreams : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(StgCreateDocfile(m_folder.Name("file").c_str(), kExclusive, 0, m_root.Put()), S_OK);
    }
    void Reopen() {
        m_root.Reset();
        ASSERT_EQ(StgOpenStorage(m_folder.Name("file").c_str(), nullptr, kExclusive, nullptr, 0, m_root.Put()), S_OK);
    }
    Held<IStream> Make(const CStringW& name) {
        Held<IStream> stream;
        EXPECT_EQ(m_root->CreateStream(name.c_str(), kExclusive, 0, 0, stream.Put()), S_OK);
        return stream;
    }
    Held<IStream> Open(const CStringW& name) {
        Held<IStream> stream;
        EXPECT_EQ(m_root->OpenStream(name.c_str(), nullptr, kExclusive, 0, stream.Put()), S_OK);
        return stream;
    }

    TestFolder m_folder;
    Held<IStorage> m_root;
};

// 0, 64 (mini sector), 512 (sector), 4096 (mini stream cutoff), 65536 (the unit in which data is kept), and around them.
constexpr std::size_t kSizes[] = {0,    1,    63,   64,   65,    127,   511,   512,    513,     4095,
                                  4096, 4097, 4608, 8191, 65535, 65536, 65537, 131072, 200'000, 3'000'000};

CStringW NameOfSize(std::size_t size) {
    const std::string digits = std::to_string(size);
    return CStringW(digits.begin(), digits.end());
}

TEST_F(StorageStreams, OfEverySizeComeBackWhole) {
    for (const std::size_t size : kSizes) {
        AddStream(m_root.Get(), NameOfSize(size), Pattern(size, static_cast<std::uint32_t>(size)));
    }
    Reopen();
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        const Held<IStream> stream = Open(NameOfSize(size));
        EXPECT_EQ(StreamSize(stream.Get()), size);
        EXPECT_EQ(ReadAll(stream.Get(), 777), Pattern(size, static_cast<std::uint32_t>(size)));
    }
}

TEST_F(StorageStreams, GrowAndShrinkAcrossTheCutoff) {
    constexpr std::size_t rows[][2] = {{100, 5000},   {5000, 100},    {4095, 4096},     {4096, 4095},
                                       {4096, 0},     {0, 4096},      {65536, 65537},   {65537, 65536},
                                       {70'000, 100}, {100, 300'000}, {2'000'000, 4095}};
    for (const auto& [before, after] : rows) {
        SCOPED_TRACE(testing::Message() << before << " to " << after);
        const CStringW name = NameOfSize(before) + "to"_w + NameOfSize(after);
        AddStream(m_root.Get(), name, Pattern(before, 1));
        Reopen();
        {
            const Held<IStream> stream = Open(name);
            EXPECT_EQ(stream->SetSize(Size(after)), S_OK);
            EXPECT_EQ(StreamSize(stream.Get()), after);
            // What a growing stream holds is not defined everywhere, so it is written.
            if (after > before) {
                EXPECT_EQ(stream->Seek(Offset(static_cast<std::int64_t>(before)), STREAM_SEEK_SET, nullptr), S_OK);
                WriteAll(stream.Get(), Pattern(after - before, 2));
            }
        }
        Reopen();
        Bytes expected = Pattern(before, 1);
        expected.resize(std::min(before, after));
        const Bytes added = Pattern(after - expected.size(), 2);
        expected.insert(expected.end(), added.begin(), added.end());
        EXPECT_EQ(ReadAll(Open(name).Get()), expected);
    }
}

TEST_F(StorageStreams, TakeWritesAnywhere) {
    Bytes model;
    Held<IStream> stream = Make("s"_w);
    std::mt19937 random(1);
    for (int step = 0; step < 300; ++step) {
        const std::size_t offset = random() % 250'000;
        const Bytes bytes =
            Pattern(random() % 3 == 0 ? random() % 100'000 : random() % 300, static_cast<std::uint32_t>(random()));
        if (offset > model.size() && !bytes.empty()) {
            // No gaps here: what they hold is the matter of a test of its own.
            continue;
        }
        ASSERT_EQ(stream->Seek(Offset(static_cast<std::int64_t>(offset)), STREAM_SEEK_SET, nullptr), S_OK);
        WriteAll(stream.Get(), bytes);
        if (!bytes.empty()) {
            model.resize(std::max(model.size(), offset + bytes.size()));
            std::copy(bytes.begin(), bytes.end(), model.begin() + static_cast<std::ptrdiff_t>(offset));
        }
        if (step % 60 == 59) {
            ASSERT_EQ(ReadAll(stream.Get()), model);
            stream.Reset();
            Reopen();
            stream = Open("s"_w);
            ASSERT_EQ(ReadAll(stream.Get(), 1000), model);
        }
    }
}

TEST_F(StorageStreams, SeekFromEveryOrigin) {
    const Held<IStream> stream = Make("s"_w);
    WriteAll(stream.Get(), Pattern(100, 1));
    const struct {
        const char* name;
        std::int64_t move;
        DWORD origin;
        std::uint64_t expected;
    } rows[] = {
        {"to a place", 40, STREAM_SEEK_SET, 40},
        {"on", 25, STREAM_SEEK_CUR, 65},
        {"back", -60, STREAM_SEEK_CUR, 5},
        {"before the end", -1, STREAM_SEEK_END, 99},
        {"beyond the end", 1000, STREAM_SEEK_END, 1100},
        {"nowhere", 0, STREAM_SEEK_CUR, 1100},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ULARGE_INTEGER position = {};
        EXPECT_EQ(stream->Seek(Offset(row.move), row.origin, &position), S_OK);
        EXPECT_EQ(position.QuadPart, row.expected);
    }
    ULONG got = 99;
    std::uint8_t bytes[4] = {};
    EXPECT_EQ(stream->Read(bytes, sizeof bytes, &got), S_OK);
    EXPECT_EQ(got, 0U);
    EXPECT_CODE(stream->Seek(Offset(0), 3, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Write(bytes, 0, &got), S_OK);
    EXPECT_EQ(StreamSize(stream.Get()), 100U) << "a write of nothing makes no gap";
}

TEST_F(StorageStreams, ClonesShareBytesAndHaveAPositionOfTheirOwn) {
    Held<IStream> stream = Make("s"_w);
    WriteAll(stream.Get(), {1, 2, 3, 4});
    ASSERT_EQ(stream->Seek(Offset(1), STREAM_SEEK_SET, nullptr), S_OK);
    Held<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
    WriteAll(stream.Get(), {9});
    std::uint8_t byte = 0;
    EXPECT_EQ(clone->Read(&byte, 1, nullptr), S_OK);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(clone->SetSize(Size(3)), S_OK);
    EXPECT_EQ(StreamSize(stream.Get()), 3U);
    stream.Reset();
    Held<IStream> again;
    EXPECT_CODE(m_root->OpenStream("s"_w, nullptr, kReadOnly, 0, again.Put()), STG_E_ACCESSDENIED)
        << "the clone has it open";
    EXPECT_EQ(ReadAll(clone.Get()), (Bytes{1, 9, 3}));
    clone.Reset();
    EXPECT_EQ(m_root->OpenStream("s"_w, nullptr, kReadOnly, 0, again.Put()), S_OK);
}

TEST_F(StorageStreams, CopyToWorksFromPositionToPosition) {
    const Bytes bytes = Pattern(200'000, 3);
    const Held<IStream> from = Make("from"_w);
    WriteAll(from.Get(), bytes);
    const struct {
        const char* name;
        std::uint64_t start, count, expected;
    } rows[] = {
        {"a part", 10, 20, 20},
        {"across blocks", 65'530, 70'000, 70'000},
        {"more than there is", 199'990, 1000, 10},
        {"everything", 0, ~std::uint64_t{0}, 200'000},
        {"from the end", 200'000, 5, 0},
        {"from beyond", 300'000, 5, 0},
        {"nothing", 50, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Held<IStream> to;
        ASSERT_EQ(m_root->CreateStream("to"_w, kExclusive | STGM_CREATE, 0, 0, to.Put()), S_OK);
        WriteAll(to.Get(), {7, 7, 7});
        ASSERT_EQ(to->Seek(Offset(1), STREAM_SEEK_SET, nullptr), S_OK);
        ASSERT_EQ(from->Seek(Offset(static_cast<std::int64_t>(row.start)), STREAM_SEEK_SET, nullptr), S_OK);
        ULARGE_INTEGER read = {};
        ULARGE_INTEGER written = {};
        EXPECT_EQ(from->CopyTo(to.Get(), Size(row.count), &read, &written), S_OK);
        EXPECT_EQ(read.QuadPart, row.expected);
        EXPECT_EQ(written.QuadPart, row.expected);
        ULARGE_INTEGER position = {};
        EXPECT_EQ(from->Seek(Offset(0), STREAM_SEEK_CUR, &position), S_OK);
        EXPECT_EQ(position.QuadPart, row.start + row.expected);
        Bytes expected = {7};
        const auto start =
            bytes.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(row.start, bytes.size()));
        expected.insert(expected.end(), start, start + static_cast<std::ptrdiff_t>(row.expected));
        if (expected.size() < 3) {
            expected.resize(3, 7);
        }
        EXPECT_EQ(ReadAll(to.Get()), expected);
    }
    EXPECT_CODE(from->CopyTo(nullptr, Size(1), nullptr, nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(StorageStreams, ThatManyShareOneStorageComeBack) {
    // More entries than one directory sector, more mini sectors than one mini FAT sector, and an uneven tree.
    constexpr int kCount = 777;
    for (int i = 0; i < kCount; ++i) {
        AddStream(m_root.Get(), "n"_w + NameOfSize(static_cast<std::size_t>(i)),
                  Pattern(static_cast<std::size_t>(i) * 7 % 500, static_cast<std::uint32_t>(i)));
    }
    Reopen();
    for (int i = 0; i < kCount; i += 2) {
        EXPECT_EQ(m_root->DestroyElement(("n"_w + NameOfSize(static_cast<std::size_t>(i))).c_str()), S_OK);
    }
    Reopen();
    EXPECT_EQ(Names(m_root.Get()).size(), static_cast<std::size_t>(kCount / 2));
    for (int i = 0; i < kCount; ++i) {
        Bytes bytes;
        EXPECT_CODE(ReadStream(m_root.Get(), "n"_w + NameOfSize(static_cast<std::size_t>(i)), bytes),
                    i % 2 == 0 ? STG_E_FILENOTFOUND : S_OK);
        EXPECT_EQ(bytes,
                  i % 2 == 0 ? Bytes() : Pattern(static_cast<std::size_t>(i) * 7 % 500, static_cast<std::uint32_t>(i)));
    }
}

TEST_F(StorageStreams, BeyondTheFirstFatSectorsComeBack) {
    // 109 sectors of the FAT are listed in the header: enough for 7,143,936 bytes. One stream beyond, one across.
    AddStream(m_root.Get(), "first"_w, Pattern(7'100'000, 1));
    AddStream(m_root.Get(), "across"_w, Pattern(2'000'000, 2));
    AddStream(m_root.Get(), "small"_w, Pattern(100, 3));
    Reopen();
    Bytes bytes;
    EXPECT_EQ(ReadStream(m_root.Get(), "across"_w, bytes), S_OK);
    EXPECT_TRUE(bytes == Pattern(2'000'000, 2));
    EXPECT_EQ(ReadStream(m_root.Get(), "small"_w, bytes), S_OK);
    EXPECT_TRUE(bytes == Pattern(100, 3));
    // Backwards through a long chain, as somebody does who reads an index at the end first.
    const Held<IStream> stream = Open("first"_w);
    const Bytes whole = Pattern(7'100'000, 1);
    for (std::int64_t at = 7'099'000; at >= 0; at -= 91'111) {
        Bytes piece(1000);
        ULONG got = 0;
        ASSERT_EQ(stream->Seek(Offset(at), STREAM_SEEK_SET, nullptr), S_OK);
        ASSERT_EQ(stream->Read(piece.data(), 1000, &got), S_OK);
        ASSERT_TRUE(got == 1000 && std::equal(piece.begin(), piece.end(), whole.begin() + at)) << at;
    }
}

}  // namespace
