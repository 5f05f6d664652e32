// The fields of each kind of record: which position in the array holds what. Host and provider agree on the positions
// alone; a key is the name of a position and never travels. So a changed index is a changed protocol.
//
// In code a position is written by its key, and a key that no table has does not compile:
//
//     record.SetStringFieldVal("email_sSubject"_field, subject, true);
#pragma once

#include "platform/WideText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// One field of a record.
struct RecordField {
    std::size_t index;
    const WCHAR* key;

    // What the field holds: S text, I 32-bit integer, L 64-bit integer, B boolean, D double, A bytes; '-' for a field
    // that is declared and never set. A time (L) is in milliseconds since 1970-01-01 UTC, or in FILETIME ticks where
    // its row says so.
    char type;
};

// A MAPI profile.
inline constexpr auto kProfileFields = std::to_array<RecordField>({
    {0, "pi_name"_w, 'S'},
    {1, "pi_isDefault"_w, 'B'},
    {2, "pi_isExchange"_w, 'B'},
});

// A message store of a profile.
inline constexpr auto kStoreFields = std::to_array<RecordField>({
    {0, "si_storeName"_w, 'S'},
    {1, "si_storeId"_w, 'S'},
    {2, "si_storeType"_w, 'I'},
    {3, "si_isDefault"_w, 'B'},
    {4, "si_isCached"_w, 'B'},
    {5, "si_storeDN"_w, 'S'},
    {6, "si_server"_w, 'S'},
    {7, "si_serverDN"_w, 'S'},
    {8, "si_recordKey"_w, 'S'},
});

// A folder of a store.
inline constexpr auto kFolderFields = std::to_array<RecordField>({
    {0, "fi_folderPath"_w, 'S'},
    {1, "fi_folderId"_w, 'S'},
    {2, "fi_storeId"_w, 'S'},
    {3, "fi_hasChildren"_w, 'B'},
    {4, "fi_containerType"_w, 'I'},
    {5, "fi_modifiedTime"_w, 'L'},  // FILETIME ticks
});

// An object URI.
inline constexpr auto kUriFields = std::to_array<RecordField>({
    {0, "uri_type"_w, 'I'},
    {1, "uri_ProfileName"_w, 'S'},
    {2, "uri_storeId"_w, 'S'},
    {3, "uri_folderId"_w, 'S'},
    {4, "uri_itemId"_w, 'S'},
    {5, "uri_attachmentNum"_w, 'S'},
    {6, "uri_itemType"_w, 'I'},
    {7, "uri_modifiedTime"_w, 'L'},  // FILETIME ticks
    {8, "uri_readStatus"_w, 'B'},
});

