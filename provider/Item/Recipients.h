// The recipients of a message, read from its recipient table, as the texts that records show.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/MapiHolders.h"
#include "provider/WholeTable.h"

#include <vector>

struct Recipient {
    LONG type;      // PR_RECIPIENT_TYPE: 1 to, 2 copy, 3 blind copy, or what the sender has made of it
    CStringW text;  // "name <address>", or what there is of the two
};

// Addresses lose "<", ">" and blanks, which would break the text; those of some items also their capitals.
enum class AddressCase { AsIs, Lower };

// The message's table of recipients; E_FAIL without a message, and `table` is null on every failure.
HRESULT OpenRecipientTable(IMessage* message, VxMapiPtr<IMAPITable>& table);

// Replaces `recipients` by the rows of the table, in their order.
TableRead ReadRecipients(IMAPITable* table, AddressCase addressCase, std::vector<Recipient>& recipients);

// Adds a text to a list, with "; " behind what is there.
void AppendToList(CStringW& list, const CStringW& text);
