#include "localmapi/profile/ProfileText.h"

#include "localmapi/profile/PropertyText.h"
#include "localmapi/profile/TextEscapes.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace localmapi::profile {

namespace {

constexpr std::string_view kProfileHeader =
    "# A profile of local MAPI: UTF-8, a section a service, provider or client, a property a line. The format is\n"
    "# described in docs/local-mapi.md. It may be edited by hand; comments are lost when a program changes the "
    "profile.\n";
constexpr std::string_view kDefaultHeader = "# The profile that programs use when they are told of none.\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kVersion = "1";

// ---- Writing --------------------------------------------------------------------------------------------------------

void WriteSection(std::string& text, std::string_view heading, const Section& section) {
    text += "\n[" + std::string(heading);
    if (section.Uid() != kGlobalProfileSection) {
        text += " " + HexText(BytesOf(section.Uid()));
    }
    text += "]\n";
    for (const SPropValue& value : section.Properties()) {
        const std::string line = PropertyLine(value);
        text += line.empty() ? line : line + "\n";
    }
}

// ---- Reading --------------------------------------------------------------------------------------------------------

// The lines that say something, with their numbers.
class Lines {
public:
    explicit Lines(std::string_view text) noexcept : m_rest(text) {
        m_rest.remove_prefix(m_rest.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    }

    // Empty at the end.
    std::string_view Next() {
        while (!m_rest.empty()) {
            const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
            const std::string_view line = Trimmed(m_rest.substr(0, end));
            m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
            ++m_number;
            if (!line.empty() && line.front() != '#') {
                return line;
            }
        }
        return {};
    }

    std::size_t Number() const noexcept { return m_number; }

private:
    std::string_view m_rest;
    std::size_t m_number = 0;
};

// "name = value", where the line is that.
std::optional<std::string_view> ValueOf(std::string_view line, std::string_view name) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || Trimmed(line.substr(0, equals)) != name) {
        return std::nullopt;
    }
    return Trimmed(line.substr(equals + 1));
}

class ProfileParser {
public:
    ProfileParser(std::string_view text, std::string_view file) : m_lines(text), m_file(file), m_profile(CStringW()) {
        m_profile.global = m_profile.NewSection(kGlobalProfileSection);  // only what the file says
    }

    Result<Profile> Parse() {
        VX_TRY(ParseHead());
        Section* section = nullptr;
        for (std::string_view line = m_lines.Next(); !line.empty(); line = m_lines.Next()) {
            if (line == "[end]") {
                return m_lines.Next().empty() ? Result<Profile>(std::move(m_profile))
                                              : Damage("something stands behind [end]");
            }
            if (line.front() == '[') {
                VX_TRY_ASSIGN(section, OpenSection(line));
            } else if (section == nullptr) {
                return Damage("a property stands before the first section");
            } else {
                VX_TRY(ParseLine(line, *section));
            }
        }
        return Damage("the file ends without [end]: a part of it is missing");
    }

private:
    Error Damage(const std::string& what) const {
        return Error{ErrorCode::Corrupt, m_file + ":" + std::to_string(m_lines.Number()) + ": " + what};
    }

    Status ParseHead() {
        if (m_lines.Next() != "[profile]") {
            return Damage("the file does not begin with [profile]");
        }
        const auto version = ValueOf(m_lines.Next(), "version");
        if (!version) {
            return Damage("there is no version behind [profile]");
        }
        if (*version != kVersion) {
            return Damage("the file is of version " + std::string(*version) + ", which a later program wrote");
        }
        const auto quoted = ValueOf(m_lines.Next(), "name");
        std::string reason = "the profile's name does not follow its version";
        auto name = quoted ? ParseQuoted(*quoted, reason) : std::nullopt;
        if (!name || name->empty()) {
            return Damage(name ? "the profile's name is empty" : reason);
        }
        m_profile.name = *std::move(name);
        return {};
    }

