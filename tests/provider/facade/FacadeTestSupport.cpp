#include "tests/provider/facade/FacadeTestSupport.h"

#include "platform/Paths.h"
#include "provider/Common/Log.h"
#include "testing/scripted_mapi/CallText.h"

#include <algorithm>
#include <fstream>
#include <iterator>

using namespace scripted_mapi;

namespace {

constexpr LONG kUntouched = 7;

std::string BytesText(const SAFEARRAY& array) {
    const auto* bytes = static_cast<const BYTE*>(array.pvData);
    return "<" + Hex({bytes, array.rgsabound[0].cElements}) + ">";
}

}  // namespace

std::string Show(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY: return "-";
        case VT_I4: return std::to_string(value.lVal);
        case VT_I8: return std::to_string(value.llVal) + "L";
        case VT_BOOL: return value.boolVal != 0 ? "yes" : "no";
        case VT_R8: return std::to_string(value.dblVal) + "d";
        case VT_BSTR: return Ascii(TextOf(value));
        case VT_ARRAY | VT_UI1: return BytesText(*value.parray);
        case VT_ARRAY | VT_VARIANT: break;
        default: return "type " + std::to_string(value.vt);
    }
    std::string text;
    for (const VARIANT& field : HostValue::ElementsOf(value)) {
        text += (text.empty() ? "" : "|") + Show(field);
    }
    return text;
}

Words ShowList(const VARIANT& list) {
    if (list.vt != (VT_ARRAY | VT_VARIANT)) {
        return {"no list"};
    }
    Words rows;
    for (const VARIANT& record : HostValue::ElementsOf(list)) {
        rows.push_back(Show(record));
    }
    return rows;
}

std::string ShowField(const VARIANT& record, std::size_t field) {
    return record.vt == (VT_ARRAY | VT_VARIANT) ? Show(HostValue::ElementsOf(record)[field]) : "no record";
}

// ---- The host ----

Host::~Host() {
    Reset();
    for (VARIANT& uri : m_uris) {
        VariantClear(&uri);
    }
}

void Host::Reset() {
    if (value.vt == (VT_ARRAY | VT_VARIANT) || value.vt == (VT_ARRAY | VT_UI1)) {
        VariantClear(&value);
    }
    value = {};
    value.vt = VT_I4;
    text = "untouched"_w;
    std::fill(std::begin(counts), std::end(counts), kUntouched);
    result = true;
}

std::string Host::Changes() const {
    std::string changes;
    const auto tell = [&](bool isChanged, const std::string& what) {
        if (isChanged) {
            changes += (changes.empty() ? "" : "; ") + what;
        }
    };
    tell(value.vt != VT_I4, value.vt == VT_EMPTY ? "value empty" : "value=" + Show(value));
    tell(text != "untouched"_w, "text=" + Ascii(text));
    std::string numbers;
    bool isCounted = false;
    for (const LONG count : counts) {
        numbers += (numbers.empty() ? "" : ",") + std::to_string(count);
        isCounted = isCounted || count != kUntouched;
    }
    tell(isCounted, "counts=" + numbers);
    tell(!result, "result=no");
    return changes;
}

VARIANT Host::Uri(int type, const CStringW& path) {
    CURIObjectData uri(static_cast<UriType>(type), profile, store, folder, 0, false, item, path, eVxItemEmail);
    uri.Dettach(&m_uris.emplace_back());
    return m_uris.back();
}

