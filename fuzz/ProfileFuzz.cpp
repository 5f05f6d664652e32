// Texts of profiles: any bytes give a profile or a refusal that names its line, and a profile that was taken is the same
// after it was written and read again. So is a name in the file of the default profile, and a file's name leads back to
// the profile's that it was made from.
#include "localmapi/profile/FileNames.h"
#include "localmapi/profile/ProfileText.h"
#include "localmapi/profile/PropertyText.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace localmapi;
using namespace localmapi::profile;

constexpr char kFile[] = "file";

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool AreSame(const SPropValue& a, const SPropValue& b) {
    return a.ulPropTag == b.ulPropTag && SizeOf(a) == SizeOf(b) && PropertyLine(a) == PropertyLine(b);
}

bool AreSame(const Section& a, const Section& b) {
    return a.Uid() == b.Uid()
           && std::ranges::equal(a.Properties(), b.Properties(),
                                 [](const SPropValue& x, const SPropValue& y) { return AreSame(x, y); });
}

bool AreSame(const std::vector<Section>& a, const std::vector<Section>& b) {
    return std::ranges::equal(a, b, [](const Section& x, const Section& y) { return AreSame(x, y); });
}

bool AreSame(const Profile& a, const Profile& b) {
    return a.name == b.name && AreSame(a.global, b.global) && AreSame(a.others, b.others)
           && std::ranges::equal(a.services, b.services, [](const Service& x, const Service& y) {
                  return AreSame(x.section, y.section) && AreSame(x.providers, y.providers);
              });
}

void CheckRefusal(const Error& refusal) {
    Require(refusal.code == ErrorCode::Corrupt && refusal.text.starts_with("file:"));
}

void CheckProfile(std::string_view text) {
    auto read = ParseProfile(text, kFile);
    if (!read) {
        CheckRefusal(read.Failure());
        static_cast<void>(FindProfileName(text));
        return;
    }
    Require(FindProfileName(text) == read->name);
    for (const Section* provider : read->StoreProviders()) {
        Require(read->ServiceOf(provider->Uid()) != nullptr && read->FindSection(provider->Uid()) == provider);
    }
    const std::string written = WriteProfile(*read);
    const auto again = ParseProfile(written, kFile);
    Require(again && AreSame(*read, *again) && WriteProfile(*again) == written);
}

void CheckDefaultName(std::string_view text) {
    const auto read = ParseDefaultName(text, kFile);
    if (!read) {
        CheckRefusal(read.Failure());
        return;
    }
    const auto again = ParseDefaultName(WriteDefaultName(*read), kFile);
    Require(again && *again == *read);
}

// The whole input as a name, cut to what a file's name can hold.
void CheckFileName(std::string_view text) {
    constexpr std::size_t kBytesOfAnEscape = 3;
    const CStringW name = ToWide(text.substr(0, kLongestStem / kBytesOfAnEscape), CP_UTF8);
    const CStringW stem = FileStemOf(name);
    const std::string spelled = ToNarrow(stem, CP_UTF8);
    Require(spelled.size() <= kLongestStem && spelled.find_first_of("/\\:*?\"<>|~") == std::string::npos);
    Require(spelled.size() > kLongestStem - 4 || NameOfFileStem(stem) == name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    CheckProfile(text);
    CheckDefaultName(text);
    CheckFileName(text);
    return 0;
}
