#include "host/FileNames.h"

#include "host/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

namespace vxhost {

namespace {

constexpr std::size_t kMostExtensionBytes = 16;  // with its dot
constexpr std::size_t kNumberDigits = 6;

// Marks that turn the direction of what follows, so that "exe.pdf" may be read as "fdp.exe", and others without a width.
constexpr bool IsInvisible(char32_t c) noexcept {
    return (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF
           || c == 0x061C;
}

constexpr bool IsRefused(char32_t c) noexcept {
    constexpr std::string_view kRefused = "<>:\"/\\|?*";
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || IsInvisible(c) || c == 0xFFFD
           || (c < 0x80 && kRefused.find(static_cast<char>(c)) != std::string_view::npos);
}

char Upper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Whether Windows takes the name for that of a device: what stands before the first dot counts, blanks at its end not.
bool IsDevice(std::string_view name) {
    std::string stem(name.substr(0, name.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(), Upper);
    constexpr auto kDevices =
        std::to_array<std::string_view>({"CON", "PRN", "AUX", "NUL", "CLOCK$", "CONIN$", "CONOUT$"});
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) {
        return true;
    }
    constexpr auto kPorts = std::to_array<std::string_view>({"COM", "LPT"});
    constexpr auto kNumbers = std::to_array<std::string_view>(
        {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"});
    return std::find(kPorts.begin(), kPorts.end(), stem.substr(0, 3)) != kPorts.end()
           && std::find(kNumbers.begin(), kNumbers.end(), std::string_view(stem).substr(3)) != kNumbers.end();
}

// The first bytes of a UTF-8 text, whole characters only.
std::string_view Front(std::string_view text, std::size_t bytes) {
    if (bytes >= text.size()) {
        return text;
    }
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) {
        --bytes;
    }
    return text.substr(0, bytes);
}

void Shorten(std::string& name) {
    if (name.size() <= kMostNameBytes) {
        return;
    }
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= kMostExtensionBytes;
    const std::string extension = hasExtension ? name.substr(dot) : std::string();
    name = std::string(Front(name, kMostNameBytes - extension.size())) + extension;
}

void StripEnds(std::string& name) {
    name.erase(name.find_last_not_of(". ") + 1);
    name.erase(0, name.find_first_not_of(' '));
    if (name.starts_with('.')) {
        name.front() = '_';
    }
}

// The number that a name of ours begins with; 0 for others.
std::uint64_t NumberOf(const std::string& name) {
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool isOurs = error == std::errc() && static_cast<std::size_t>(stop - name.data()) >= kNumberDigits
                        && stop != name.data() + name.size() && *stop == '-';
    return isOurs ? number : 0;
}

}  // namespace

std::string SafeFileName(std::u16string_view text) {
    std::string name;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = NextCharacter(text, at);
        if (IsRefused(character)) {
            name += '_';
        } else {
            AppendUtf8(name, character);
        }
    }
    StripEnds(name);
    Shorten(name);
    StripEnds(name);  // where it was cut
    if (IsDevice(name)) {
        name = '_' + name;
    }
    return name.empty() ? "attachment" : name;
}

bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) {
    // A second name for the file is given only where there is none; only file systems without such names leave the
    // moment between a look and a renaming.
    std::error_code error;
    std::filesystem::create_hard_link(from, to, error);
    if (!error) {
        std::filesystem::remove(from);
        return true;
    }
    if (std::filesystem::exists(std::filesystem::symlink_status(to))) {
        return false;
    }
    std::filesystem::rename(from, to, error);
    if (error == std::errc::cross_device_link) {
        std::filesystem::copy_file(from, to);
        std::filesystem::remove(from);
    } else if (error) {
        throw std::filesystem::filesystem_error("rename", from, to, error);
    }
    return true;
}

NumberedNames::NumberedNames(std::filesystem::path folder) : m_folder(std::move(folder)) {
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
        m_last = std::max(m_last, NumberOf(PathText(entry.path().filename())));
    }
}

std::string NumberedNames::MoveIn(const std::filesystem::path& file, std::u16string_view name) {
    const std::string safe = SafeFileName(name);
    for (;;) {
        std::string number = std::to_string(++m_last);
        number.insert(0, kNumberDigits - std::min(number.size(), kNumberDigits), '0');
        std::string target = number + "-" + safe;
        if (MoveWithoutReplacing(file, m_folder / ToPath(target))) {
            return target;
        }
    }
}

}  // namespace vxhost
