// The provider as a host uses it, over local MAPI: pages of URIs, records by type of item, one item in folders of 100,
// 10,000 and 100,000 (whose cost must not grow with the folder), attachments, and the memory of a pass over 100,000.
#include "mapi/PropTags.h"
#include "platform/Process.h"
#include "provider/InstanceProxy.h"
#include "testing/mailbox_builder/MailboxWriter.h"
#include "testing/mailbox_builder/items/Appointment.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Contact.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/OtherItems.h"
#include "testing/mailbox_builder/items/Task.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

namespace {

using namespace mailbox_builder;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::InstanceProxy;
using VxOutlookProvider::RecordKind;
using HostValue = VxOutlookProvider::Value;

constexpr unsigned kItemsOfType = 600;
constexpr unsigned kMailsWithFiles = 60;
constexpr std::size_t kFileBytes = 1'000'000;
constexpr int kPlainText = 1;

[[noreturn]] void GiveUp(const std::string& why) {
    std::cerr << why << '\n';
    std::exit(1);
}

CStringW Units(const std::string& text) {
    return CStringW(text.begin(), text.end());
}

// The message number `n` of a folder: plain mails of 400 letters in those that are measured by size.
Message MakeItem(const std::string& kind, unsigned n) {
    const CStringW subject = Units(kind + " " + std::to_string(n));
    const Person ada = {.name = Units("Ada Example"), .smtp = Units("ada@example.com")};
    const Time when = At(2025, 1, 1 + n % 28, static_cast<int>(n % 24), static_cast<int>(n % 60));
    Message item;
    if (kind == "contact") {
        item = MakeContact({.given = Units("Ada"),
                            .surname = subject,
                            .company = Units("Example"),
                            .emails = {ada},
                            .businessPhone = Units("+46 8 5550 0100"),
                            .notes = CStringW(400, 'n'),
                            .created = when});
        FillEveryContactField(item);
    } else if (kind == "appointment") {
        item = MakeAppointment({.subject = subject,
                                .location = Units("Quay"),
                                .organizer = ada,
                                .attendees = {{.person = ada}},
                                .start = when,
                                .end = After(when, 60),
                                .created = when,
                                .notes = CStringW(400, 'n')});
    } else if (kind == "task") {
        item = MakeTask({.subject = subject, .owner = ada, .created = when});
    } else if (kind == "note") {
        item = MakeNote({.text = subject, .created = when});
    } else {
        item = MakeMail({.subject = subject, .from = ada, .to = {ada, ada}, .sent = when});
        SetPlainBody(item, CStringW(400, 'x'));
    }
    if (kind == "file") {
        item.attachments.push_back(AttachBytes(Units("file.bin"), localmapi::Bytes(kFileBytes, std::byte{0x55})));
    }
    return item;
}

// A mailbox of a folder for each size and each kind of item, open in a host.
class Mailbox {
public:
    Mailbox()
        : m_home(std::filesystem::temp_directory_path()
                 / ("vx-provider-benchmark-" + std::to_string(GetCurrentProcessId()))) {
        std::filesystem::create_directories(m_home);
        ::setenv("VX_HOME", m_home.c_str(), 1);
        const std::filesystem::path file = m_home / "mailbox.pst";
        Write(file);
        host.InitializeVxMapi(u"", u"Off");
        if (!host.CreateMAPIProfile(u"Benchmark") || !host.AddPSTToMAPIProfile(file.u16string(), u"Benchmark")) {
            GiveUp("the profile cannot be made");
        }
        HostValue stores;
        host.GetProfileStores(u"Benchmark", stores);
        const HostValue store = stores.At(0).At(FieldIndex(RecordKind::Store, "si_storeId"));
        HostValue folders;
        host.GetStoreFolders(u"Benchmark", store.String(), folders);
        for (const HostValue& folder : folders.Elements()) {
            HostValue::Array uri(VxOutlookProvider::FieldsOf(RecordKind::Uri).size());
            uri[0] = HostValue(6);
            uri[1] = HostValue(u"Benchmark");
            uri[2] = store;
            uri[3] = folder.At(FieldIndex(RecordKind::Folder, "fi_folderId"));
            const auto& path = folder.At(FieldIndex(RecordKind::Folder, "fi_folderPath")).String();
            m_folders[std::string(path.begin(), path.end())] = HostValue(uri);
        }
    }
    ~Mailbox() {
        host.Dispose();
        std::filesystem::remove_all(m_home);
    }

    const HostValue& Folder(const std::string& name) const { return m_folders.at("/" + name); }

    HostValue NextPage(const HostValue& folder) {
        HostValue page;
        std::int32_t unsupported = 0;
        host.QueryItems(folder, 0, false, page, unsupported);
        return page;
    }

