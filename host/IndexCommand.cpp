#include "host/Commands.h"
#include "host/Indexer.h"
#include "host/Text.h"
#include "host/Times.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>

namespace vxhost {

namespace {

constexpr char kExamples[] = R"(Examples:
  vxhost index archive.pst > archive.ndjson
  vxhost index *.pst -o all.ndjson
  vxhost index --profile Outlook --since 2026-03-01T08:00Z -o news.ndjson
  vxhost index archive.pst --folder /Inbox --body html --save-attachments files -o inbox.ndjson
  vxhost index archive.pst | jq -r 'select(.kind == "item") | .record.email_sSubject // empty'

Each line is an object with a "kind": store, folder, item, attachment, folder-summary, error. What cannot be read is a
line of the kind error, and the exit status is then 3. Other programs see the profile that is made for a file only while
it is read.)";

struct IndexArguments {
    std::vector<std::string> files;
    std::vector<std::string> profiles;
    std::string output;
    std::string since;
    std::string body = "text";
    std::vector<std::string> folders;
    std::string attachments;
    std::int64_t bodyLimit = -1;
    std::int64_t attachmentLimit = -1;
    bool isQuiet = false;
};

const std::vector<std::string> kBodies = {"none", "text", "rtf", "html"};  // by the provider's numbers

IndexOptions OptionsOf(const IndexArguments& arguments) {
    IndexOptions options;
    if (!arguments.since.empty()) {
        const std::optional<std::int64_t> since = ParseTime(arguments.since, CurrentTime());
        if (!since) {
            throw Failure(Status::Usage, "--since: " + arguments.since + " is no time",
                          "Write 2026-03-01, 2026-03-01T14:30Z, 12h, 7d, or ticks as records have them.");
        }
        options.since = *since;
    }
    options.bodyFormat = static_cast<int>(std::find(kBodies.begin(), kBodies.end(), arguments.body) - kBodies.begin());
    for (const std::string& folder : arguments.folders) {
        options.folders.push_back(ToUtf16(folder));
    }
    return options;
}

// One run over all sources.
class IndexRun {
public:
    IndexRun(const Program& program, const IndexArguments& arguments)
        : m_arguments(arguments),
          m_output(ToPath(arguments.output)),
          m_files(arguments.attachments.empty()
                      ? nullptr
                      : std::make_unique<AttachmentFiles>(ToPath(arguments.attachments), arguments.attachmentLimit)),
          m_session(SettingsOf(program)),
          m_progress(Progress::OfStandardError()),
          m_indexer(m_session, OptionsOf(arguments), m_output, m_progress, m_files.get()) {}

    Status Run() {
        const auto start = std::chrono::steady_clock::now();
        for (const std::string& file : m_arguments.files) {
            Read(file, [&] { return Source::OfFile(m_session, ToPath(file)); });
        }
        for (const std::string& profile : m_arguments.profiles) {
            Read(profile, [&] { return Source::OfProfile(m_session, profile); });
        }
        m_progress.Clear();
        if (m_opened > 0) {
            RequireFolders();
            m_output.Commit();
            TellSummary(std::chrono::steady_clock::now() - start);
        }
        if (m_unopened > 0) {
            return Status::NotOpened;
        }
        return m_indexer.Result().errors > 0 ? Status::Incomplete : Status::Done;
    }

private:
    Settings SettingsOf(const Program& program) const {
        Settings settings = program.CommonSettings();
        settings.bodyLimit = m_arguments.bodyLimit;
        settings.attachmentLimit = m_arguments.attachmentLimit;
        if (m_files != nullptr) {
            settings.tempFolder = m_files->TempPath();
        }
        return settings;
    }

    // A source that cannot be opened is told of, and the others are read.
    template <typename Open>
    void Read(const std::string& name, Open open) {
        std::optional<Source> source;
        try {
            source.emplace(open());
        } catch (const Failure& failure) {
            m_progress.Clear();
            PrintFailure(failure);
            m_indexer.ReportProblem(name, "open", failure.what());
            ++m_unopened;
            return;
        }
        ++m_opened;
        m_indexer.Index(*source);
    }

    void RequireFolders() const {
        if (const std::u16string missing = m_indexer.MissingFolder(); !missing.empty()) {
            throw Failure(Status::Incomplete, "There is no folder " + ToUtf8(missing),
                          "vxhost folders lists them; write the path as it does.");
        }
    }

    void TellSummary(std::chrono::duration<double> time) const {
        if (!m_arguments.isQuiet) {
            const std::string text = SummaryText(m_indexer.Result(), m_output.Bytes(), time);
            std::fwrite(text.data(), 1, text.size(), stderr);
        }
    }

    const IndexArguments& m_arguments;
    Output m_output;
    std::unique_ptr<AttachmentFiles> m_files;
    Session m_session;
    Progress m_progress;
    Indexer m_indexer;
    unsigned m_opened = 0;
    unsigned m_unopened = 0;
};

// An option that takes a number of bytes, such as 500, 64K or 10M.
void AddBytesOption(CLI::App& command, const std::string& name, std::int64_t& bytes, const std::string& description) {
    command.add_option(name, bytes, description)
        ->transform(CLI::AsSizeValue(false).description(""))
        ->check(CLI::Validator(CLI::NonNegativeNumber).description(""))
        ->type_name("BYTES");
}

}  // namespace

void AddIndexCommand(Program& program) {
    CLI::App& command =
        program.Add(program.app, "index", "Everything in mailboxes, as lines of JSON",
                    "index {FILE | --profile NAME}... [-o FILE] [--since TIME] [--folder PATH] [--body FORM]\n"
                    "                    [--save-attachments DIR] [--max-body BYTES] [--max-attachment BYTES]",
                    kExamples);
    const auto arguments = std::make_shared<IndexArguments>();
    command.add_option("files", arguments->files, "");
    command.add_option("-p,--profile", arguments->profiles, "Read this profile; may be given several times")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("-o,--output", arguments->output, "Write to this file, which appears when it is complete")
        ->type_name("FILE");
    command
        .add_option("--since", arguments->since,
                    "Only items changed after then: 2026-03-01, 2026-03-01T14:30Z (UTC without a zone), 12h, 7d, 2w, "
                    "or ticks as in common_lUTCLastModifiedTime")
        ->type_name("TIME");
    command
        .add_option("--folder", arguments->folders, "Only this folder and those below it; may be given several times")
        ->type_name("PATH")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--body", arguments->body, "The form of bodies: text (the default), rtf, html, none")
        ->check(CLI::IsMember(kBodies).description(""))
        ->type_name("FORM");
    command
        .add_option("--save-attachments", arguments->attachments,
                    "Save attachments as files of this folder; each line's \"file\" names its own")
        ->type_name("DIR");
    AddBytesOption(
        command, "--max-body", arguments->bodyLimit,
        "No bodies of items that are as large as this (K, M, G for 1024 and its powers); attachments that are "
        "larger are not saved either");
    AddBytesOption(command, "--max-attachment", arguments->attachmentLimit, "Save no attachments larger than this");
    command.add_flag("-q,--quiet", arguments->isQuiet, "No summary at the end");
    command.callback([&program, arguments] {
        program.run = [&program, arguments] {
            if (arguments->files.empty() && arguments->profiles.empty()) {
                throw Failure(Status::Usage, "There is nothing to read", "Name .pst or .ost files, or --profile NAME.");
            }
            return IndexRun(program, *arguments).Run();
        };
    });
}

}  // namespace vxhost
