// A tour through the parts that work today, on this machine: vx_tour FOLDER [FILE.msg]. Writes its files into FOLDER;
// with a second argument, any compound file, it lists that file too. Ends non-zero when a stop of the tour fails.
#include "platform/CodePage.h"
#include "platform/FileTime.h"
#include "platform/Paths.h"
#include "platform/SafeArray.h"
#include "platform/Storage.h"
#include "platform/TaskMemory.h"
#include "provider/Common/Holders.h"
#include "provider/Common/Log.h"
#include "provider/ErrorNames.h"
#include "provider/ExchObjectData.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr auto& kSourcePath = "Tour.cpp"_w;

std::string Utf8(const WCHAR* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size > 0 ? size - 1 : 0), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

void Heading(const char* text) {
    std::printf("\n== %s\n", text);
}

// Reports a failed call by its published name.
bool Check(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        std::printf("%s failed: %s\n", what, Utf8(ErrorNameFromErrorCode(hr)).c_str());
    }
    return SUCCEEDED(hr);
}

bool List(IStorage* storage, const std::string& indent) {
    VxMapiPtr<IEnumSTATSTG> elements;
    if (!Check(storage->EnumElements(0, nullptr, 0, &elements), "EnumElements")) {
        return false;
    }
    STATSTG element = {};
    for (ULONG fetched = 0; elements->Next(1, &element, &fetched) == S_OK && fetched == 1;) {
        const CStringW name = element.pwcsName;
        CoTaskMemFree(element.pwcsName);
        std::printf("%s%-40s", indent.c_str(), Utf8(name.c_str()).c_str());
        if (element.type != STGTY_STORAGE) {
            std::printf(" %llu bytes\n", static_cast<unsigned long long>(element.cbSize.QuadPart));
            continue;
        }
        std::printf(" storage\n");
        VxMapiPtr<IStorage> child;
        const DWORD mode = STGM_READ | STGM_SHARE_EXCLUSIVE;
        if (!Check(storage->OpenStorage(name.c_str(), nullptr, mode, nullptr, 0, &child), "OpenStorage")
            || !List(child, indent + "  ")) {
            return false;
        }
    }
    return true;
}

bool ListFile(const std::filesystem::path& path) {
    VxMapiPtr<IStorage> root;
    const CStringW name = FromPath(path);
    const DWORD mode = STGM_READ | STGM_SHARE_DENY_WRITE;
    return Check(StgOpenStorage(name.c_str(), nullptr, mode, nullptr, 0, &root), "StgOpenStorage") && List(root, "  ");
}

bool ShowStorage(const std::filesystem::path& folder) {
    Heading("Structured storage: a compound file, written in one transaction and read back");
    const std::filesystem::path path = folder / "tour.msg";
    {
        VxMapiPtr<IStorage> root;
        VxMapiPtr<IStream> stream;
        const DWORD rootMode = STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE;
        const DWORD mode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
        const CStringW subject = "A note from the tour"_w;
        const auto bytes = static_cast<ULONG>(subject.size() * sizeof(WCHAR));
        const CStringW name = FromPath(path);
        if (!Check(StgCreateDocfile(name.c_str(), rootMode, 0, &root), "StgCreateDocfile")
            || !Check(WriteClassStg(root, OleGuid(0x00020D0B)), "WriteClassStg")
            || !Check(root->CreateStream("__substg1.0_0037001F"_w, mode, 0, 0, &stream), "CreateStream")
            || !Check(stream->Write(subject.data(), bytes, nullptr), "Write")
            || !Check(root->Commit(STGC_DEFAULT), "Commit")) {
            return false;
        }
    }
    std::printf("%s, %llu bytes:\n", path.string().c_str(),
                static_cast<unsigned long long>(std::filesystem::file_size(path)));
    return ListFile(path);
}

bool ShowRecord() {
    Heading("Object records: what a host receives for an e-mail");
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    CExchObjectData record;
    record.SetIntFieldVal("schemaUID"_field, 1, true);
    record.SetStringFieldVal("email_sSubject"_field, "Minutes of the meeting"_w, true);
    record.SetStringFieldVal("email_sFrom"_field, "Jane Doe <jane@example.org>"_w, true);
    record.SetBooleanFieldVal("email_bIsAttached"_field, false, true);
    record.SetLongLongFieldVal("email_lUTCDateReceived"_field, CMapiUtil::FromFileTimeToUnix(now), true);
    for (std::size_t i = 0; i < record.GetSize(); ++i) {
        if (!record.IsFieldSet(i)) {
            continue;
        }
        std::printf("  [%3zu] %-24s ", i, Utf8(record.GetFieldName(i)).c_str());
        switch (record.GetDataType(i)) {
            case CExchObject::eDataString:
                std::printf("\"%s\"\n", Utf8(static_cast<const WCHAR*>(record.GetStringFieldVal(i))).c_str());
                break;
            case CExchObject::eDataBoolean: std::printf("%s\n", record.GetBooleanFieldVal(i) ? "true" : "false"); break;
            case CExchObject::eDataInt: std::printf("%d\n", record.GetIntFieldVal(i)); break;
            default: std::printf("%lld\n", static_cast<long long>(record.GetLongLongFieldVal(i))); break;
        }
    }
    return true;
}

bool ShowMapi() {
    Heading("MAPI: looked for at run time");
    LPVOID block = nullptr;
    const SCODE code = MAPIAllocateBuffer(16, &block);
    if (FAILED(code)) {
        std::printf("  none is installed here; each call answers its fixed result (MAPIAllocateBuffer: %s)\n",
                    Utf8(ErrorNameFromErrorCode(code)).c_str());
    } else {
        std::printf("  found and loaded; MAPIAllocateBuffer gave a block\n");
        MAPIFreeBuffer(block);
    }
    UnloadMAPI();
    return true;
}

bool ShowLog() {
    Heading("The log, as it stands in the file");
    std::ifstream log(ToPath(Vx::GetLogFilePath()));
    std::string line;
    int lines = 0;
    for (; lines < 12 && std::getline(log, line); ++lines) {
        std::printf("  %s\n", line.c_str());
    }
    return lines > 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2 || count > 3) {
        std::fprintf(stderr, "usage: vx_tour FOLDER [FILE.msg]\n");
        return 1;
    }
    const std::filesystem::path folder = std::filesystem::absolute(arguments[1]);
    std::filesystem::create_directories(folder);
    const CStringW logs = FromPath(folder / "logs");
    Vx::LoggerInit(true, "Verbose"_w, "Vx MAPI Engine"_w, "tour"_w, logs, 12, false);
    VX_LOG('I') << Vx::LogMsg("The tour writes into '%s'"_w, FromPath(folder));

    bool done = ShowStorage(folder);
    if (count == 3) {
        Heading("The file given");
        done = ListFile(arguments[2]) && done;
    }
    done = ShowRecord() && done;
    done = ShowMapi() && done;
    done = ShowLog() && done;
    return done ? 0 : 2;
}
