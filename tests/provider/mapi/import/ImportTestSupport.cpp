#include "tests/provider/mapi/import/ImportTestSupport.h"

#include "platform/Paths.h"

#include <stdexcept>

namespace {

std::filesystem::path ProgramFolder() {
    WCHAR path[1024] = {};
    GetModuleFileNameW(nullptr, path, 1024);
    return ToPath(path).parent_path();
}

template <typename T>
std::int64_t AddressOf(T* pointer) {
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(pointer));
}

SCODE ProbePropCopyMore() {
    SPropValue source = {};
    SPropValue copy = {};
    source.ulPropTag = kProbeTag;
    return PropCopyMore(&copy, &source, nullptr, nullptr);
}

constexpr std::int64_t kFail = static_cast<std::int32_t>(0x80004005);

LPVOID g_block = nullptr;

constexpr Probe kProbes[] = {
    {.name = "MAPIAllocateBuffer",
     .call = [] { return std::int64_t{MAPIAllocateBuffer(kProbeSize, &g_block)}; },
     .missing = kFail},
    {.name = "MAPIAllocateMore",
     .call = [] { return std::int64_t{MAPIAllocateMore(kProbeSize, &g_block, &g_block)}; },
     .missing = kFail},
    {.name = "MAPIFreeBuffer", .call = [] { return std::int64_t{MAPIFreeBuffer(&g_block)}; }, .missing = 0},
    {.name = "HrGetOneProp",
     .call = [] { return std::int64_t{HrGetOneProp(nullptr, 0, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "MAPIInitialize",
     .call = [] { return std::int64_t{MAPIInitialize(nullptr)}; },
     .missing = kFail,
     .isFew = true},
    {.name = "MAPIUninitialize",
     .call =
         [] {
             MAPIUninitialize();
             return std::int64_t{0};
         },
     .missing = 0,
     .isVoid = true},
    {.name = "FreeProws",
     .call =
         [] {
             FreeProws(nullptr);
             return std::int64_t{0};
         },
     .missing = 0,
     .isVoid = true,
     .isFew = true,
     .isDecorated = true},
    {.name = "PpropFindProp",
     .call = [] { return AddressOf(PpropFindProp(nullptr, 0, 0)); },
     .missing = 0,
     .isDecorated = true},
    {.name = "ScDupPropset",
     .call = [] { return std::int64_t{ScDupPropset(0, nullptr, nullptr, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "ScCountProps",
     .call = [] { return std::int64_t{ScCountProps(0, nullptr, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "ScCopyProps",
     .call = [] { return std::int64_t{ScCopyProps(0, nullptr, nullptr, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "OpenIMsgOnIStg",
     .call =
         [] {
             return std::int64_t{
                 OpenIMsgOnIStg(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr)};
         },
     .missing = kFail,
     .isDecorated = true},
    {.name = "MAPIGetDefaultMalloc",
     .call = [] { return AddressOf(MAPIGetDefaultMalloc()); },
     .missing = 0,
     .isDecorated = true},
    {.name = "OpenTnefStreamEx",
     .call = [] { return std::int64_t{OpenTnefStreamEx(nullptr, nullptr, nullptr, 0, nullptr, 0, nullptr, nullptr)}; },
     .missing = kFail},
    {.name = "CloseIMsgSession",
     .call =
         [] {
             CloseIMsgSession(nullptr);
             return std::int64_t{0};
         },
     .missing = 0,
     .isVoid = true,
     .isDecorated = true},
    {.name = "OpenIMsgSession",
     .call = [] { return std::int64_t{OpenIMsgSession(nullptr, 0, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "HrQueryAllRows",
     .call = [] { return std::int64_t{HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, nullptr)}; },
     .missing = kFail,
     .isFew = true,
     .isDecorated = true},
    {.name = "MAPIOpenFormMgr",
     .call = [] { return std::int64_t{MAPIOpenFormMgr(nullptr, nullptr)}; },
     .missing = kFail},
    {.name = "RTFSync", .call = [] { return std::int64_t{RTFSync(nullptr, 0, nullptr)}; }, .missing = kFail},
    {.name = "HrSetOneProp",
     .call = [] { return std::int64_t{HrSetOneProp(nullptr, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "FreePadrlist",
     .call =
         [] {
             FreePadrlist(nullptr);
             return std::int64_t{0};
         },
     .missing = 0,
     .isVoid = true,
     .isDecorated = true},
    {.name = "PropCopyMore",
     .call = [] { return std::int64_t{ProbePropCopyMore()}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "WrapCompressedRTFStream",
     .call = [] { return std::int64_t{WrapCompressedRTFStream(nullptr, 0, nullptr)}; },
     .missing = kFail},
    {.name = "MAPILogonEx",
     .call = [] { return std::int64_t{MAPILogonEx(0, nullptr, nullptr, 0, nullptr)}; },
     .missing = kFail},
    {.name = "MAPIAdminProfiles", .call = [] { return std::int64_t{MAPIAdminProfiles(0, nullptr)}; }, .missing = kFail},
    {.name = "HrValidateIPMSubtree",
     .call = [] { return std::int64_t{HrValidateIPMSubtree(nullptr, 0, nullptr, nullptr, nullptr)}; },
     .missing = kFail,
     .isDecorated = true},
    {.name = "MAPIOpenLocalFormContainer",
     .call = [] { return std::int64_t{MAPIOpenLocalFormContainer(nullptr)}; },
     .missing = kFail},
    {.name = "HrDispatchNotifications",
     .call = [] { return std::int64_t{HrDispatchNotifications(0)}; },
     .missing = kFail,
     .isDecorated = true},
};

}  // namespace

CStringW Wide(std::string_view text) {
    return CStringW(text.begin(), text.end());
}

CStringW FakePath(const char* name) {
    return FromPath(ProgramFolder() / (std::string(name) + ".dll"));
}

std::filesystem::path FakeFile(const char* name) {
    const FakeLibrary library(name);
    WCHAR path[1024] = {};
    GetModuleFileNameW(library.Module(), path, 1024);
    return ToPath(path);
}

FakeLibrary::FakeLibrary(const char* name) : m_module(LoadLibraryW(FakePath(name).c_str())) {
    if (m_module == nullptr) {
        throw std::runtime_error(std::string("cannot load ") + name);
    }
}

std::span<const Probe> Probes() {
    return kProbes;
}

std::string TextBytes(std::string_view text) {
    std::string bytes;
    for (const char character : text) {
        bytes += {character, '\0'};
    }
    return bytes + std::string(2, '\0');
}
