// Folders of 100, 10,000 and 100,000 messages through MAPI's interfaces, as a host reads them: what opening, sorting,
// the first page, one item and the counts around a window of time cost, and how many messages are read in a second. The
// cost of one item must not grow with the folder.
#include "localmapi/props/MapiMemory.h"
#include "localmapi/session/StoreRows.h"
#include "localmapi/store/EntryIds.h"
#include "mapi/Mapi.h"
#include "testing/mailbox_builder/MailboxWriter.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>

namespace {

using namespace localmapi;

constexpr std::int64_t kFirstTime = 133'500'000'000'000'000;  // in January 2024
constexpr std::int64_t kStep = 600'000'000;                   // a minute

[[noreturn]] void GiveUp(const std::string& why) {
    std::cerr << why << '\n';
    std::exit(1);
}

// One store with a folder of each size.
class Mailbox {
public:
    Mailbox() : m_file(std::filesystem::temp_directory_path() / "vx-local-mapi-benchmark.pst") {
        auto writer = mailbox_builder::MailboxWriter::Create(m_file, {});
        if (!writer) {
            GiveUp(writer.Failure().text);
        }
        for (const unsigned size : {100U, 10'000U, 100'000U}) {
            Fill(**writer, size);
        }
        if (const auto finished = (*writer)->Finish(); !finished) {
            GiveUp(finished.Failure().text);
        }
        ProfileStore place{};
        place.file = m_file;
        place.entryId = PstStoreEntryId(m_file);
        auto opened = OpenStore(place);
        if (!opened) {
            GiveUp(opened.Failure().text);
        }
        store = *std::move(opened);
    }
    ~Mailbox() {
        store = {};
        std::filesystem::remove(m_file);
    }

    ComPtr<IMAPIFolder> Folder(unsigned size) {
        Bytes& id = m_folders[size];
        IUnknown* object = nullptr;
        ULONG type = 0;
        if (FAILED(store->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()), nullptr, 0,
                                    &type, &object))) {
            GiveUp("the folder does not open");
        }
        return ComPtr<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
    }

    // The id of a message in the middle of a folder.
    Bytes& Middle(unsigned size) { return m_middles[size]; }

    ComPtr<StoreObject> store;

private:
    void Fill(mailbox_builder::MailboxWriter& writer, unsigned size) {
        mailbox_builder::Properties about;
        const std::string name = "Of " + std::to_string(size);
        about.Set(PR_DISPLAY_NAME_W, CStringW(name.begin(), name.end()));
        const auto folder = writer.AddFolder(writer.IpmSubtree(), about);
        for (unsigned i = 0; i < size; ++i) {
            mailbox_builder::Message message;
            const std::string subject = "Message " + std::to_string(i * 7919 % size);
            message.properties.Set(PR_SUBJECT_W, CStringW(subject.begin(), subject.end()));
            message.properties.Set(PR_BODY_W, CStringW(400, 'x'));
            message.properties.Set(PR_LAST_MODIFICATION_TIME,
                                   mailbox_builder::Time{kFirstTime + (i * 7919LL % size) * kStep});
            const auto written = writer.AddMessage(*folder, message);
            if (!written) {
                GiveUp(written.Failure().text);
            }
            if (i == size / 2) {
                m_middles[size] = writer.EntryIdOf(*written);
            }
        }
        m_folders[size] = writer.EntryIdOf(*folder);
    }

    std::filesystem::path m_file;
    std::map<unsigned, Bytes> m_folders;
    std::map<unsigned, Bytes> m_middles;
};

Mailbox& TheMailbox() {
    static Mailbox mailbox;
    return mailbox;
}

ComPtr<IMAPITable> OpenTable(IMAPIFolder& folder, ULONG order) {
    ComPtr<IMAPITable> table;
    SizedSPropTagArray<6> columns{.aulPropTag = {PR_LONGTERM_ENTRYID_FROM_TABLE, PR_MESSAGE_CLASS_W, PR_RECORD_KEY,
                                                 PR_LAST_MODIFICATION_TIME, PR_MESSAGE_FLAGS, PR_ENTRYID}};
    SizedSSortOrderSet<1> sort{.aSort = {{PR_LAST_MODIFICATION_TIME, order}}};
    if (FAILED(folder.GetContentsTable(MAPI_UNICODE, table.Receive())) || FAILED(table->SetColumns(columns, 0))
        || FAILED(table->SortTable(sort, 0))) {
        GiveUp("the table does not open");
    }
    return table;
}

ULONG ReadPage(IMAPITable& table) {
    SRowSet* rows = nullptr;
    if (FAILED(table.QueryRows(30, 0, &rows))) {
        GiveUp("no rows");
    }
    const ULONG count = rows->cRows;
    for (ULONG i = 0; i < count; ++i) {
        FreeRoot(rows->aRow[i].lpProps);
    }
    FreeRoot(rows);
    return count;
}