// An item of any type, or an attachment: all share one array, and leave the fields of the other types unset.
inline constexpr auto kItemFields = std::to_array<RecordField>({
    // Common
    {0, "schemaUID"_w, 'I'},
    {1, "folder_iCount"_w, '-'},
    {2, "folder_lSize"_w, '-'},
    {3, "eobj_vx_lErrors"_w, 'L'},
    {4, "common_lFolderHash"_w, '-'},
    {5, "common_sFolderName"_w, 'S'},
    {6, "common_sFolderPath"_w, 'S'},
    {7, "common_sFolderPathNoMailbox"_w, '-'},
    {8, "common_sFolderId"_w, 'S'},
    {9, "common_sMailbox"_w, '-'},
    {10, "common_sLogonName"_w, '-'},
    {11, "common_sLogonEmail"_w, '-'},
    {12, "common_iSize"_w, 'I'},
    {13, "common_lUTCLastModifiedTime"_w, 'L'},  // FILETIME ticks
    {14, "common_lUTCFlagCompleteTime"_w, 'L'},
    {15, "common_sMailboxRecordKey"_w, '-'},
    {16, "common_bIsPublic"_w, 'B'},
    {17, "common_sURLSubject"_w, 'S'},
    {18, "common_sDigitallySigned"_w, 'B'},  // a boolean in spite of its name
    // E-mail
    {19, "email_sAttachments"_w, 'S'},
    {20, "email_sBCC"_w, 'S'},
    {21, "email_sBody"_w, 'S'},
    {22, "email_sCategories"_w, 'S'},
    {23, "email_sCC"_w, 'S'},
    {24, "email_sContacts"_w, 'S'},
    {25, "email_bDeliveryReceiptRequested"_w, 'B'},
    {26, "email_sEID"_w, 'S'},
    {27, "email_sFlagComplete"_w, 'S'},
    {28, "email_sFlagText"_w, 'S'},
    {29, "email_sFrom"_w, 'S'},
    {30, "email_iImportance"_w, 'I'},
    {31, "email_bIsAttached"_w, 'B'},
    {32, "email_bReadReceiptRequested"_w, 'B'},
    {33, "email_sReadStatus"_w, 'S'},
    {34, "email_sReplyTo"_w, 'S'},
    {35, "email_sSensitivity"_w, 'S'},
    {36, "email_sSubject"_w, 'S'},
    {37, "email_sTo"_w, 'S'},
    {38, "email_lUTCDateReceived"_w, 'L'},
    {39, "email_lUTCDateSent"_w, 'L'},
    {40, "email_lUTCExpiration"_w, 'L'},
    {41, "email_lUTCReminder"_w, 'L'},
    {42, "email_sConversationIndex"_w, 'S'},
    {43, "email_PR_CONVERSATION_INDEX"_w, 'S'},
    // Contact
    {44, "contacts_sAssistant"_w, 'S'},
    {45, "contacts_sAssistantPhone"_w, 'S'},
    {46, "contacts_sAttachments"_w, 'S'},
    {47, "contacts_sBody"_w, 'S'},
    {48, "contacts_sBusinessAddress"_w, 'S'},
    {49, "contacts_sBusinessFAX"_w, 'S'},
    {50, "contacts_sBusinessPhone"_w, 'S'},
    {51, "contacts_sBusinessPhone2"_w, 'S'},
    {52, "contacts_sBusinessWebPage"_w, 'S'},
    {53, "contacts_sCallbackPhone"_w, 'S'},
    {54, "contacts_sCarPhone"_w, 'S'},
    {55, "contacts_sCategories"_w, 'S'},
    {56, "contacts_sChildren"_w, 'S'},
    {57, "contacts_sCompany"_w, 'S'},
    {58, "contacts_sCompanyMainPhone"_w, 'S'},
    {59, "contacts_sComputerNetwork"_w, 'S'},
    {60, "contacts_sContacts"_w, 'S'},
    {61, "contacts_sCustomerID"_w, 'S'},
    {62, "contacts_sDepartment"_w, 'S'},
    {63, "contacts_sDisplayName"_w, 'S'},
    {64, "contacts_sDisplayNamePrefix"_w, 'S'},
    {65, "contacts_sEID"_w, 'S'},
    {66, "contacts_sEmail"_w, 'S'},
    {67, "contacts_sEmail2"_w, 'S'},
    {68, "contacts_sEmail3"_w, 'S'},
    {69, "contacts_sFileAs"_w, 'S'},
    {70, "contacts_sFlagComplete"_w, 'S'},
    {71, "contacts_sFlagText"_w, 'S'},
    {72, "contacts_sFTPSite"_w, 'S'},
    {73, "contacts_sGender"_w, 'S'},
    {74, "contacts_sGeneration"_w, 'S'},
    {75, "contacts_sGivenName"_w, 'S'},
    {76, "contacts_sGovernmentID"_w, 'S'},
    {77, "contacts_sHobbies"_w, 'S'},
    {78, "contacts_sHomeAddress"_w, 'S'},
    {79, "contacts_sHomeFAX"_w, 'S'},
    {80, "contacts_sHomePhone"_w, 'S'},
    {81, "contacts_sHomePhone2"_w, 'S'},
    {82, "contacts_sIMAddress"_w, 'S'},
    {83, "contacts_iImportance"_w, 'I'},
    {84, "contacts_bIsAttached"_w, 'B'},
    {85, "contacts_sISDNNumber"_w, 'S'},
    {86, "contacts_sJobTitle"_w, 'S'},
    {87, "contacts_sLanguage"_w, 'S'},
    {88, "contacts_sManager"_w, 'S'},
    {89, "contacts_sMiddleName"_w, 'S'},
    {90, "contacts_sMobilePhone"_w, 'S'},
    {91, "contacts_sNickname"_w, 'S'},
    {92, "contacts_sOffice"_w, 'S'},
    {93, "contacts_sOrganizationalID"_w, 'S'},
    {94, "contacts_sOtherAddress"_w, 'S'},
    {95, "contacts_sOtherPhone"_w, 'S'},
    {96, "contacts_sPager"_w, 'S'},
    {97, "contacts_sPersonalWebPage"_w, 'S'},
    {98, "contacts_sPreferredByName"_w, 'S'},
    {99, "contacts_sPrimaryFAX"_w, 'S'},
    {100, "contacts_sPrimaryPhone"_w, 'S'},
    {101, "contacts_sProfession"_w, 'S'},
    {102, "contacts_sRadioPhone"_w, 'S'},
    {103, "contacts_sSensitivity"_w, 'S'},
    {104, "contacts_sSpouse"_w, 'S'},
    {105, "contacts_sSurname"_w, 'S'},
    {106, "contacts_sTelexNumber"_w, 'S'},
    {107, "contacts_sTitle"_w, 'S'},
    {108, "contacts_sTTYTDDPhone"_w, 'S'},
    {109, "contacts_lUTCAnniversary"_w, 'L'},
    {110, "contacts_lUTCBirthday"_w, 'L'},
    {111, "contacts_lUTCReminder"_w, 'L'},
    // Attachment
    {112, "attachments_abBinaryBlob"_w, 'A'},
    {113, "attachments_sFrom"_w, 'S'},
    {114, "attachments_sName"_w, 'S'},
    {115, "attachments_sParentType"_w, 'S'},
    {116, "attachments_iSize"_w, 'I'},
    {117, "attachments_sSubject"_w, 'S'},
    {118, "attachments_sTo"_w, 'S'},
    {119, "attachments_lUTCDateReceived"_w, 'L'},
    {120, "attachments_lUTCDateSent"_w, 'L'},
    // Calendar
    {121, "calendar_sAttachments"_w, 'S'},
    {122, "calendar_sBillingInfo"_w, 'S'},
    {123, "calendar_sBody"_w, 'S'},
    {124, "calendar_iBusyStatus"_w, 'I'},
    {125, "calendar_sCategories"_w, 'S'},
    {126, "calendar_sCompany"_w, 'S'},
    {127, "calendar_sContacts"_w, 'S'},
    {128, "calendar_iDuration"_w, 'I'},
    {129, "calendar_sEID"_w, 'S'},
    {130, "calendar_sEvent"_w, 'S'},
    {131, "calendar_iImportance"_w, 'I'},
    {132, "calendar_bIsAttached"_w, 'B'},
    {133, "calendar_sLocation"_w, 'S'},
    {134, "calendar_sMileage"_w, 'S'},
    {135, "calendar_bOnline"_w, 'B'},
    {136, "calendar_sOptAttendees"_w, 'S'},
    {137, "calendar_sOrganizer"_w, 'S'},
    {138, "calendar_sRecipients"_w, 'S'},
    {139, "calendar_sRecurrence"_w, 'S'},
    {140, "calendar_sRecurrenceType"_w, 'S'},
    {141, "calendar_sReqAttendees"_w, 'S'},
    {142, "calendar_sResources"_w, 'S'},
    {143, "calendar_sResponse"_w, 'S'},
    {144, "calendar_sSensitivity"_w, 'S'},
    {145, "calendar_iStatus"_w, 'I'},
    {146, "calendar_sSubject"_w, 'S'},
    {147, "calendar_lUTCDateCreated"_w, 'L'},
    {148, "calendar_lUTCEndDate"_w, 'L'},
    {149, "calendar_lUTCEndTime"_w, 'L'},
    {150, "calendar_lUTCReminder"_w, 'L'},
    {151, "calendar_lUTCReplyTime"_w, 'L'},
    {152, "calendar_lUTCStartDate"_w, 'L'},
    {153, "calendar_lUTCStartTime"_w, 'L'},
    // Task
    {154, "tasks_iActualWork"_w, 'I'},
    {155, "tasks_sAttachments"_w, 'S'},
    {156, "tasks_sBillingInfo"_w, 'S'},
    {157, "tasks_sBody"_w, 'S'},
    {158, "tasks_sCategories"_w, 'S'},
    {159, "tasks_sCompany"_w, 'S'},
    {160, "tasks_sContacts"_w, 'S'},
    {161, "tasks_sDelegation"_w, 'S'},
    {162, "tasks_sDelegator"_w, 'S'},
    {163, "tasks_sEID"_w, 'S'},
    {164, "tasks_sGroup"_w, 'S'},
    {165, "tasks_iImportance"_w, 'I'},
    {166, "tasks_bIsAttached"_w, 'B'},
    {167, "tasks_bIsComplete"_w, 'B'},
    {168, "tasks_sMileage"_w, 'S'},
    {169, "tasks_sOwner"_w, 'S'},
    {170, "tasks_sOwnership"_w, 'S'},
    {171, "tasks_dPercentComplete"_w, 'D'},
    {172, "tasks_sRecipients"_w, 'S'},
    {173, "tasks_sRecurrence"_w, 'S'},
    {174, "tasks_sRecurrenceType"_w, 'S'},
    {175, "tasks_sResponse"_w, 'S'},
    {176, "tasks_sRole"_w, 'S'},
    {177, "tasks_sSensitivity"_w, 'S'},
    {178, "tasks_iStatus"_w, 'I'},
    {179, "tasks_sSubject"_w, 'S'},
    {180, "tasks_iTotalWork"_w, 'I'},
    {181, "tasks_sUpdateList"_w, 'S'},
    {182, "tasks_lUTCCompletedDate"_w, 'L'},
    {183, "tasks_lUTCDateCreated"_w, 'L'},
    {184, "tasks_lUTCDueDate"_w, 'L'},
    {185, "tasks_lUTCEndDate"_w, 'L'},
    {186, "tasks_lUTCReminder"_w, 'L'},
    {187, "tasks_lUTCStartDate"_w, 'L'},
    // Note; a note has its conversation under the e-mail keys
    {188, "eobj_note_bIsAttached"_w, 'B'},
    {189, "eobj_note_sBody"_w, 'S'},
    {190, "eobj_note_sCategories"_w, 'S'},
    {191, "eobj_note_sContacts"_w, 'S'},
    {192, "eobj_note_iColor"_w, 'I'},
    {193, "eobj_note_sEID"_w, 'S'},
    {194, "eobj_note_sSubject"_w, 'S'},
    {195, "eobj_note_lUTCDateCreated"_w, 'L'},
    {196, "eobj_note_sConversationIndex"_w, '-'},
    {197, "eobj_note_PR_CONVERSATION_INDEX"_w, '-'},
});

