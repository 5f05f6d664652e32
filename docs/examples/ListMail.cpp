// Prints the subject of every mail in a mailbox file.
#include "provider/InstanceProxy.h"

#include <filesystem>
#include <iostream>

using namespace VxOutlookProvider;

static std::string Utf8(const std::u16string& text) {
    const std::u8string bytes = std::filesystem::path(text).u8string();
    return std::string(bytes.begin(), bytes.end());
}

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: list_mail FILE.pst\n";
        return 1;
    }
    const std::size_t storeId = FieldIndex(RecordKind::Store, "si_storeId");
    const std::size_t folderId = FieldIndex(RecordKind::Folder, "fi_folderId");
    const std::size_t subject = FieldIndex(RecordKind::Item, "email_sSubject");
    try {
        InstanceProxy outlook;
        outlook.InitializeVxMapi(u"", u"Off");
        outlook.CreateMAPIProfile(u"list_mail");
        outlook.AddPSTToMAPIProfile(std::filesystem::absolute(arguments[1]).u16string(), u"list_mail");

        Value stores;
        outlook.GetProfileStores(u"list_mail", stores);
        for (const Value& store : stores.Elements()) {
            Value folders;
            outlook.GetStoreFolders(u"list_mail", store.At(storeId).String(), folders);
            for (const Value& folder : folders.Elements()) {
                // A folder's URI: its type, profile, store and folder; five more fields that folders do not have.
                const Value uri(
                    Value::Array{6, u"list_mail", store.At(storeId), folder.At(folderId), {}, {}, {}, {}, {}});
                for (Value page;;) {
                    std::int32_t unsupported = 0;
                    outlook.QueryItems(uri, 0, false, page, unsupported);
                    if (page.Elements().empty()) {
                        break;
                    }
                    for (const Value& item : page.Elements()) {
                        Value record;
                        outlook.GetItemData(item, 1, false, record);  // 1: with the body as plain text
                        if (!record.At(subject).IsNull()) {
                            std::cout << Utf8(record.At(subject).String()) << '\n';
                        }
                    }
                }
            }
        }
        outlook.DeleteMAPIProfile(u"list_mail");
    } catch (const ResultException& failure) {
        std::cerr << "list_mail: " << failure.what() << '\n';
        return 1;
    }
}
