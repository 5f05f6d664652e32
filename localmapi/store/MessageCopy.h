// Messages into messages: properties, recipients, attachments and the messages within them, through the published
// interfaces of the target, so that it may be anybody's. A part that cannot be copied becomes a problem of the copy; the
// rest goes on.
#pragma once

#include "localmapi/object/PropCopy.h"
#include "localmapi/store/MessageObject.h"

#include <vector>

namespace localmapi {

// IMessage::CopyTo and CopyProps. Of the tags in the request PR_MESSAGE_RECIPIENTS and PR_MESSAGE_ATTACHMENTS stand for
// the lists. A target that is no message gets the properties only.
HRESULT CopyMessage(MessageObject& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                    SPropProblemArray** problems);

// The same of an attachment, with the message or storage in it.
HRESULT CopyAttachment(AttachObject& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                       SPropProblemArray** problems);

// The recipients of a message as rows with all that is known of them; what they point at lies in `memory`.
std::vector<SRow> ReadRecipients(MessageSource& message, Arena& memory);

// Applies MODRECIP_ADD, _MODIFY or _REMOVE, or 0 for replacing all, to the rows. The last two find theirs by PR_ROWID:
// MAPI_E_NOT_FOUND when one is not there. Rows without PR_ROWID get one. `memory` holds what is made here; the changes
// are borrowed.
HRESULT MergeRecipients(std::vector<SRow>& rows, ULONG way, const ADRLIST& changes, Arena& memory);

}  // namespace localmapi