    // A heading: "[global]", or a kind and an identifier. The section lives until the next one is opened.
    Result<Section*> OpenSection(std::string_view line) {
        if (line == "[global]") {
            return !std::exchange(m_hasGlobal, true) ? Result<Section*>(&m_profile.global)
                                                     : Damage("the global section is there twice");
        }
        const std::size_t blank = std::min(line.find(' '), line.size() - 1);
        const std::string_view kind = line.substr(1, blank - 1);
        const auto bytes =
            line.back() == ']' ? ParseHex(Trimmed(line.substr(blank, line.size() - 1 - blank))) : std::nullopt;
        MAPIUID uid{};
        if (!bytes || bytes->size() != sizeof(uid.ab)) {
            return Damage("the heading is none of [global], [service UID], [provider UID] and [section UID]");
        }
        std::memcpy(uid.ab, bytes->data(), sizeof(uid.ab));
        if (uid == kGlobalProfileSection || m_profile.FindSection(uid) != nullptr) {
            return Damage("the identifier belongs to another section too");
        }
        return PlaceSection(kind, m_profile.NewSection(uid));
    }

    Result<Section*> PlaceSection(std::string_view kind, Section section) {
        if (kind == "service") {
            return &m_profile.services.emplace_back(Service{std::move(section), {}}).section;
        }
        if (kind == "section") {
            return &m_profile.others.emplace_back(std::move(section));
        }
        if (kind != "provider") {
            return Damage("there is no kind of section called " + std::string(kind));
        }
        if (m_profile.services.empty()) {
            return Damage("the provider stands before any service");
        }
        return &m_profile.services.back().providers.emplace_back(std::move(section));
    }

    Status ParseLine(std::string_view line, Section& section) {
        std::string reason;
        const auto value = ParseProperty(line, *section.Memory(), reason);
        if (!value) {
            return Damage(reason);
        }
        if (section.Find(PROP_ID(value->ulPropTag)) != nullptr) {
            return Damage("the section has this property twice");
        }
        section.Set(*value);
        return {};
    }

    Lines m_lines;
    std::string m_file;
    Profile m_profile;
    bool m_hasGlobal = false;
};

}  // namespace

std::string WriteProfile(const Profile& profile) {
    std::string text(kProfileHeader);
    text += "\n[profile]\nversion = " + std::string(kVersion) + "\nname = " + Quoted(profile.name) + "\n";
    WriteSection(text, "global", profile.global);
    for (const Service& service : profile.services) {
        WriteSection(text, "service", service.section);
        for (const Section& provider : service.providers) {
            WriteSection(text, "provider", provider);
        }
    }
    for (const Section& section : profile.others) {
        WriteSection(text, "section", section);
    }
    return text + "\n[end]\n";
}

Result<Profile> ParseProfile(std::string_view text, std::string_view file) {
    return ProfileParser(text, file).Parse();
}

std::optional<CStringW> FindProfileName(std::string_view text) {
    std::string reason;
    Lines lines(text);
    for (std::string_view line = lines.Next(); !line.empty(); line = lines.Next()) {
        if (line.front() == '[' && line != "[profile]") {
            return std::nullopt;
        }
        if (const auto quoted = ValueOf(line, "name")) {
            auto name = ParseQuoted(*quoted, reason);
            return name && !name->empty() ? name : std::nullopt;
        }
    }
    return std::nullopt;
}

std::string WriteDefaultName(WideView name) {
    return std::string(kDefaultHeader) + "\ndefault = " + Quoted(name) + "\n";
}

Result<CStringW> ParseDefaultName(std::string_view text, std::string_view file) {
    Lines lines(text);
    std::string reason = "the line is not of the form default = \"name\"";
    const auto quoted = ValueOf(lines.Next(), "default");
    auto name = quoted ? ParseQuoted(*quoted, reason) : std::nullopt;
    if (!name) {
        return Error{ErrorCode::Corrupt, std::string(file) + ":" + std::to_string(lines.Number()) + ": " + reason};
    }
    return *std::move(name);
}

}  // namespace localmapi::profile
