// Services and sections away from the beaten track: what is refused and how that is told, and properties of sections.
#include "localmapi/profile/Services.h"
#include "platform/Storage.h"
#include "tests/localmapi/profile/AdminTestSupport.h"
#include "tests/localmapi/profile/MailboxFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace localmapi::profile::testing {
namespace {

class ServiceTest : public AdminTest {
protected:
    HRESULT ConfigureFile(IMsgServiceAdmin& services, MAPIUID service, const std::string& path) {
        Arena memory;
        SPropValue property = WideValue(PR_PST_PATH_W, Wide(path), memory);
        return services.ConfigureMsgService(&service, 0, 0, 1, &property);
    }

    ComPtr<IProfSect> OpenSection(IMsgServiceAdmin& services, MAPIUID uid, ULONG flags) {
        ComPtr<IProfSect> section;
        EXPECT_EQ(services.OpenProfileSection(&uid, nullptr, flags, section.Receive()), S_OK);
        return section;
    }
};

TEST_F(ServiceTest, FilesThatCannotBeAddedAreToldApart) {
    Bytes damaged(200);
    std::memcpy(damaged.data(), "!BDN", 4);
    const MailboxFile foreign("foreign.pst",
                              localmapi::testing::BytesOf("PK\x03\x04 this is something else, and long enough"));
    const MailboxFile cut("cut.pst", damaged);
    const MailboxFile empty("empty.pst", Bytes());
    struct Row {
        const char* what;
        std::string path;
        HRESULT result;
    };
    const Row rows[] = {
        {"missing", (m_folder.folder.Path() / "missing.pst").string(), MAPI_E_NOT_FOUND},
        {"in a missing folder", (m_folder.folder.Path() / "none" / "missing.pst").string(), MAPI_E_NOT_FOUND},
        {"foreign", foreign.Utf8Path(), MAPI_E_CORRUPT_STORE},
        {"cut", cut.Utf8Path(), MAPI_E_CORRUPT_STORE},
        {"empty", empty.Utf8Path(), MAPI_E_CORRUPT_STORE},
        {"no path", "", MAPI_E_UNCONFIGURED},
    };
    const ComPtr<IMsgServiceAdmin> services = Services();
    const MAPIUID service = AddService(*services, "MSPST MS");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(ConfigureFile(*services, service, row.path), row.result);
        const std::string text = LastErrorOf(*services, row.result);
        EXPECT_NE(text.find(row.path), std::string::npos) << text;
        EXPECT_NE(text.find("; "), std::string::npos) << "what to do is missing: " << text;
    }
    const Profile profile = Loaded();
    EXPECT_TRUE(StoresOf(profile)[0].file.empty());
}

#ifndef _WIN32
TEST_F(ServiceTest, AFileThatMayNotBeReadIsTold) {
    const MailboxFile file("locked.pst", "x");
    ASSERT_EQ(::chmod(file.Path().c_str(), 0), 0);
    const WithoutPrivileges scope(m_folder.folder.Path());
    const ComPtr<IMsgServiceAdmin> services = Services();
    EXPECT_EQ(ConfigureFile(*services, AddService(*services, "MSPST MS"), file.Utf8Path()), MAPI_E_NO_ACCESS);
}
#endif

TEST_F(ServiceTest, ARelativePathIsMadeAbsolute) {
    const MailboxFile file("here.pst", "Here");
    const ScopedFolder current(file.Path().parent_path());
    const ComPtr<IMsgServiceAdmin> services = Services();
    const MAPIUID service = AddService(*services, "MSPST MS");
    EXPECT_EQ(ConfigureFile(*services, service, "./x/../here.pst"), S_OK);
    const Profile profile = Loaded();
    EXPECT_TRUE(StoresOf(profile)[0].file.is_absolute());
    EXPECT_TRUE(std::filesystem::equivalent(StoresOf(profile)[0].file, file.Path()));
}

