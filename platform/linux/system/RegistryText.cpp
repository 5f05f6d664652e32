#include "platform/linux/system/RegistryText.h"

#include "platform/Registry.h"
#include "platform/linux/UpperCase.h"
#include "platform/linux/system/Utf8.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace vx_system {

namespace {

constexpr WideView kBlanks = " \t"_w;

constexpr WideView kRoots[] = {"HKEY_CLASSES_ROOT"_w, "HKEY_CURRENT_USER"_w, "HKEY_LOCAL_MACHINE"_w, "HKEY_USERS"_w};

WideView Trimmed(WideView text) noexcept {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == WideView::npos ? WideView() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes `prefix` off the front of `text`; false, and nothing taken, when it is not there.
bool Skip(WideView& text, WideView prefix) noexcept {
    const bool there = text.starts_with(prefix);
    text.remove_prefix(there ? prefix.size() : 0);
    return there;
}

// True for what may stand behind a complete value: nothing, or a comment.
bool IsLineEnd(WideView rest) noexcept {
    rest = Trimmed(rest);
    return rest.empty() || rest.front() == ';';
}

std::optional<unsigned> HexDigit(WCHAR unit) noexcept {
    if (unit >= '0' && unit <= '9') {
        return unit - unsigned{'0'};
    }
    const unsigned lower = unit | 0x20U;
    return lower >= 'a' && lower <= 'f' ? std::optional(lower - 'a' + 10) : std::nullopt;
}

// Takes one to `most` hexadecimal digits off the front of `text`.
std::optional<DWORD> HexNumber(WideView& text, int most) noexcept {
    DWORD number = 0;
    int digits = 0;
    for (; digits < most && !text.empty(); ++digits, text.remove_prefix(1)) {
        const std::optional<unsigned> digit = HexDigit(text.front());
        if (!digit) {
            break;
        }
        number = number << 4 | *digit;
    }
    return digits > 0 ? std::optional(number) : std::nullopt;
}

// Takes a text in quotes off the front of `text`, which begins with its quote; nothing when no quote ends it.
std::optional<CStringW> QuotedText(WideView& text) {
    CStringW out;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return out;
        }
        const bool isEscape = text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '\\' || text[i + 1] == '"');
        i += isEscape ? 1 : 0;
        out.push_back(text[i]);
    }
    return std::nullopt;
}

void AppendLittleEndian(std::vector<BYTE>& data, DWORD number, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        data.push_back(static_cast<BYTE>(number >> (8 * i)));
    }
}

// What stands behind the equals sign, read; the functions below give nothing for what cannot be read.
struct TypedData {
    DWORD type;
    std::vector<BYTE> data;
};

std::optional<TypedData> ParseText(WideView text) {
    const std::optional<CStringW> content = QuotedText(text);
    if (!content || !IsLineEnd(text)) {
        return std::nullopt;
    }
    TypedData result = {REG_SZ, {}};
    result.data.reserve((content->size() + 1) * sizeof(WCHAR));
    for (const WCHAR unit : *content) {
        AppendLittleEndian(result.data, unit, 2);
    }
    AppendLittleEndian(result.data, 0, 2);
    return result;
}

std::optional<TypedData> ParseDword(WideView digits) {
    digits = Trimmed(digits);
    const std::optional<DWORD> number = HexNumber(digits, 8);
    if (!number || !IsLineEnd(digits)) {
        return std::nullopt;
    }
    TypedData result = {REG_DWORD, {}};
    AppendLittleEndian(result.data, *number, 4);
    return result;
}

// `list` begins behind "hex", with the type in parentheses or the colon.
std::optional<TypedData> ParseHex(WideView list) {
    TypedData result = {REG_BINARY, {}};
    if (Skip(list, "("_w)) {
        const std::optional<DWORD> type = HexNumber(list, 8);
        if (!type || !Skip(list, ")"_w)) {
            return std::nullopt;
        }
        result.type = *type;
    }
    if (!Skip(list, ":"_w)) {
        return std::nullopt;
    }
    for (list = Trimmed(list); !IsLineEnd(list); list = Trimmed(list)) {
        const std::optional<DWORD> byte = HexNumber(list, 2);
        if (!byte) {
            return std::nullopt;
        }
        result.data.push_back(static_cast<BYTE>(*byte));
        list = Trimmed(list);
        if (!Skip(list, ","_w) && !IsLineEnd(list)) {
            return std::nullopt;
        }
    }
    return result;
}

std::optional<TypedData> ParseData(WideView text) {
    if (text.starts_with(WCHAR{'"'})) {
        return ParseText(text);
    }
    if (Skip(text, "dword:"_w)) {
        return ParseDword(text);
    }
    return Skip(text, "hex"_w) ? ParseHex(text) : std::nullopt;
}

class RegistryParser {
public:
    RegistryParser(WideView text, const RegistryLimits& limits) noexcept : m_rest(text), m_limits(limits) {}

    std::unique_ptr<RegistryKey> Parse() {
        auto root = std::make_unique<RegistryKey>();
        if (Trimmed(m_rest.substr(0, m_rest.find_first_of("\r\n"_w))) == "REGEDIT4"_w) {
            return root;
        }
        m_root = root.get();
        while (!m_rest.empty()) {
            const WideView line = Trimmed(NextLine());
            if (line.starts_with(WCHAR{'['})) {
                KeyLine(line);
            } else if (line.starts_with(WCHAR{'"'}) || line.starts_with(WCHAR{'@'})) {
                ValueLine(line);
            }
        }
        return root;
    }

private:
    WideView NextLine() noexcept {
        const WideView line = m_rest.substr(0, m_rest.find_first_of("\r\n"_w));
        m_rest.remove_prefix(line.size());
        if (!Skip(m_rest, "\r\n"_w)) {
            m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        }
        return line;
    }

