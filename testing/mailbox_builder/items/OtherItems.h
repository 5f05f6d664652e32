// Items of the rarer kinds: sticky notes, journal entries, posts, reports, documents, feeds, secured mail, and what
// clients keep hidden in folders. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/People.h"

#include <string_view>

namespace mailbox_builder {

// PidLidNoteColor: [MS-OXONOTE] 2.2.2.1.
enum class NoteColor : std::int32_t { Blue = 0, Green = 1, Pink = 2, Yellow = 3, White = 4 };

struct NoteFacts {
    CStringW text = {};  // its first line is the subject
    NoteColor color = NoteColor::Yellow;
    int width = 200;
    int height = 166;
    Time created = {};
};
Message MakeNote(const NoteFacts& facts);

// [MS-OXOJRNL] 2.2.1: `kind` is what the entry is about ("Phone call").
Message MakeJournalEntry(const CStringW& subject, const CStringW& kind, Time start, int minutes, const CStringW& notes);

// A discussion's contribution, [MS-OXOPOST], which has no recipients.
Message MakePost(const Envelope& envelope, const CStringW& text);

// That `original` could not be delivered to its first recipient: [MS-OXOMSG] 2.2.3. It carries the original.
Message MakeNonDelivery(const Envelope& original, const Message& sent, const Person& postmaster);
// That `reader` has read it.
Message MakeReadReceipt(const Envelope& original, const Person& reader, Time read);

// A file that lies in a folder by itself: [MS-OXODOC]. The class is that of its extension.
Message MakeDocument(const CStringW& fileName, const CStringW& classSuffix, Bytes content, const CStringW& mediaType,
                     Time created);

// [MS-OXORSS].
Message MakeFeedItem(const CStringW& title, const CStringW& channel, const CStringW& link, std::string_view html,
                     Time published);

// Encrypted: one attachment smime.p7m, [MS-OXOSMIME] 2.1.1. Signed in the clear: one attachment with the whole MIME
// entity, 2.1.2. Neither has a body of its own.
Message MakeEncrypted(const Envelope& envelope);
Message MakeClearSigned(const Envelope& envelope, std::string_view asciiText);

// Hidden messages of a folder: a view's definition, and settings of a client, [MS-OXOCFG] 2.2.4.
Message MakeViewDefinition(const CStringW& name, Time created);
Message MakeSettings(const CStringW& messageClass, std::string_view xml, Time created);

}  // namespace mailbox_builder