TEST_F(ServiceTest, AStoreIsCalledAsTheCallerTheStoreOrTheFileSays) {
    const MailboxFile named("named.pst", "Own name");
    const MailboxFile nameless(
        "Gr\xC3\xBC\xC3\x9F"
        "e.pst",
        "");
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID service = AddService(*services, "mspst ms");
    Arena memory;
    const auto name = [&] {
        const Profile profile = Loaded();
        return Utf8(StoresOf(profile)[0].displayName);
    };
    ASSERT_EQ(ConfigureFile(*services, service, named.Utf8Path()), S_OK);
    EXPECT_EQ(name(), "Own name");
    SPropValue both[] = {NarrowValue(PR_PST_PATH_A, ToNarrow(FromPath(named.Path()), CP_ACP), memory),
                         WideValue(PR_DISPLAY_NAME_W, "My name"_w, memory)};
    ASSERT_EQ(services->ConfigureMsgService(&service, 0, 0, 2, both), S_OK);
    EXPECT_EQ(name(), "My name");
    ASSERT_EQ(ConfigureFile(*services, service, nameless.Utf8Path()), S_OK);
    EXPECT_EQ(name(),
              "Gr\xC3\xBC\xC3\x9F"
              "e");
    // Once configured, a service keeps its file when it is configured without one.
    ASSERT_EQ(services->ConfigureMsgService(&service, 0, 0, 1, &both[1]), S_OK);
    EXPECT_EQ(name(), "My name");
    EXPECT_EQ(StoresOf(Loaded())[0].file, nameless.Path());
}

TEST_F(ServiceTest, PasswordsAreNotKept) {
    const MailboxFile file("a.pst", "a");
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID service = AddService(*services, "MSPST MS");
    Arena memory;
    SPropValue values[] = {WideValue(PR_PST_PATH_W, FromPath(file.Path()), memory),
                           NarrowValue(PR_PST_PW_SZ_OLD, "geheim", memory)};
    ASSERT_EQ(services->ConfigureMsgService(&service, 0, 0, 2, values), S_OK);
    const ComPtr<IProfSect> section = OpenSection(*services, service, MAPI_MODIFY);
    SPropValue secrets[] = {NarrowValue(PR_PST_PW_SZ_NEW, "geheim", memory),
                            BinaryValue(PROP_TAG(PT_BINARY, 0x67F0), Bytes(4), memory)};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(section->SetProps(2, secrets, &problems), S_OK);
    ASSERT_NE(problems, nullptr);
    EXPECT_EQ(problems->cProblem, 2U);
    const SPropProblem* second = problems->aProblem;
    EXPECT_EQ((++second)->scode, MAPI_E_NO_ACCESS);
    FreeRoot(problems);
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.storage.Folder())) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_EQ(text.find("geheim"), std::string::npos) << entry.path();
        EXPECT_EQ(text.find("0x67F0"), std::string::npos) << entry.path();
    }
}

TEST_F(ServiceTest, UnknownServicesAndProvidersAreNotFound) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    for (const char* name : {"CONTAB", "MSPST", "", "MSEMS "}) {
        EXPECT_EQ(services->CreateMsgService(Narrow(name), nullptr, 0, 0), MAPI_E_NOT_FOUND) << name;
        EXPECT_NE(LastErrorOf(*services, MAPI_E_NOT_FOUND).find("MSPST MS"), std::string::npos);
    }
    MAPIUID unknown = UidOf(9);
    ComPtr<IProviderAdmin> providers;
    EXPECT_EQ(services->AdminProviders(&unknown, 0, providers.Receive()), MAPI_E_NOT_FOUND);
    EXPECT_EQ(services->ConfigureMsgService(&unknown, 0, 0, 0, nullptr), MAPI_E_NOT_FOUND);
    EXPECT_EQ(services->ConfigureMsgService(&unknown, 0, 0, 1, nullptr), MAPI_E_INVALID_PARAMETER);

    MAPIUID file = AddService(*services, "MSPST MS");
    ASSERT_EQ(services->AdminProviders(&file, 0, providers.Receive()), S_OK);
    MAPIUID made = UidOf(7);
    EXPECT_EQ(providers->CreateProvider(Narrow("EMSDelegate"), 0, nullptr, 0, 0, &made), MAPI_E_NOT_FOUND);
    EXPECT_EQ(made, UidOf(7));
    EXPECT_EQ(providers->DeleteProvider(&unknown), MAPI_E_NOT_FOUND);
    const Profile profile = Loaded();
    MAPIUID provider = profile.services[0].providers[0].Uid();
    const MAPIUID other = AddService(*services, "MSEMS");
    MAPIUID otherCopy = other;
    ASSERT_EQ(services->AdminProviders(&otherCopy, 0, providers.Receive()), S_OK);
    EXPECT_EQ(providers->DeleteProvider(&provider), MAPI_E_NOT_FOUND) << "it is another service's";
}

