#include "provider/Item/Recipients.h"

#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "provider/Item/AsciiCase.h"
#include "provider/MapiHolders.h"
#include "provider/RowValues.h"

namespace {

constexpr auto kColumns = MakeTagArray(PR_DISPLAY_NAME_W, PR_RECIPIENT_TYPE, PR_EMAIL_ADDRESS_W, PR_ADDRTYPE_W,
                                       PR_SMTP_ADDRESS_W, PR_ORG_EMAIL_ADDR_W);
constexpr ULONG kNameColumn = 0;
constexpr ULONG kTypeColumn = 1;
constexpr ULONG kAddressColumn = 2;
constexpr ULONG kSmtpColumn = 4;
constexpr ULONG kOrgAddressColumn = 5;

// Whether a column came back as what it was asked for.
bool HasColumn(const SRow& row, ULONG column) {
    return column < row.cValues && row.lpProps != nullptr
           && row.lpProps[column].ulPropTag == kColumns.aulPropTag[column];
}

CStringW AddressOf(const SRow& row) {
    if (HasColumn(row, kSmtpColumn)) {
        return TextColumn(row, kSmtpColumn);
    }
    return TextColumn(row, HasColumn(row, kOrgAddressColumn) ? kOrgAddressColumn : kAddressColumn);
}

CStringW RecipientText(const SRow& row, AddressCase addressCase) {
    CStringW name = TextColumn(row, kNameColumn);
    CStringW address = AddressOf(row);
    if (address.empty() || !HasColumn(row, kAddressColumn)) {
        return name;
    }
    if (name.empty()) {
        return address;
    }
    std::erase_if(address, [](WCHAR unit) { return unit == '<' || unit == '>' || unit == ' '; });
    if (addressCase == AddressCase::Lower) {
        MakeLowerAscii(address);
    }
    name += " <"_w;
    name += address;
    name += '>';
    return name;
}

}  // namespace

const WCHAR* FailureFormat(RecipientStep step) noexcept {
    switch (step) {
        case RecipientStep::Table: return "GetRecipientTable Error: (%x)"_w;
        case RecipientStep::Columns: return "SetColumns failed (%x)"_w;
        case RecipientStep::Seek: return "SeekRow failed (%x)"_w;
        case RecipientStep::Rows: return "HrQueryAllRows failed (%x)"_w;
        case RecipientStep::Done: break;
    }
    return ""_w;
}

RecipientRead ReadRecipients(IMessage* message, AddressCase addressCase, std::vector<Recipient>& recipients) {
    recipients.clear();
    if (message == nullptr) {
        return {RecipientStep::Table, E_FAIL};
    }
    VxMapiPtr<IMAPITable> table;
    HRESULT hr = message->GetRecipientTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        return {RecipientStep::Table, hr};
    }
    hr = CMapiUtil::SetColumns(table, kColumns, 0);
    if (FAILED(hr)) {
        return {RecipientStep::Columns, hr};
    }
    hr = CMapiUtil::SeekRow(table, BOOKMARK_BEGINNING, 0, nullptr);
    if (FAILED(hr)) {
        return {RecipientStep::Seek, hr};
    }
    VxLpRowsPtr<SRowSet> rows;
    hr = HrQueryAllRows(table, nullptr, nullptr, nullptr, 0, &rows);
    if (FAILED(hr) || rows.get() == nullptr) {
        return {RecipientStep::Rows, hr};
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        const SRow& row = (&rows->aRow[0])[i];
        if (const SPropValue* type = ColumnOfType(row, kTypeColumn, PT_LONG)) {
            recipients.push_back({type->Value.l, RecipientText(row, addressCase)});
        }
    }
    return {RecipientStep::Done, S_OK};
}

void AppendToList(CStringW& list, const CStringW& text) {
    if (!list.empty()) {
        list += "; "_w;
    }
    list += text;
}