// ---- The operations ----

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = {
        {"GetItemData", [](Host& h) { return h.instance.GetItemData(h.Item(), eBodyText, false, &h.value); }, E_FAIL,
         "value empty", "value empty", "psfi"},
        {"GetItemData", [](Host& h) { return h.instance.GetItemData(h.Embedded(), eBodyText, true, &h.value); }, E_FAIL,
         "value empty", "value empty", "psfia"},
        {"GetItemBody", [](Host& h) { return h.instance.GetItemBody(h.Item(), eBodyText, h.text); }, E_FAIL, "",
         "text=", "ps"},
        {"GetItemBody", [](Host& h) { return h.instance.GetItemBody(h.Item(), eBodyText, true, h.text); }, E_FAIL,
         "text=", "text=", "psfi"},
        {"ReleaseVxMapi", [](Host& h) { return h.instance.ReleaseVxMapi(); }, S_OK, "", "", ""},
        {"SetAbort", [](Host& h) { return h.instance.SetAbort(false); }, S_FALSE, "", "", ""},
        {"Disconnect", [](Host& h) { return h.instance.Disconnect(); }, S_FALSE, "", "", ""},
        {"ClearFolderCache", [](Host& h) { return h.instance.ClearFolderCache(); }, S_FALSE, "", "", ""},
        {"ClearFolderCache", [](Host& h) { return h.instance.ClearFolderCache(h.profile.c_str(), h.store.c_str()); },
         S_FALSE, "", "", "ps"},
        {"GetSystemProfiles", [](Host& h) { return h.instance.GetSystemProfiles(&h.value); }, E_FAIL, "value empty", "",
         ""},
        {"ShowGABContact", [](Host& h) { return h.instance.ShowGABContact(h.profile.c_str(), h.item.c_str()); }, E_FAIL,
         "", "", ""},
        {"GetProfileStores", [](Host& h) { return h.instance.GetProfileStores(h.profile.c_str(), &h.value); }, E_FAIL,
         "value empty", "", ""},
        {"GetStoreFolders",
         [](Host& h) { return h.instance.GetStoreFolders(h.profile.c_str(), h.store.c_str(), &h.value); }, E_FAIL,
         "value empty", "value empty", "ps"},
        {"GetProfileFolders", [](Host& h) { return h.instance.GetProfileFolders(h.profile.data(), &h.value); }, E_FAIL,
         "value empty", "value empty", "p"},
        {"GetSubFolders",
         [](Host& h) {
             return h.instance.GetSubFolders(h.profile.c_str(), h.store.c_str(), h.folder.c_str(), h.item.c_str(),
                                             &h.value);
         },
         E_FAIL, "value empty", "value empty", "psf"},
        {"GetFolderItemURIs",
         [](Host& h) {
             return h.instance.GetFolderItemURIs(h.profile.data(), h.store.data(), h.folder.data(), &h.value);
         },
         E_FAIL, "value empty", "value empty", "psf"},
        {"QueryItems", [](Host& h) { return h.instance.QueryItems(h.Folder(), 0, false, &h.value, &h.counts[0]); },
         E_FAIL, "value empty; counts=0,7,7", "value empty; counts=0,7,7", "psf"},
        {"QueryAttachments", [](Host& h) { return h.instance.QueryAttachments(h.Item(), &h.value, &h.counts[0]); },
         E_FAIL, "value empty; counts=0,7,7", "value empty; counts=0,7,7", "psfi"},
        {"QueryAttachments", [](Host& h) { return h.instance.QueryAttachments(h.Embedded(), &h.value, &h.counts[0]); },
         E_FAIL, "value empty; counts=0,7,7", "value empty; counts=0,7,7", "psfia"},
        {"GetChildrenItemsCount",
         [](Host& h) {
             return h.instance.GetChildrenItemsCount(h.Folder(), 1, 2, false, &h.counts[0], &h.counts[1], &h.counts[2]);
         },
         E_FAIL, "", "counts=0,0,0", "psf"},
        {"GetSpecialFolderName",
         [](Host& h) { return h.instance.GetSpecialFolderName(h.profile.c_str(), h.store.c_str(), 0, h.text); }, E_FAIL,
         "text=", "text=", "ps"},
        {"GetExchangeServer", [](Host& h) { return h.instance.GetExchangeServer(h.profile.c_str(), h.text); }, E_FAIL,
         "text=", "text=", "p"},
        {"GetAttachment", [](Host& h) { return h.instance.GetAttachment(h.Plain(), eBodyText, &h.value); }, E_FAIL, "",
         "value empty", "ps"},
        {"GetBinaryItemBody",
         [](Host& h) { return h.instance.GetBinaryItemBody(h.Plain(), eBodyText, false, &h.value); }, E_FAIL,
         "value empty", "value empty", "psfia"},
        {"GetBinaryItemData",
         [](Host& h) { return h.instance.GetBinaryItemData(h.Plain(), eBodyText, false, &h.value); }, E_FAIL,
         "value empty", "value empty", "psfia"},
        {"CreateMAPIProfile", [](Host& h) { return h.instance.CreateMAPIProfile(h.item.c_str(), h.result); }, E_FAIL,
         "", "", ""},
        {"DeleteMAPIProfile", [](Host& h) { return h.instance.DeleteMAPIProfile(h.profile.c_str(), h.result); }, E_FAIL,
         "", "", ""},
        {"AddDelegateStoreToProfile",
         [](Host& h) {
             return h.instance.AddDelegateStoreToProfile(h.item.c_str(), h.item.c_str(), h.item.c_str(), h.item.c_str(),
                                                         h.profile.c_str(), h.result);
         },
         E_FAIL, "", "", ""},
        {"RemoveDelegateStore",
         [](Host& h) { return h.instance.RemoveDelegateStore(h.item.c_str(), h.profile.c_str(), h.result); }, E_FAIL,
         "", "", ""},
        {"AddPSTToMAPIProfile",
         [](Host& h) { return h.instance.AddPSTToMAPIProfile(h.file.c_str(), h.profile.c_str(), h.result); }, E_FAIL,
         "", "", ""},
        {"AddExchangeToProfile",
         [](Host& h) {
             return h.instance.AddExchangeToProfile(h.profile.c_str(), h.item.c_str(), h.item.c_str(), true, h.result);
         },
         E_FAIL, "", "", ""},
    };
    return operations;
}

