// Object URIs: which fields each type has, and how one becomes another.
#include "provider/URIObjectData.h"
#include "tests/provider/records/HostValue.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

constexpr std::int64_t kTime = 0x01D9F00D12345678;

CURIObjectData Uri(int type) {
    return CURIObjectData(static_cast<UriType>(type), "profile"_w, "5700AB"_w, "F01D"_w, kTime, true, "17E3"_w,
                          "VxEMBITEM2/4"_w, eVxItemNote);
}

// The elements by type: S text, I, L, B, '-' unset.
std::string Shape(CURIObjectData uri) {
    HostValue host = HostValue::From(uri);
    std::string shape;
    for (const VARIANT& element : host.Elements()) {
        shape += element.vt == 8 ? 'S' : element.vt == 3 ? 'I' : element.vt == 20 ? 'L' : element.vt == 11 ? 'B' : '-';
    }
    return shape;
}

TEST(ObjectUri, HasTheFieldsOfItsType) {
    struct Row {
        int type;
        const char* shape;
    };
    for (const Row& row : {Row{-1, "ISSS---LB"}, Row{0, "ISSS---LB"}, Row{6, "ISSS---LB"}, Row{7, "ISSS---LB"},
                           Row{8, "ISSSS-ILB"}, Row{9, "ISSSSSILB"}, Row{100, "ISSSSSILB"}}) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(Shape(Uri(row.type)), row.shape);
        EXPECT_EQ(Uri(row.type).GetUriType(), row.type);
    }
    EXPECT_EQ(Shape(CURIObjectData()), "---------");
}

TEST(ObjectUri, ReachesTheHostAndComesBack) {
    CURIObjectData made = Uri(9);
    HostValue host = HostValue::From(made);
    const auto elements = host.Elements();
    ASSERT_EQ(elements.size(), 9U);
    EXPECT_EQ(elements[0].lVal, 9);
    EXPECT_EQ(TextOf(elements[1]), "profile"_w);
    EXPECT_EQ(TextOf(elements[2]), "5700AB"_w);
    EXPECT_EQ(TextOf(elements[3]), "F01D"_w);
    EXPECT_EQ(TextOf(elements[4]), "17E3"_w);
    EXPECT_EQ(TextOf(elements[5]), "VxEMBITEM2/4"_w);
    EXPECT_EQ(elements[6].lVal, 14);
    EXPECT_EQ(elements[7].llVal, kTime);
    EXPECT_EQ(elements[8].boolVal, -1);

    const CURIObjectData uri(host.Get());
    EXPECT_EQ(uri.GetUriType(), eUriAttachment);
    EXPECT_EQ(uri.ProfileName(), _bstr_t("profile"_w));
    EXPECT_EQ(uri.StoreId(), _bstr_t("5700AB"_w));
    EXPECT_EQ(uri.FolderId(), _bstr_t("F01D"_w));
    EXPECT_EQ(uri.ItemId(), _bstr_t("17E3"_w));
    EXPECT_EQ(uri.AttachmentNum(), _bstr_t("VxEMBITEM2/4"_w));
    EXPECT_EQ(uri.ItemType(), eVxItemNote);
    EXPECT_EQ(uri.Timestamp(), kTime);
    EXPECT_TRUE(uri.ReadStatus());
}

TEST(ObjectUri, UnsetTextsAreNullAndBecomeEmpty) {
    const CURIObjectData folder = Uri(6);
    EXPECT_TRUE(folder.ItemId().IsNull());
    EXPECT_TRUE(folder.AttachmentNum().IsNull());
    EXPECT_EQ(CStringW(folder.ItemId()), CStringW());
    EXPECT_EQ(CURIObjectData().Timestamp(), 0);
}

TEST(ObjectUri, CopyIsTheReceiversOwnAndLeavesTheSourceUnlocked) {
    CURIObjectData made = Uri(8);
    HostValue host = HostValue::From(made);
    const CURIObjectData borrowed(host.Get());
    EXPECT_EQ(borrowed.GetUriType(), eUriItem);
    CURIObjectData copy(borrowed);
    EXPECT_EQ(host.Array().cLocks, 0U);
    copy.SetAttachmentNum("3"_w, eVxItemUnknown);
    EXPECT_EQ(Shape(copy), "ISSSSSILB");
    EXPECT_EQ(copy.ItemId(), _bstr_t("17E3"_w));
    EXPECT_EQ(copy.AttachmentNum(), _bstr_t("3"_w));
    EXPECT_EQ(copy.GetUriType(), eUriAttachment);
    EXPECT_EQ(copy.ItemType(), eVxItemUnknown);
    EXPECT_EQ(copy.Timestamp(), 0);
    EXPECT_FALSE(copy.ReadStatus());
    EXPECT_EQ(Shape(borrowed), "ISSSS-ILB");
    EXPECT_EQ(borrowed.Timestamp(), kTime);
}

TEST(ObjectUri, FolderBecomesOneItemAfterTheOther) {
    CURIObjectData uri = Uri(6);
    uri.SetItemId("AA"_w, eVxItemEmail, 1, false);
    uri.SetItemId("BBBB"_w, eVxItemTask, 2, true);
    EXPECT_EQ(Shape(uri), "ISSSS-ILB");
    EXPECT_EQ(uri.GetUriType(), eUriItem);
    EXPECT_EQ(uri.FolderId(), _bstr_t("F01D"_w));
    EXPECT_EQ(uri.ItemId(), _bstr_t("BBBB"_w));
    EXPECT_EQ(uri.ItemType(), eVxItemTask);
    EXPECT_EQ(uri.Timestamp(), 2);
    EXPECT_TRUE(uri.ReadStatus());
}

}  // namespace
