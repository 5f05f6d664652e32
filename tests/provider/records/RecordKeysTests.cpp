// The field tables against a sample typed in from the list of keys by hand: the ends of each section, and the keys that
// break the pattern.
#include "provider/ExchObjectData.h"
#include "provider/RecordKeys.h"
#include "provider/URIObjectData.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

namespace {

struct Expected {
    std::size_t index;
    const char* key;
    char type;
};

std::string Narrow(WideView text) {
    return std::string(text.begin(), text.end());
}

void Check(const CExchObject& record, std::span<const RecordField> fields, std::size_t size,
           std::initializer_list<Expected> sample) {
    EXPECT_EQ(record.GetSize(), size);
    for (const Expected& row : sample) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(Narrow(record.GetFieldName(row.index)), row.key);
        EXPECT_EQ(fields[row.index].type, row.type);
    }
    EXPECT_EQ(Narrow(record.GetFieldName(size)), "");
    EXPECT_EQ(record.GetData(size), nullptr);
    EXPECT_NE(record.GetData(size - 1), nullptr);
}

TEST(RecordKeys, OfItemsStandAtTheirIndexes) {
    Check(CExchObjectData(), kItemFields, 198,
          {
              {0, "schemaUID", 'I'},
              {1, "folder_iCount", '-'},
              {3, "eobj_vx_lErrors", 'L'},
              {12, "common_iSize", 'I'},
              {13, "common_lUTCLastModifiedTime", 'L'},
              {14, "common_lUTCFlagCompleteTime", 'L'},
              {16, "common_bIsPublic", 'B'},
              {17, "common_sURLSubject", 'S'},
              {18, "common_sDigitallySigned", 'B'},
              {19, "email_sAttachments", 'S'},
              {30, "email_iImportance", 'I'},
              {31, "email_bIsAttached", 'B'},
              {33, "email_sReadStatus", 'S'},
              {36, "email_sSubject", 'S'},
              {41, "email_lUTCReminder", 'L'},
              {42, "email_sConversationIndex", 'S'},
              {43, "email_PR_CONVERSATION_INDEX", 'S'},
              {44, "contacts_sAssistant", 'S'},
              {66, "contacts_sEmail", 'S'},
              {83, "contacts_iImportance", 'I'},
              {84, "contacts_bIsAttached", 'B'},
              {98, "contacts_sPreferredByName", 'S'},
              {108, "contacts_sTTYTDDPhone", 'S'},
              {109, "contacts_lUTCAnniversary", 'L'},
              {111, "contacts_lUTCReminder", 'L'},
              {112, "attachments_abBinaryBlob", 'A'},
              {116, "attachments_iSize", 'I'},
              {120, "attachments_lUTCDateSent", 'L'},
              {121, "calendar_sAttachments", 'S'},
              {124, "calendar_iBusyStatus", 'I'},
              {132, "calendar_bIsAttached", 'B'},
              {145, "calendar_iStatus", 'I'},
              {153, "calendar_lUTCStartTime", 'L'},
              {154, "tasks_iActualWork", 'I'},
              {167, "tasks_bIsComplete", 'B'},
              {171, "tasks_dPercentComplete", 'D'},
              {178, "tasks_iStatus", 'I'},
              {187, "tasks_lUTCStartDate", 'L'},
              {188, "eobj_note_bIsAttached", 'B'},
              {192, "eobj_note_iColor", 'I'},
              {195, "eobj_note_lUTCDateCreated", 'L'},
              {196, "eobj_note_sConversationIndex", '-'},
              {197, "eobj_note_PR_CONVERSATION_INDEX", '-'},
          });
}

TEST(RecordKeys, OfProfilesStoresFoldersAndUrisStandAtTheirIndexes) {
    Check(CProfileInfoObjectData(), kProfileFields, 3, {{0, "pi_name", 'S'}, {2, "pi_isExchange", 'B'}});
    Check(CStoreInfoObjectData(), kStoreFields, 9,
          {{0, "si_storeName", 'S'}, {2, "si_storeType", 'I'}, {4, "si_isCached", 'B'}, {8, "si_recordKey", 'S'}});
    Check(CFolderInfoObjectData(), kFolderFields, 6,
          {{0, "fi_folderPath", 'S'}, {4, "fi_containerType", 'I'}, {5, "fi_modifiedTime", 'L'}});
    Check(CURIObjectData(), kUriFields, 9,
          {{0, "uri_type", 'I'},
           {5, "uri_attachmentNum", 'S'},
           {7, "uri_modifiedTime", 'L'},
           {8, "uri_readStatus", 'B'}});
    EXPECT_EQ(Narrow(CArrayObjectData(std::size_t{1}).GetFieldName(0)), "");
}

// The letter in a key is that of its type, except where a key has none or lies.
TEST(RecordKeys, TellTheirTypesByTheirLetters) {
    for (const RecordField& field : kItemFields) {
        const std::string key = Narrow(field.key);
        const std::size_t letter = key.rfind('_') + 1;
        if (field.type == '-' || key == "schemaUID" || key == "common_sDigitallySigned"
            || key == "email_PR_CONVERSATION_INDEX") {
            continue;
        }
        const char expected = static_cast<char>(std::toupper(key[letter]));
        EXPECT_EQ(field.type, expected) << key;
    }
    std::size_t unset = 0;
    for (const RecordField& field : kItemFields) {
        unset += field.type == '-' ? 1 : 0;
    }
    EXPECT_EQ(unset, 10U);
}

}  // namespace