    InstanceProxy host;

private:
    static void Write(const std::filesystem::path& file) {
        auto writer = MailboxWriter::Create(file, {});
        if (!writer) {
            GiveUp(writer.Failure().text);
        }
        const auto fill = [&](const std::string& name, const std::string& kind, unsigned size) {
            const auto folder =
                (*writer)->AddFolder((*writer)->IpmSubtree(), Properties().Set(PR_DISPLAY_NAME_W, Units(name)));
            for (unsigned n = 0; n < size; ++n) {
                if (const auto written = (*writer)->AddMessage(*folder, MakeItem(kind, n)); !written) {
                    GiveUp(written.Failure().text);
                }
            }
        };
        for (const unsigned size : {100U, 10'000U, 100'000U}) {
            fill(std::to_string(size), "mail", size);
        }
        for (const char* kind : {"mail", "contact", "appointment", "task", "note"}) {
            fill(kind, kind, kItemsOfType);
        }
        fill("file", "file", kMailsWithFiles);
        if (const auto finished = (*writer)->Finish(); !finished) {
            GiveUp(finished.Failure().text);
        }
    }

    std::filesystem::path m_home;
    std::map<std::string, HostValue> m_folders;
};

Mailbox& TheMailbox() {
    static Mailbox mailbox;
    return mailbox;
}

double PeakMebibytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::stod(line.substr(6)) / 1024;
        }
    }
    return 0;
}

void PagesOfUris(benchmark::State& state) {
    Mailbox& mailbox = TheMailbox();
    const HostValue& folder = mailbox.Folder(std::to_string(state.range(0)));
    std::size_t uris = 0;
    for (auto _ : state) {
        for (;;) {
            const HostValue page = mailbox.NextPage(folder);
            if (page.Elements().empty()) {
                break;
            }
            uris += page.Elements().size();
        }
        mailbox.host.Disconnect();  // from the top again
    }
    state.counters["uris/s"] = benchmark::Counter(static_cast<double>(uris), benchmark::Counter::kIsRate);
}
BENCHMARK(PagesOfUris)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// As an index is made: page after page, each item's record with its body.
void Records(benchmark::State& state, const std::string& kind) {
    Mailbox& mailbox = TheMailbox();
    std::size_t records = 0;
    for (auto _ : state) {
        for (;;) {
            const HostValue page = mailbox.NextPage(mailbox.Folder(kind));
            if (page.Elements().empty()) {
                break;
            }
            for (const HostValue& uri : page.Elements()) {
                HostValue record;
                mailbox.host.GetItemData(uri, kPlainText, false, record);
                records += record.IsNull() ? 0 : 1;
            }
        }
        mailbox.host.Disconnect();
    }
    state.counters["records/s"] = benchmark::Counter(static_cast<double>(records), benchmark::Counter::kIsRate);
    state.counters["peak MiB"] = PeakMebibytes();
}
BENCHMARK_CAPTURE(Records, mail, "mail")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, contact, "contact")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, appointment, "appointment")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, task, "task")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, note, "note")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, pass_of_100000, "100000")->Unit(benchmark::kMillisecond)->Iterations(1);

// An item that is known by its URI alone, in a folder that holds something else at the moment.
void OneItemOfAFolder(benchmark::State& state) {
    Mailbox& mailbox = TheMailbox();
    const HostValue& folder = mailbox.Folder(std::to_string(state.range(0)));
    HostValue page = mailbox.NextPage(folder);
    const HostValue first = page.At(0);
    const HostValue last = page.At(page.Elements().size() - 1);
    bool isFirst = true;
    for (auto _ : state) {
        HostValue record;
        mailbox.host.GetItemData(isFirst ? first : last, kPlainText, true, record);
        isFirst = !isFirst;
        if (record.IsNull()) {
            GiveUp("the item is not found");
        }
    }
}
BENCHMARK(OneItemOfAFolder)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void CountsAroundAWindow(benchmark::State& state) {
    Mailbox& mailbox = TheMailbox();
    const HostValue& folder = mailbox.Folder(std::to_string(state.range(0)));
    for (auto _ : state) {
        std::int32_t before = 0;
        std::int32_t in = 0;
        std::int32_t after = 0;
        mailbox.host.GetChildrenItemsCount(folder, At(2025, 1, 10).ticks, At(2025, 1, 20).ticks, false, before, in,
                                           after);
        benchmark::DoNotOptimize(in);
    }
}
BENCHMARK(CountsAroundAWindow)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void BytesOfAttachments(benchmark::State& state) {
    Mailbox& mailbox = TheMailbox();
    std::size_t bytes = 0;
    for (auto _ : state) {
        for (;;) {
            const HostValue page = mailbox.NextPage(mailbox.Folder("file"));
            if (page.Elements().empty()) {
                break;
            }
            for (const HostValue& uri : page.Elements()) {
                HostValue parts;
                std::int32_t reserved = 0;
                mailbox.host.QueryAttachments(uri, parts, reserved);
                HostValue data;
                mailbox.host.GetBinaryItemBody(parts.At(0), kPlainText, false, data);
                bytes += data.Data().size();
            }
        }
        mailbox.host.Disconnect();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}
BENCHMARK(BytesOfAttachments)->Unit(benchmark::kMillisecond);

}  // namespace