    // A key's name may hold ']', so the line's last one ends it.
    void KeyLine(WideView line) {
        m_current = nullptr;
        const std::size_t end = line.rfind(WCHAR{']'});
        if (end == WideView::npos || !IsLineEnd(line.substr(end + 1))) {
            return;
        }
        WideView path = line.substr(1, end - 1);
        const bool isRemoval = Skip(path, "-"_w);
        const std::optional<std::vector<WideView>> names = SplitPath(path);
        if (!names) {
            return;
        }
        if (isRemoval) {
            RemoveKey(*names);
        } else {
            m_current = MakeKey(*names);
        }
    }

    // The names along the path, the root's first; nothing for an unknown root or a path that exceeds the limits.
    std::optional<std::vector<WideView>> SplitPath(WideView path) const {
        std::vector<WideView> names;
        while (!path.empty()) {
            const std::size_t end = path.find(WCHAR{'\\'});
            const WideView name = path.substr(0, end);
            path.remove_prefix(end == WideView::npos ? path.size() : end + 1);
            if (name.size() > m_limits.keyName || names.size() == m_limits.depth) {
                return std::nullopt;
            }
            if (!name.empty()) {
                names.push_back(name);
            }
        }
        const bool isKnown =
            !names.empty()
            && std::find(std::begin(kRoots), std::end(kRoots), FoldCase(names.front())) != std::end(kRoots);
        return isKnown ? std::optional(std::move(names)) : std::nullopt;
    }

    RegistryKey* MakeKey(const std::vector<WideView>& names) {
        RegistryKey* key = m_root;
        for (const WideView name : names) {
            CStringW folded = FoldCase(name);
            auto found = key->keys.find(folded);
            if (found == key->keys.end()) {
                if (m_keyCount == m_limits.keys) {
                    return nullptr;
                }
                ++m_keyCount;
                auto made = std::make_unique<RegistryKey>();
                made->name = name;
                found = key->keys.emplace(std::move(folded), std::move(made)).first;
            }
            key = found->second.get();
        }
        return key;
    }

    // A root itself stays, as it does in regedit.
    void RemoveKey(const std::vector<WideView>& names) {
        RegistryKey* parent = m_root;
        for (std::size_t i = 0; i + 1 < names.size(); ++i) {
            const auto found = parent->keys.find(FoldCase(names[i]));
            if (found == parent->keys.end()) {
                return;
            }
            parent = found->second.get();
        }
        if (parent != m_root) {
            parent->keys.erase(FoldCase(names.back()));
        }
    }

    void ValueLine(WideView line) {
        std::optional<CStringW> name = CStringW();
        if (!Skip(line, "@"_w)) {
            name = QuotedText(line);
        }
        line = Trimmed(line);
        if (!name || !Skip(line, "="_w)) {
            return;
        }
        line = Trimmed(line);
        CStringW joined;  // keeps the text of a value of several lines
        if (line.starts_with("hex"_w)) {
            joined = WithContinuations(line);
            line = joined;
        }
        if (m_current != nullptr && name->size() <= m_limits.valueName) {
            SetValue(*m_current, std::move(*name), line);
        }
    }

    static void SetValue(RegistryKey& key, CStringW name, WideView text) {
        CStringW folded = FoldCase(name);
        if (text.starts_with(WCHAR{'-'}) && IsLineEnd(text.substr(1))) {
            key.values.erase(folded);
        } else if (std::optional<TypedData> parsed = ParseData(text)) {
            key.values.insert_or_assign(std::move(folded),
                                        RegistryValue{std::move(name), parsed->type, std::move(parsed->data)});
        }
    }

    // `line`, and the lines below it for as long as one ends in a backslash, which goes.
    CStringW WithContinuations(WideView line) {
        CStringW joined;
        while (line.ends_with(WCHAR{'\\'}) && !m_rest.empty()) {
            joined.append(line.substr(0, line.size() - 1));
            line = Trimmed(NextLine());
        }
        return joined.append(line);
    }

    WideView m_rest;  // what is still to be read
    const RegistryLimits& m_limits;
    RegistryKey* m_root = nullptr;
    RegistryKey* m_current = nullptr;  // the key of the values that follow; null when they are skipped
    std::size_t m_keyCount = 0;        // ever made: removing keys buys no room for more
};

CStringW FromUtf16Bytes(std::string_view bytes) {
    CStringW text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(
            static_cast<WCHAR>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return text;
}

CStringW Decode(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return FromUtf16Bytes(bytes.substr(2));
    }
    return FromUtf8(bytes.starts_with("\xEF\xBB\xBF") ? bytes.substr(3) : bytes);
}

}  // namespace

CStringW FoldCase(WideView name) {
    CStringW folded(name);
    std::ranges::transform(folded, folded.begin(), vx_linux::UpperUnit);
    return folded;
}

std::unique_ptr<RegistryKey> ParseRegistry(std::string_view bytes, const RegistryLimits& limits) {
    const CStringW text = Decode(bytes);
    return RegistryParser(text, limits).Parse();
}

}  // namespace vx_system