TEST_F(ServiceTest, ServicesAreRenamedAndIdentified) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID file = AddService(*services, "MSPST MS");
    MAPIUID exchange = AddService(*services, "MSEMS");
    const CStringW name = Wide("Neu \xE2\x82\xAC");
    EXPECT_EQ(services->RenameMsgService(&file, MAPI_UNICODE, WideText(name)), S_OK);
    EXPECT_EQ(ServiceRows(*services).Text(0, 2), "w:Neu \xE2\x82\xAC");
    EXPECT_EQ(services->SetPrimaryIdentity(&file, 0), MAPI_E_NO_ACCESS);
    EXPECT_EQ(services->SetPrimaryIdentity(&exchange, 0), S_OK);
    EXPECT_EQ(Loaded().FindService(exchange)->section.Long(PR_RESOURCE_FLAGS),
              static_cast<LONG>(SERVICE_PRIMARY_IDENTITY));
    EXPECT_EQ(services->SetPrimaryIdentity(nullptr, 0), S_OK);
    EXPECT_EQ(Loaded().FindService(exchange)->section.Long(PR_RESOURCE_FLAGS), 0);
    EXPECT_EQ(services->CopyMsgService(&file, nullptr, nullptr, nullptr, nullptr, 0, 0), MAPI_E_NO_SUPPORT);
}

TEST_F(ServiceTest, TransportsComeInTheOrderThatIsSet) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    AddService(*services, "MSEMS");
    AddService(*services, "MSEMS");
    const Profile earlier = Loaded();
    const ByteView before = earlier.global.Binary(PR_TRANSPORT_PROVIDERS);
    ASSERT_EQ(before.Size(), 32U);
    MAPIUID last{};
    std::memcpy(last.ab, before.Data() + 16, 16);
    EXPECT_EQ(services->MsgServiceTransportOrder(1, &last, 0), S_OK);
    const Profile profile = Loaded();
    const ByteView after = profile.global.Binary(PR_TRANSPORT_PROVIDERS);
    EXPECT_EQ(std::memcmp(after.Data(), before.Data() + 16, 16), 0);
    EXPECT_EQ(std::memcmp(after.Data() + 16, before.Data(), 16), 0);
    EXPECT_EQ(after.Size(), 32U);
    MAPIUID unknown = UidOf(9);
    EXPECT_EQ(services->MsgServiceTransportOrder(1, &unknown, 0), MAPI_E_NOT_FOUND);
}

TEST_F(ServiceTest, TheDefaultStoreIsTheMarkedOneElseTheFirstInAFile) {
    const MailboxFile file("a.pst", "a");
    const ComPtr<IMsgServiceAdmin> services = Services();
    AddService(*services, "MSEMS");
    const MAPIUID first = AddService(*services, "MSPST MS");
    const MAPIUID second = AddService(*services, "MSPST MS");
    ASSERT_EQ(ConfigureFile(*services, first, file.Utf8Path()), S_OK);
    ASSERT_EQ(ConfigureFile(*services, second, file.Utf8Path()), S_OK);
    const auto defaults = [&] {
        std::string marks;
        const Profile profile = Loaded();
        for (const StoreEntry& store : StoresOf(profile)) {
            marks += store.isDefault ? '1' : '0';
        }
        return marks;
    };
    EXPECT_EQ(defaults(), "010");
    const auto mark = [&](const MAPIUID& provider) {
        return m_folder.storage.Change("p"_w, [&](Profile& profile) { return SetDefaultStore(profile, provider); });
    };
    EXPECT_TRUE(mark(Loaded().FindService(second)->providers[0].Uid()));
    EXPECT_EQ(defaults(), "001");
    EXPECT_EQ(mark(UidOf(9)).Failure().code, ErrorCode::NotFound);
    EXPECT_EQ(defaults(), "001");
}

// ---- Sections -------------------------------------------------------------------------------------------------------

