// Names of temporary files, and what makes a name valid as that of a file.
#include "platform/LocaleText.h"
#include "platform/Paths.h"
#include "platform/WideText.h"
#include "provider/Common/Format.h"
#include "provider/Common/StringHelpers.h"
#include "provider/MAPIUtils.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t kDefaultMaxLength = 1024;

constexpr auto& kForbidden = "<>:\"/\\|*?"_w;

// Names that Windows gives to devices in every folder, whatever follows their first dot.
constexpr auto kReservedNames = std::to_array<const WCHAR*>({
    "CON"_w,  "PRN"_w,  "AUX"_w,  "CLOCK$"_w, "NUL"_w,  "COM1"_w, "COM2"_w, "COM3"_w,
    "COM4"_w, "COM5"_w, "COM6"_w, "COM7"_w,   "COM8"_w, "COM9"_w, "LPT1"_w, "LPT2"_w,
    "LPT3"_w, "LPT4"_w, "LPT5"_w, "LPT6"_w,   "LPT7"_w, "LPT8"_w, "LPT9"_w,
});
static_assert(kReservedNames.size() == 23);

// Replaces each forbidden character by "%" and its code in two lower-case hexadecimal digits.
void EscapeForbidden(CStringW& name) {
    for (std::size_t at = name.find_first_of(kForbidden); at != CStringW::npos;
         at = name.find_first_of(kForbidden, at + 3)) {
        name.replace(at, 1, Vx::FormatString("%%%02x"_w, static_cast<unsigned>(name[at])));
    }
}

WCHAR ToUpperAscii(WCHAR unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - 'a' + 'A') : unit;
}

// Whether `name` is the device's, alone or with an extension.
bool IsReserved(WideView name, WideView device) {
    if (name.size() < device.size() || !std::equal(device.begin(), device.end(), name.begin(), [](WCHAR a, WCHAR b) {
            return a == ToUpperAscii(b);
        })) {
        return false;
    }
    return name.size() == device.size() || name[device.size()] == '.';
}

}  // namespace

std::atomic<std::int32_t> CMapiUtil::s_tempFilesCounter = 0;

CStringW CMapiUtil::GetATempFileName(WideView folder, WideView suffix, std::size_t maxLength) {
    CStringW name = Vx::FormatString("tmp_%d_%s"_w, ++s_tempFilesCounter, GetDateTimeForFileName());
    name += suffix;
    const std::size_t taken = folder.size() + 1;
    ConvertToValidFileName(name, maxLength > taken ? maxLength - taken : 0);
    CStringW path(folder);
    if (!path.empty() && path.back() != kPathSeparator) {
        path += kPathSeparator;
    }
    return path + name;
}

CStringW CMapiUtil::GetATempFileName(WideView folder) {
    return GetATempFileName(folder, {}, kDefaultMaxLength);
}

CStringW CMapiUtil::GetATempFileName() {
    std::array<WCHAR, 1024> folder;
    constexpr DWORD kSize = folder.size() - 1;
    const DWORD length = GetTempPathW(kSize, folder.data());
    return GetATempFileName(WideView(folder.data(), length < kSize ? length : 0));
}

CStringW CMapiUtil::GetDateTimeForFileName() {
    std::array<WCHAR, 128> text;
    constexpr int kSize = text.size();
    // Each gives the units that it wrote, the terminator counted; the date's is overwritten by the at sign.
    const int date = std::max(GetDateFormatW(LOCALE_USER_DEFAULT, 0, nullptr, "ddMMyy"_w, text.data(), kSize), 1);
    text[static_cast<std::size_t>(date) - 1] = '@';
    const int time =
        GetTimeFormatW(LOCALE_USER_DEFAULT, 0, nullptr, "hh'-'mm'-'sstt"_w, text.data() + date, kSize - date);
    return CStringW(text.data(), static_cast<std::size_t>(date + std::max(time - 1, 0)));
}

void CMapiUtil::ConvertToValidFileName(CStringW& name, std::size_t maxLength) {
    EscapeForbidden(name);
    if (name.empty() || name.back() == ' ') {
        name += "%00"_w;
    }
    for (const WCHAR* device : kReservedNames) {
        if (IsReserved(name, device)) {
            name.insert(0, "%reserved"_w);
        }
    }
    if (name.size() > maxLength) {
        TrunkName(name, GetExtension(name), maxLength);
    }
}

CStringW CMapiUtil::GetExtension(WideView path) {
    const std::size_t separator = path.find_last_of("/\\"_w);
    const WideView name = separator == WideView::npos ? path : path.substr(separator + 1);
    const WideView limited = name.substr(0, name.find('?'));
    const std::size_t dot = limited.rfind('.');
    return dot == WideView::npos ? CStringW() : CStringW(limited.substr(dot + 1));
}
