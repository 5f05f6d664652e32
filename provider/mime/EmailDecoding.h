// What the provider asks of the decoding of message files, where it cannot get a message's text from MAPI: a decoded
// e-mail, and who makes one of a file. Used by one thread.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"

#include <memory>
#include <string>
#include <vector>

// An e-mail as it came out of its file, signatures and encryption taken off. Indexes are of its attachments, from 0; one
// that there is not fails as the operation does.
class DecodedEmail {
public:
    DecodedEmail() = default;
    DecodedEmail(const DecodedEmail&) = delete;
    DecodedEmail& operator=(const DecodedEmail&) = delete;
    virtual ~DecodedEmail() = default;

    // Empty the text first; false when the e-mail has no such body.
    virtual bool GetPlainTextBody(CStringW& text) = 0;
    virtual bool GetHtmlBody(CStringW& text) = 0;

    virtual LONG GetNumAttachments() = 0;

    // False, with an empty name, for an attachment whose name cannot be read.
    virtual bool GetAttachmentFilename(LONG index, CStringW& name) = 0;

    // In bytes; negative when it is not known.
    virtual LONG GetAttachmentSize(LONG index) = 0;

    virtual bool GetAttachmentData(LONG index, std::vector<BYTE>& bytes) = 0;

    // Gives the attachment another name; the next operation saves it under its name into a folder that exists.
    virtual bool SetAttachmentFilename(LONG index, const CStringW& name) = 0;
    virtual bool SaveAttachedFile(LONG index, const CStringW& folder) = 0;
};

// Decodes the message file at `path`, which is in the ANSI code page. Null when there is no e-mail in it.
std::unique_ptr<DecodedEmail> DecodeEmailFile(const std::string& path);