TEST_F(ServiceTest, ASectionIsMadeByItsFirstChange) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID uid = UidOf(5);
    ComPtr<IProfSect> section;
    EXPECT_EQ(services->OpenProfileSection(&uid, nullptr, 0, section.Receive()), MAPI_E_NOT_FOUND);
    EXPECT_EQ(services->OpenProfileSection(nullptr, nullptr, 0, section.Receive()), MAPI_E_INVALID_PARAMETER);
    const IID stream = IID_IStream;
    EXPECT_EQ(services->OpenProfileSection(&uid, &stream, 0, section.Receive()), MAPI_E_INTERFACE_NOT_SUPPORTED);

    section = OpenSection(*services, uid, MAPI_MODIFY);
    EXPECT_EQ(Loaded().FindSection(uid), nullptr);
    Arena memory;
    SPropValue value = LongValue(PR_RESOURCE_TYPE, 4);
    ASSERT_EQ(section->SetProps(1, &value, nullptr), S_OK);
    ASSERT_NE(Loaded().FindSection(uid), nullptr);

    // Another object, open for reading only, sees what was set, and may set nothing.
    const ComPtr<IProfSect> reader = OpenSection(*services, uid, 0);
    value = LongValue(PR_RESOURCE_TYPE, 5);
    ASSERT_EQ(section->SetProps(1, &value, nullptr), S_OK);
    TagArray tags{PR_RESOURCE_TYPE};
    ULONG count = 0;
    SPropValue* values = nullptr;
    ASSERT_EQ(reader->GetProps(tags.Get(), 0, &count, &values), S_OK);
    EXPECT_EQ(values[0].Value.l, 5);
    FreeRoot(values);
    EXPECT_EQ(reader->SetProps(1, &value, nullptr), MAPI_E_NO_ACCESS);

    ASSERT_EQ(section->DeleteProps(tags.Get(), nullptr), S_OK);
    EXPECT_TRUE(Loaded().FindSection(uid)->Properties().empty());
    EXPECT_EQ(reader->GetProps(tags.Get(), 0, &count, &values), MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(values[0].Value.err, MAPI_E_NOT_FOUND);
    FreeRoot(values);
}

TEST_F(ServiceTest, ASectionThatWentAwayIsNotMadeAgain) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID service = AddService(*services, "MSPST MS");
    const ComPtr<IProfSect> section = OpenSection(*services, service, MAPI_MODIFY);
    ASSERT_EQ(services->DeleteMsgService(&service), S_OK);
    SPropValue value = LongValue(PR_RESOURCE_TYPE, 4);
    SPropProblemArray* problems = nullptr;
    EXPECT_EQ(section->SetProps(1, &value, &problems), MAPI_E_NOT_FOUND);
    EXPECT_EQ(problems, nullptr);
    EXPECT_TRUE(Loaded().others.empty());
}

TEST_F(ServiceTest, ManyPropertiesAreSetInOneStep) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    const ComPtr<IProfSect> section = OpenSection(*services, UidOf(5), MAPI_MODIFY);
    Arena memory;
    SPropValue object{};
    object.ulPropTag = PROP_TAG(PT_OBJECT, 0x7003);
    SPropValue values[] = {WideValue(PROP_TAG(PT_UNICODE, 0x7001), "a"_w, memory), object,
                           LongValue(PROP_TAG(PT_LONG, 0x7002), 7),
                           ErrorValue(PROP_TAG(PT_LONG, 0x7004), MAPI_E_NOT_FOUND)};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(section->SetProps(4, values, &problems), S_OK);
    ASSERT_NE(problems, nullptr);
    EXPECT_EQ(problems->cProblem, 1U);
    EXPECT_EQ(problems->aProblem[0].ulIndex, 1U);
    FreeRoot(problems);
    EXPECT_EQ(Loaded().FindSection(UidOf(5))->Properties().size(), 2U);

    ULONG count = 0;
    SPropValue* all = nullptr;
    ASSERT_EQ(section->GetProps(nullptr, 0, &count, &all), S_OK);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(all[0].ulPropTag, PROP_TAG(PT_STRING8, 0x7001)) << "texts come in the width of the call";
    EXPECT_EQ(std::string(all[0].Value.lpszA), "a");
    FreeRoot(all);

    IStream* stream = nullptr;
    const IID streamId = IID_IStream;
    ASSERT_EQ(
        section->OpenProperty(PROP_TAG(PT_UNICODE, 0x7001), &streamId, 0, 0, reinterpret_cast<IUnknown**>(&stream)),
        S_OK);
    char16_t unit = 0;
    ULONG got = 0;
    EXPECT_EQ(stream->Read(&unit, 2, &got), S_OK);
    EXPECT_EQ(unit, u'a');
    stream->Release();
}

}  // namespace
}  // namespace localmapi::profile::testing
