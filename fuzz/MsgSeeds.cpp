// Makes the seeds of msg_fuzz: msg_fuzz_seeds FOLDER. Small messages of each kind, some of them written by our writer
// and some put together by hand, the way that other programs leave them.
#include "localmapi/msg/MessageOnStorage.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Storage.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace localmapi;

constexpr DWORD kWriting = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

void Require(bool holds) {
    if (!holds) {
        std::fputs("a seed cannot be made\n", stderr);
        std::exit(1);
    }
}

ComPtr<IStorage> CreateFile(const std::filesystem::path& path) {
    ComPtr<IStorage> root;
    const std::u16string name = path.u16string();
    Require(StgCreateDocfile(reinterpret_cast<const WCHAR*>(name.c_str()), kWriting | STGM_CREATE, 0, root.Receive())
            == S_OK);
    return root;
}

std::unique_ptr<MessageSource> CreateMessage(const std::filesystem::path& path) {
    auto message = msg::OpenMessageOnStorage(CreateFile(path), {.isWritable = true});
    Require(static_cast<bool>(message));
    return *std::move(message);
}

void PutText(PropertySource& source, ULONG tag, WideView text) {
    Arena memory;
    Require(static_cast<bool>(source.Write(WideValue(tag, text, memory))));
}

void PutBytes(PropertySource& source, ULONG tag, std::string_view text) {
    Arena memory;
    const ByteView bytes(reinterpret_cast<const std::byte*>(text.data()), text.size());
    Require(static_cast<bool>(source.Write(BinaryValue(tag, bytes, memory))));
}

void Save(PropertySource& source) {
    Require(static_cast<bool>(source.Save()));
}

void PutSeveral(PropertySource& source) {
    WCHAR first[] = {'a', 0};
    WCHAR second[] = {'b', 'c', 0};
    LPWSTR texts[] = {first, second};
    LONG numbers[] = {1, 2, 3};
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_MV_UNICODE, 0x8001);
    value.Value.MVszW = {2, texts};
    Require(static_cast<bool>(source.Write(value)));
    value.ulPropTag = PROP_TAG(PT_MV_LONG, 0x6000);
    value.Value.MVl = {3, numbers};
    Require(static_cast<bool>(source.Write(value)));
}

// Texts, several values, names, recipients, an attachment of each kind, a message within a message.
void MakeFullMessage(const std::filesystem::path& path) {
    const auto message = CreateMessage(path);
    PutText(*message, PR_SUBJECT_W, "Subject"_w);
    PutText(*message, PR_BODY_W, "Body"_w);
    PutBytes(*message, PR_HTML, "<p>Body</p>");
    PutBytes(*message, PR_RTF_COMPRESSED, std::string_view("\x12\0\0\0\6\0\0\0MELA\0\0\0\0{\\rtf}", 22));
    message->Names().FindOrAdd({OleGuid(0x00062008), false, 0x8505, {}});
    message->Names().FindOrAdd({PS_PUBLIC_STRINGS, true, 0, CStringW("Keywords"_w)});
    PutSeveral(*message);
    Arena memory;
    SPropValue row[] = {LongValue(PR_RECIPIENT_TYPE, 1), WideValue(PR_DISPLAY_NAME_W, "Ann"_w, memory)};
    Require(static_cast<bool>(message->ReplaceRecipients({{0, 2, row}, {0, 1, row}})));
    ULONG number = 0;
    const auto file = message->CreateAttachment(number);
    PutBytes(**file, PR_ATTACH_DATA_BIN, "file");
    Save(**file);
    const auto object = message->CreateAttachment(number);
    Require(static_cast<bool>((*object)->CreateStorage()));
    Save(**object);
    const auto outer = message->CreateAttachment(number);
    const auto within = (*outer)->CreateMessage();
    PutText(**within, PR_SUBJECT_W, "Inner"_w);
    const auto deep = (*within)->CreateAttachment(number);
    const auto deepest = (*deep)->CreateMessage();
    Save(**deepest);
    Save(**deep);
    Save(**within);
    Save(**outer);
    Save(*message);
}

void PutStream(IStorage& storage, WideView name, std::string_view bytes) {
    ComPtr<IStream> stream;
    ULONG written = 0;
    Require(storage.CreateStream(CStringW(name).c_str(), kWriting | STGM_CREATE, 0, 0, stream.Receive()) == S_OK
            && stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written) == S_OK);
}

// 8-bit texts in a page that they are not in, and an attachment without a property stream.
void MakeNarrowMessage(const std::filesystem::path& path) {
    const auto root = CreateFile(path);
    PutStream(*root, "__properties_version1.0"_w,
              std::string_view("\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0"
                               "\x1E\0\x37\0\6\0\0\0\3\0\0\0\0\0\0\0"
                               "\3\0\xFD\x3F\6\0\0\0\xA4\3\0\0\0\0\0\0"
                               "\x1E\x10\0\x80\6\0\0\0\4\0\0\0\0\0\0\0"
                               "\2\x01\x10\x10\6\0\0\0\4\0\0\0\0\0\0\0",
                               96));
    PutStream(*root, "__substg1.0_0037001E"_w, "\xE4\xF6");
    PutStream(*root, "__substg1.0_8000101E"_w, std::string_view("\2\0\0\0", 4));
    PutStream(*root, "__substg1.0_8000101E-00000000"_w, std::string_view("k\0", 2));
    ComPtr<IStorage> part;
    Require(root->CreateStorage("__attach_version1.0_#00000000"_w, kWriting, 0, 0, part.Receive()) == S_OK);
    PutStream(*part, "__substg1.0_37010102"_w, "data");
}

// No property stream at all.
void MakeStreamsOnly(const std::filesystem::path& path) {
    const auto root = CreateFile(path);
    PutStream(*root, "__substg1.0_0037001F"_w, std::string_view("x\0", 2));
    PutStream(*root, "__substg1.0_8000101f"_w, std::string_view("\4\0\0\0", 4));
    PutStream(*root, "__substg1.0_8000101f-00000000"_w, std::string_view("y\0\0\0", 4));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("msg_fuzz_seeds FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    std::filesystem::create_directories(folder);
    MakeFullMessage(folder / "full.msg");
    MakeNarrowMessage(folder / "narrow.msg");
    MakeStreamsOnly(folder / "streams-only.msg");
    return 0;
}
