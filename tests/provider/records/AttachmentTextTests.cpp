// Paths of attachments, entries of attachment lists, references in place of data.
#include "provider/AttachmentText.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(AttachmentPath, GrowsByAComponentALevel) {
    const CStringW embedded = EmbeddedItemPath(""_w, 2);
    EXPECT_EQ(AttachmentPath(""_w, 3), "3"_w);
    EXPECT_EQ(embedded, "VxEMBITEM2"_w);
    const CStringW inner = EmbeddedItemPath(embedded, 0);
    EXPECT_EQ(inner, "VxEMBITEM2/VxEMBITEM0"_w);
    EXPECT_EQ(AttachmentPath(inner, 4), "VxEMBITEM2/VxEMBITEM0/4"_w);
    EXPECT_EQ(AttachmentPath(""_w, std::numeric_limits<LONG>::min()), "-2147483648"_w);
}

TEST(AttachmentPath, IsCutAfterAsManyComponentsAsWanted) {
    struct Row {
        WideView path;
        std::size_t count;
        WideView expected;
    };
    const Row rows[] = {
        {"a/b/c"_w, 0, ""_w},      {"a/b/c"_w, 1, "a"_w}, {"a/b/c"_w, 2, "a/b"_w}, {"a/b/c"_w, 3, "a/b/c"_w},
        {"a/b/c"_w, 9, "a/b/c"_w}, {"abc"_w, 1, "abc"_w}, {""_w, 1, ""_w},         {"/a"_w, 1, ""_w},
        {"/a"_w, 2, "/a"_w},       {"a//b"_w, 2, "a/"_w}, {"a/"_w, 1, "a"_w},      {"a/"_w, 2, "a/"_w},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CStringW(FirstComponents(row.path, row.count)), CStringW(row.expected))
            << "row " << &row - rows << ": " << row.count;
    }
}

TEST(AttachmentList, HasAnEntryForEachKindOfAttachment) {
    const CStringW list = AttachmentListName("a.msg"_w) + AttachmentListItemId(eVxItemContact, "VxEMBITEM2"_w)
                          + AttachmentListName("b:/c.txt"_w) + AttachmentListFileId("VxEMBITEM2/4"_w)
                          + AttachmentListName("smime"_w) + AttachmentListSmimeId("0"_w) + AttachmentListName("lost"_w)
                          + AttachmentListName(""_w) + AttachmentListItemId(eVxItemUnknown, "7"_w);
    EXPECT_EQ(list,
              "//vxAtt:a.msg//vxAttId:3:VxEMBITEM2"
              "//vxAtt:b:/c.txt//vxAttId:B:VxEMBITEM2/4"
              "//vxAtt:smime//vxAttId://vxAttId:S:0"
              "//vxAtt:lost"
              "//vxAtt://vxAttId:-1:7"_w);
}

TEST(BlobReference, NamesAFileOrASectionWithItsSize) {
    EXPECT_EQ(FileReference("C:\\Temp\\1.tmp"_w), "File:C:\\Temp\\1.tmp"_w);
    EXPECT_EQ(SectionReference(0, ""_w), "vx:%%0%%"_w);
    EXPECT_EQ(SectionReference(0x100000000, "100%.txt"_w), "vx:%%4294967296%%100%.txt"_w);
}

TEST(ItemType, HasANameForTheLog) {
    EXPECT_EQ(WideView(ItemTypeToPsz(eVxItemUnknown)), "eVxItemUnknown"_w);
    EXPECT_EQ(WideView(ItemTypeToPsz(eVxItemNote)), "eVxItemNote"_w);
    for (const int other : {0, 2, 4, 15, -2}) {
        EXPECT_EQ(WideView(ItemTypeToPsz(static_cast<EVxItemType>(other))), "<INVALID>"_w) << other;
    }
}

}  // namespace