// ---- The test ----

FacadeTest::FacadeTest() {
    message->properties.Set(Text(PR_BODY_W, "the body"));
    Attach(ATTACH_BY_VALUE, "a.txt", "data");
    inner = Embed(*message, "inner", "IPM.Note");
    inner->properties.Set(Text(PR_BODY_W, "the inner body"));
    host.file = folder.File("a.pst");
    WriteFile(host.file, "");
    m_logRead = ReadFile(Vx::GetLogFilePath()).size();
}

void FacadeTest::TearDown() {
    instance.ReleaseVxMapi();
    EXPECT_EQ(mapi.initialized, 0);
    ItemTest::TearDown();
}

void FacadeTest::Initialize(std::string_view params) {
    ASSERT_EQ(instance.InitializeVxMapi(Wide(params), "Verbose"_w), S_OK);
    mapi.script.TakeCalls();
}

Words FacadeTest::TakeLines() {
    std::ifstream file(ToPath(Vx::GetLogFilePath()), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_logRead));
    const std::string log((std::istreambuf_iterator<char>(file)), {});
    m_logRead += log.size();
    // An entry is "... [group-Scanner] <level>   [(<thread>) <source> (<line>)] [log] - <function> - <text>".
    constexpr std::string_view kBeforeLevel = "[group-Scanner] ";
    constexpr std::string_view kBeforeName = "[log] - COutlookInstance::";
    constexpr std::string_view kBeforeText = " - ";
    Words lines;
    for (std::size_t at = log.find(kBeforeName); at != std::string::npos; at = log.find(kBeforeName, at)) {
        const std::size_t level = log.rfind(kBeforeLevel, at) + kBeforeLevel.size();
        EXPECT_NE(log.substr(level, at - level).find(") OutlookInstance.cpp ("), std::string::npos);
        at += kBeforeName.size();
        const std::size_t text = log.find(kBeforeText, at);
        const std::size_t end = log.find("\r\n", text);
        lines.push_back(log.substr(level, log.find(' ', level) - level) + " " + log.substr(at, text - at) + ": "
                        + log.substr(text + kBeforeText.size(), end - text - kBeforeText.size()));
    }
    return lines;
}

std::string FacadeTest::TakeValue() {
    const std::string shown = Show(host.value);
    host.Reset();
    return shown;
}

Words FacadeTest::TakeList() {
    Words rows = ShowList(host.value);
    host.Reset();
    return rows;
}
