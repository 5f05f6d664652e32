#include "provider/Item/Recipients.h"

#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "provider/Common/AsciiCase.h"
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

HRESULT OpenRecipientTable(IMessage* message, VxMapiPtr<IMAPITable>& table) {
    const HRESULT hr = message == nullptr ? E_FAIL : message->GetRecipientTable(0, &table);
    return FAILED(hr) || table.get() != nullptr ? hr : E_FAIL;
}

TableRead ReadRecipients(IMAPITable* table, AddressCase addressCase, std::vector<Recipient>& recipients) {
    recipients.clear();
    VxLpRowsPtr<SRowSet> rows;
    const TableRead read = ReadWholeTable(table, kColumns, rows);
    if (read.step != TableStep::Done) {
        return read;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        const SRow& row = (&rows->aRow[0])[i];
        if (const SPropValue* type = ColumnOfType(row, kTypeColumn, PT_LONG)) {
            recipients.push_back({type->Value.l, RecipientText(row, addressCase)});
        }
    }
    return read;
}

void AppendToList(CStringW& list, const CStringW& text) {
    if (!list.empty()) {
        list += "; "_w;
    }
    list += text;
}
