// What the declarations must be among themselves, on every system.
#include "mapi/Mapi.h"
#include "tests/mapi/Facts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using vx_mapi_facts::SlotOf;

struct NamedTag {
    const char* name;
    ULONG tag;
    bool isText;  // has a wide and an 8-bit form
};

constexpr NamedTag kTags[] = {
#define VX_TAG(name, type, id) {#name, name, false},
#define VX_TEXT_TAG(name, id)  {#name, name, true},
#define VX_TEXTS_TAG(name, id) {#name, name, true},
#include "mapi/PropTagRows.inc"
#undef VX_TAG
#undef VX_TEXT_TAG
#undef VX_TEXTS_TAG
};

TEST(PropTags, OneIdHasOneTypeUnlessItIsKnownForMore) {
    // Published with several types, or used for different things in different objects.
    const std::set<ULONG> known = {0x0E08, 0x1013, 0x3701, 0x39FF, 0x6609, 0x660B, 0x660C, 0x6614, 0x6700};
    std::map<ULONG, const NamedTag*> seen;
    for (const NamedTag& tag : kTags) {
        const auto [first, isNew] = seen.emplace(PROP_ID(tag.tag), &tag);
        if (!isNew && !known.contains(PROP_ID(tag.tag))) {
            EXPECT_EQ(first->second->tag, tag.tag) << first->second->name << " and " << tag.name;
        }
    }
}

TEST(PropTags, ARowOfTextIsWhatItsNameSays) {
    for (const NamedTag& tag : kTags) {
        const std::string_view name = tag.name;
        const bool namesOneForm = name.ends_with("_W") || name.ends_with("_A");
        EXPECT_EQ(tag.isText, PROP_TYPE(tag.tag & ~MV_FLAG) == PT_UNICODE && !namesOneForm) << name;
    }
}

TEST(NamedProps, NoNumberOfASetHasTwoNames) {
    struct Row {
        const char* name;
        NamedProperty property;
    };
    constexpr Row rows[] = {
#define VX_NAMED(name, set, id, type) {#name, name},
#include "mapi/NamedPropRows.inc"
#undef VX_NAMED
    };
    std::map<std::pair<std::uint32_t, LONG>, const char*> seen;
    for (const Row& row : rows) {
        const auto [first, isNew] = seen.emplace(std::pair(row.property.set->Data1, row.property.id), row.name);
        EXPECT_TRUE(isNew) << first->second << " and " << row.name;
        // The sets that stores keep by number begin at 0x8000; that of meetings is older.
        EXPECT_EQ(row.property.id < 0x8000, *row.property.set == PSETID_Meeting) << row.name;
    }
}

TEST(Guids, InterfacesAndPropertySetsAreAllDifferent) {
    const GUID guids[] = {IID_IMAPISession,
                          IID_IMAPITable,
                          IID_IMAPIAdviseSink,
                          IID_IMAPIProp,
                          IID_IProfSect,
                          IID_IMAPIStatus,
                          IID_IMsgStore,
                          IID_IMessage,
                          IID_IAttachment,
                          IID_IAddrBook,
                          IID_IMailUser,
                          IID_IMAPIContainer,
                          IID_IMAPIFolder,
                          IID_IABContainer,
                          IID_IDistList,
                          IID_IMAPITableData,
                          IID_IMAPIPropData,
                          IID_IMAPIControl,
                          IID_IProfAdmin,
                          IID_IMsgServiceAdmin,
                          IID_IMAPIProgress,
                          IID_IProviderAdmin,
                          IID_IStreamDocfile,
                          IID_IMessageRaw,
                          IID_IMSCapabilities,
                          IID_IProxyStoreObject,
                          IID_IMAPIGetSession,
                          IID_IConverterSession,
                          IID_CAPONE_PROF,
                          CLSID_MailMessage,
                          PS_MAPI,
                          PS_PUBLIC_STRINGS,
                          PS_INTERNET_HEADERS,
                          PSETID_Appointment,
                          PSETID_Task,
                          PSETID_Address,
                          PSETID_Common,
                          PSETID_Log,
                          PSETID_Note,
                          PSETID_Remote,
                          PSETID_Sharing,
                          PSETID_PostRss,
                          PSETID_Meeting,
                          PSETID_UnifiedMessaging,
                          PSETID_Attachment};
    for (const GUID& guid : guids) {
        EXPECT_EQ(std::count(std::begin(guids), std::end(guids), guid), 1) << std::hex << guid.Data1;
    }
}