namespace record_keys {

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

constexpr bool IsKey(const WCHAR* key, std::string_view text) {
    for (const char c : text) {
        if (*key++ != static_cast<WCHAR>(c)) {
            return false;
        }
    }
    return *key == 0;
}

// The index of a key in a table, or kNotFound.
template <std::size_t N>
constexpr std::size_t Find(const std::array<RecordField, N>& fields, std::string_view key) {
    for (const RecordField& field : fields) {
        if (IsKey(field.key, key)) {
            return field.index;
        }
    }
    return kNotFound;
}

// A number that differs for keys that differ (FNV-1a). Comparing the texts of all pairs would be too much work for a
// compiler's patience.
constexpr std::uint64_t Fingerprint(const WCHAR* key) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (; *key != 0; ++key) {
        hash = (hash ^ *key) * 0x100000001B3;
    }
    return hash;
}

// No hole, no twin, no row out of its place, no unknown type.
template <std::size_t N>
constexpr bool IsSound(const std::array<RecordField, N>& fields) {
    std::array<std::uint64_t, N> seen = {};
    for (std::size_t i = 0; i < N; ++i) {
        seen[i] = Fingerprint(fields[i].key);
        if (fields[i].index != i || std::string_view("SILBDA-").find(fields[i].type) == std::string_view::npos) {
            return false;
        }
        for (std::size_t before = 0; before < i; ++before) {
            if (seen[i] == seen[before]) {
                return false;
            }
        }
    }
    return true;
}

static_assert(IsSound(kProfileFields) && kProfileFields.size() == 3);
static_assert(IsSound(kStoreFields) && kStoreFields.size() == 9);
static_assert(IsSound(kFolderFields) && kFolderFields.size() == 6);
static_assert(IsSound(kUriFields) && kUriFields.size() == 9);
static_assert(IsSound(kItemFields) && kItemFields.size() == 198);

}  // namespace record_keys

// The position of the field with this key, in whichever kind of record has it: no two kinds share a key. Throws, so
// that it does not compile, for a key that there is not.
consteval std::size_t operator""_field(const char* key, std::size_t length) {
    const std::string_view text(key, length);
    for (const std::size_t index : {record_keys::Find(kItemFields, text), record_keys::Find(kUriFields, text),
                                    record_keys::Find(kFolderFields, text), record_keys::Find(kStoreFields, text),
                                    record_keys::Find(kProfileFields, text)}) {
        if (index != record_keys::kNotFound) {
            return index;
        }
    }
    throw "no record has a field of this key";
}
