#include "host/Sources.h"

#include "host/Failures.h"
#include "host/System.h"
#include "host/Text.h"
#include "provider/HostValue.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace vxhost {

namespace {

using namespace std::string_view_literals;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::ResultException;
using VxOutlookProvider::Value;

// What other files begin with that people take for mailboxes.
struct OtherKind {
    std::string_view begin;
    const char* what;
    const char* advice;
};
constexpr auto kOtherKinds = std::to_array<OtherKind>({
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, "it is a compound file, such as a single message (.msg)",
     "Name a .pst or .ost file; messages in files of their own are not indexed."},
    {"From "sv, "it is an mbox file", "Name a .pst or .ost file."},
    {"PK\x03\x04"sv, "it is a zip archive", "Unpack it, and name the .pst or .ost file in it."},
    {"\x1F\x8B"sv, "it is compressed", "Unpack it, and name the .pst or .ost file in it."},
});

constexpr std::size_t kHeaderBytes = 512;  // a shorter file holds nothing

[[noreturn]] void Refuse(const std::filesystem::path& file, const std::string& reason, const std::string& advice) {
    throw Failure(Status::NotOpened, PathText(file) + ": " + reason, advice);
}

void CheckKind(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        Refuse(file, "there is no such file", "Check the path, and that the disk it is on is connected.");
    }
    if (std::filesystem::is_directory(status)) {
        Refuse(file, "it is a folder", "Name a .pst or .ost file in it.");
    }
    if (const int failed = ProbeForReading(file); failed != 0) {
        Refuse(file, "it cannot be read: " + std::generic_category().message(failed),
               failed == EACCES ? "Run as a user who may read it; close Outlook if it has the file open."
                                : "Check the disk or the network that it is on.");
    }
    if (!std::filesystem::is_regular_file(status)) {
        Refuse(file, "it is no ordinary file", "Name a .pst or .ost file.");
    }
}

Value SystemProfiles(Session& session) {
    Value profiles;
    session.Provider().GetSystemProfiles(profiles);
    return profiles;
}

}  // namespace

void CheckMailboxFile(const std::filesystem::path& file) {
    CheckKind(file);
    std::array<char, kHeaderBytes> bytes{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), bytes.size());
    const std::string_view begin(bytes.data(), static_cast<std::size_t>(stream.gcount()));
    if (begin.empty()) {
        Refuse(file, "it is empty", "Copy it again from where it came from.");
    }
    if (!begin.starts_with("!BDN")) {
        for (const OtherKind& kind : kOtherKinds) {
            if (begin.starts_with(kind.begin)) {
                Refuse(file, std::string("it is no mailbox file: ") + kind.what, kind.advice);
            }
        }
        Refuse(file, "it is no mailbox file: it does not begin with !BDN, as .pst and .ost files do",
               "Name a .pst or .ost file; if this is one, its beginning is damaged: use a copy.");
    }
    if (begin.size() < kHeaderBytes) {
        Refuse(file, "it is cut off after " + std::to_string(begin.size()) + " bytes",
               "Copy it again from where it came from.");
    }
}

std::u16string FindProfile(Session& session, const std::u16string& name) {
    static const std::size_t nameField = FieldIndex(RecordKind::Profile, "pi_name");
    const Value profiles = SystemProfiles(session);
    const Value::Array& list = profiles.Elements();
    const auto find = [&](auto isSame) {
        const auto found =
            std::find_if(list.begin(), list.end(), [&](const Value& p) { return isSame(p.At(nameField).String()); });
        return found != list.end() ? found->At(nameField).String() : std::u16string();
    };
    std::u16string found = find([&](const std::u16string& listed) { return listed == name; });
    return !found.empty() ? found : find([&](const std::u16string& l) { return EqualIgnoringCase(l, name); });
}

std::filesystem::path PathForProfile(Session& session, const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(file, error).lexically_normal();
    if (IsNameableInProfile(path)) {
        return path;
    }
    if (const std::filesystem::path other = ShortPath(path); !other.empty()) {
        return other;
    }
    // Another name for the same file, one that every code page has.
    const std::filesystem::path other = session.WorkFolder() / (UniqueName() + ".pst");
    std::filesystem::create_symlink(path, other, error);
    if (error) {
        std::filesystem::create_hard_link(path, other, error);
    }
    if (error || !IsNameableInProfile(other)) {
        Refuse(file, "its name has characters that profiles cannot keep", "Rename it, with plain letters.");
    }
    return other;
}

Source::Source(Session& session, std::u16string profile, std::string name, std::filesystem::path file)
    : m_session(&session), m_profile(std::move(profile)), m_name(std::move(name)), m_file(std::move(file)) {}

Source::Source(Source&& other) noexcept
    : m_session(std::exchange(other.m_session, nullptr)),
      m_profile(std::move(other.m_profile)),
      m_name(std::move(other.m_name)),
      m_file(std::move(other.m_file)) {}

Source::~Source() {
    if (m_session == nullptr || m_file.empty()) {
        return;
    }
    try {
        m_session->Provider().DeleteMAPIProfile(m_profile);
    } catch (const std::exception&) {  // nothing more can be done about it
    }
}

Source Source::OfProfile(Session& session, const std::string& name) {
    std::u16string found = FindProfile(session, ToUtf16(name));
    if (found.empty()) {
        throw Failure(Status::NotOpened, "There is no profile " + name, "vxhost profiles lists those that there are.");
    }
    return Source(session, std::move(found), name, {});
}

Source Source::OfFile(Session& session, const std::filesystem::path& file) {
    CheckMailboxFile(file);
    std::filesystem::path path = PathForProfile(session, file);
    std::u16string profile = ToUtf16(UniqueName());
    if (!session.Provider().CreateMAPIProfile(profile)) {
        Refuse(file, "no profile could be made for it",
               "Profiles are files in the folder that VX_HOME names: see whether it may be written to. --log-dir DIR "
               "gives a log that says more.");
    }
    Source source(session, std::move(profile), PathText(file), std::move(path));
    source.AddMailbox();
    return source;
}

void Source::AddMailbox() {
    if (m_session->Provider().AddPSTToMAPIProfile(ToUtf16(PathText(m_file)), m_profile)) {
        return;
    }
    const std::vector<std::string> problems = TakeProblems();
    throw Failure(Status::NotOpened,
                  m_name + ": it is a mailbox file, but too damaged to be opened"
                      + (problems.empty() ? std::string() : "; " + problems.back()),
                  "Use another copy of it, or repair it with Outlook's own tool (scanpst).");
}

}  // namespace vxhost