TEST(Interfaces, EveryLastMethodIsInItsPublishedSlot) {
    struct Row {
        const char* name;
        std::size_t slot, published;
    };
    const Row rows[] = {
        {"IMAPIProp", SlotOf(&IMAPIProp::GetIDsFromNames), 13},
        {"IMAPITable", SlotOf(&IMAPITable::SetCollapseState), 25},
        {"IMAPIContainer", SlotOf(&IMAPIContainer::GetSearchCriteria), 18},
        {"IMAPIFolder", SlotOf(&IMAPIFolder::EmptyFolder), 29},
        {"IMsgStore", SlotOf(&IMsgStore::NotifyNewMail), 26},
        {"IMessage", SlotOf(&IMessage::SetReadFlag), 21},
        {"IAttach", SlotOf(&IAttach::GetIDsFromNames), 13},
        {"IMAPISession", SlotOf(&IMAPISession::PrepareForm), 21},
        {"IAddrBook", SlotOf(&IAddrBook::PrepareRecips), 31},
        {"IABContainer", SlotOf(&IABContainer::ResolveNames), 22},
        {"IDistList", SlotOf(&IDistList::ResolveNames), 22},
        {"IProfAdmin", SlotOf(&IProfAdmin::AdminServices), 11},
        {"IMsgServiceAdmin", SlotOf(&IMsgServiceAdmin::GetProviderTable), 14},
        {"IProviderAdmin", SlotOf(&IProviderAdmin::OpenProfileSection), 7},
        {"IMAPIProgress", SlotOf(&IMAPIProgress::SetLimits), 7},
        {"IMAPIAdviseSink", SlotOf(&IMAPIAdviseSink::OnNotify), 3},
        {"IMAPIStatus", SlotOf(&IMAPIStatus::FlushQueues), 17},
        {"IMAPIControl", SlotOf(&IMAPIControl::GetState), 5},
        {"ITableData", SlotOf(&ITableData::HrDeleteRows), 11},
        {"IPropData", SlotOf(&IPropData::HrAddObjProps), 17},
        {"IProxyStoreObject", SlotOf(&IProxyStoreObject::UnwrapNoRef), 4},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.slot, row.published) << row.name;
    }
}

TEST(SizedArrays, ReadAsMapiReadsThem) {
    static constexpr auto columns = MakeTagArray(PR_ENTRYID, PR_SUBJECT_W, PR_MESSAGE_FLAGS);
    const LPSPropTagArray tags = columns;
    ASSERT_EQ(tags->cValues, 3U);
    EXPECT_EQ(std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + 3),
              (std::vector<ULONG>{0x0FFF0102, 0x0037001F, 0x0E070003}));

    const SizedSSortOrderSet<2> order = {
        .aSort = {{PR_SUBJECT_W, TABLE_SORT_ASCEND}, {PR_ENTRYID, TABLE_SORT_DESCEND}}};
    const LPSSortOrderSet sorts = order;
    EXPECT_EQ(sorts->cSorts, 2U);
    EXPECT_EQ(sorts->cCategories, 0U);
    const SSortOrder* const sort = sorts->aSort;
    EXPECT_EQ(sort[1].ulPropTag, 0x0FFF0102U);
    EXPECT_EQ(sort[1].ulOrder, 1U);
}

}  // namespace