void OpenSortFirstPage(benchmark::State& state) {
    const auto folder = TheMailbox().Folder(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        const auto table = OpenTable(*folder, TABLE_SORT_DESCEND);
        benchmark::DoNotOptimize(ReadPage(*table));
    }
    state.counters["rows/s"] =
        benchmark::Counter(static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate);
}

void NextPage(benchmark::State& state) {
    const auto folder = TheMailbox().Folder(static_cast<unsigned>(state.range(0)));
    const auto table = OpenTable(*folder, TABLE_SORT_DESCEND);
    for (auto _ : state) {
        if (ReadPage(*table) < 30) {
            table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
        }
    }
}

void OneItemOfAFolder(benchmark::State& state) {
    const auto size = static_cast<unsigned>(state.range(0));
    const auto folder = TheMailbox().Folder(size);
    Bytes& id = TheMailbox().Middle(size);
    SPropValue value{};
    value.ulPropTag = PR_ENTRYID;
    value.Value.bin = {static_cast<ULONG>(id.size()), reinterpret_cast<LPBYTE>(id.data())};
    SRestriction either[2] = {};
    either[0].rt = RES_PROPERTY;
    either[0].res.resProperty = {RELOP_EQ, PR_LONGTERM_ENTRYID_FROM_TABLE, &value};
    either[1].rt = RES_PROPERTY;
    either[1].res.resProperty = {RELOP_EQ, PR_ENTRYID, &value};
    SRestriction one{};
    one.rt = RES_OR;
    one.res.resOr = {2, either};
    const auto table = OpenTable(*folder, TABLE_SORT_ASCEND);
    for (auto _ : state) {
        if (FAILED(table->Restrict(&one, 0)) || ReadPage(*table) != 1) {
            GiveUp("the item is not found");
        }
    }
}

void CountAroundAWindow(benchmark::State& state) {
    const auto size = static_cast<unsigned>(state.range(0));
    const auto folder = TheMailbox().Folder(size);
    const auto table = OpenTable(*folder, TABLE_SORT_ASCEND);
    SPropValue bounds[2] = {};
    SRestriction both[2] = {};
    for (unsigned i = 0; i < 2; ++i) {
        const std::int64_t time = kFirstTime + (i + 1) * (size / 3) * kStep;
        bounds[i].ulPropTag = PR_LAST_MODIFICATION_TIME;
        bounds[i].Value.ft = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
        both[i].rt = RES_PROPERTY;
        both[i].res.resProperty = {i == 0 ? RELOP_GE : RELOP_LT, PR_LAST_MODIFICATION_TIME, &bounds[i]};
    }
    SRestriction window{};
    window.rt = RES_AND;
    window.res.resAnd = {2, both};
    for (auto _ : state) {
        ULONG first = 0;
        ULONG last = 0;
        ULONG numerator = 0;
        ULONG denominator = 0;
        if (FAILED(table->FindRow(&window, BOOKMARK_BEGINNING, 0))
            || FAILED(table->QueryPosition(&first, &numerator, &denominator))
            || FAILED(table->FindRow(&window, BOOKMARK_END, DIR_BACKWARD))
            || FAILED(table->QueryPosition(&last, &numerator, &denominator)) || last - first + 1 != size / 3) {
            GiveUp("the count is wrong");
        }
    }
}

void OpenAndReadMessages(benchmark::State& state) {
    Mailbox& mailbox = TheMailbox();
    const auto folder = mailbox.Folder(10'000);
    const auto table = OpenTable(*folder, TABLE_SORT_ASCEND);
    SRowSet* rows = nullptr;
    if (FAILED(table->QueryRows(10'000, 0, &rows))) {
        GiveUp("no rows");
    }
    ULONG next = 0;
    for (auto _ : state) {
        const SBinary& id = rows->aRow[next].lpProps[5].Value.bin;
        IUnknown* object = nullptr;
        ULONG type = 0;
        if (FAILED(mailbox.store->OpenEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), nullptr, 0, &type, &object))) {
            GiveUp("a message does not open");
        }
        const auto message = ComPtr<IMessage>::Adopt(static_cast<IMessage*>(object));
        ULONG count = 0;
        SPropValue* values = nullptr;
        if (FAILED(message->GetProps(nullptr, MAPI_UNICODE, &count, &values))) {
            GiveUp("a message has no properties");
        }
        FreeRoot(values);
        next = (next + 1) % rows->cRows;
    }
    state.SetItemsProcessed(state.iterations());
    for (ULONG i = 0; i < rows->cRows; ++i) {
        FreeRoot(rows->aRow[i].lpProps);
    }
    FreeRoot(rows);
}

BENCHMARK(OpenSortFirstPage)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(NextPage)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(OneItemOfAFolder)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(CountAroundAWindow)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenAndReadMessages)->Unit(benchmark::kMicrosecond);

}  // namespace
