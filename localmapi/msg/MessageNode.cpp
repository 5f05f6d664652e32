#include "localmapi/msg/MessageNode.h"

#include "localmapi/msg/AttachmentNode.h"
#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/NameStreams.h"
#include "localmapi/msg/StringPage.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <array>
#include <utility>

namespace localmapi::msg {

namespace {

constexpr CLSID kMessageClass = OleGuid(0x00020D0B);

// What a new message says of itself: the word that mail programs write, STORE_UNICODE_OK in it.
constexpr std::int32_t kUsualSupportMask = 0x00040E79;
static_assert((kUsualSupportMask & STORE_UNICODE_OK) != 0);

// Recipients kept open: a table reads a row column by column, and looks ahead.
constexpr std::size_t kRecentRecipients = 16;

constexpr std::array<std::byte, static_cast<std::size_t>(HeaderSize::Part)> kPartHeader{};

struct NumberedElement {
    ULONG number;
    CStringW name;
};

// The storages whose names have a prefix, by the number in their names. What has no number, or one that is taken, comes
// after them, in the order of the directory.
std::vector<NumberedElement> PartsIn(const OpenedStorage& storage, const std::vector<OpenedStorage::Element>& elements,
                                     WideView prefix, Diagnostics& problems) {
    std::map<ULONG, CStringW> numbered;
    std::vector<CStringW> others;
    for (const OpenedStorage::Element& element : elements) {
        if (!element.isStorage || !HasPrefix(element.name, prefix)) {
            continue;
        }
        if (numbered.size() + others.size() >= MessageNode::kMostParts) {
            problems.Report("storage \"" + storage.Path() + "\" has more than "
                            + std::to_string(MessageNode::kMostParts) + " elements " + Printable(prefix)
                            + "; the rest is left out");
            break;
        }
        const auto number = NumberBehind(element.name, prefix);
        if (!number || *number > INT32_MAX - MessageNode::kMostParts
            || !numbered.emplace(*number, element.name).second) {
            others.push_back(element.name);
        }
    }
    std::vector<NumberedElement> parts;
    for (auto& [number, name] : numbered) {
        parts.push_back({number, std::move(name)});
    }
    for (CStringW& name : others) {
        parts.push_back({parts.empty() ? 0 : parts.back().number + 1, std::move(name)});
    }
    return parts;
}

bool IsMessage(const std::vector<OpenedStorage::Element>& elements) {
    return std::any_of(elements.begin(), elements.end(), [](const OpenedStorage::Element& element) {
        return IsSameName(element.name, kPropertyStream) || ParseValueName(element.name);
    });
}

// Values of a row that say something; a table's rows also have places for what is not there.
bool IsKept(const SPropValue& value) noexcept {
    const ULONG type = PROP_TYPE(value.ulPropTag);
    return type != PT_ERROR && type != PT_NULL && type != PT_OBJECT;
}

}  // namespace

MessageNode::MessageNode(ComPtr<IStorage> storage, std::string path, std::shared_ptr<FileContext> file,
                         std::shared_ptr<AttachmentNode> around)
    : m_file(std::move(file)),
      m_around(std::move(around)),
      m_depth(m_around != nullptr ? m_around->Owner().Depth() + 1 : 0),
      m_storage(std::move(storage), std::move(path), m_file->isWritable) {}

MessageNode::~MessageNode() {
    // Attachments that the message does not know of must not be found in its storage.
    for (const auto& [number, slot] : m_attachments) {
        if (slot.state != AttachmentState::Kept) {
            m_storage.Interface().DestroyElement(slot.name.c_str());
        }
    }
}

Result<std::shared_ptr<MessageNode>> MessageNode::OpenFile(ComPtr<IStorage> storage,
                                                           std::shared_ptr<FileContext> file) {
    auto message = std::make_shared<MessageNode>(std::move(storage), std::string(), file, nullptr);
    VX_TRY_ASSIGN(const auto elements, message->m_storage.Elements());
    if (!IsMessage(elements) && !file->isWritable) {
        return Error{ErrorCode::Unsupported, "the storage holds no message"};
    }
    file->names = LoadNames(message->m_storage, file->problems);
    file->savedNames = file->names.Entries().size();
    message->LoadProperties(elements);
    return message;
}

Result<std::shared_ptr<MessageNode>> MessageNode::OpenWithin(std::shared_ptr<AttachmentNode> around,
                                                             ComPtr<IStorage> storage, std::string path) {
    const std::shared_ptr<FileContext> file = around->Owner().SharedFile();
    auto message = std::make_shared<MessageNode>(std::move(storage), std::move(path), file, std::move(around));
    VX_TRY(message->Load());
    return message;
}

Result<std::shared_ptr<MessageNode>> MessageNode::CreateWithin(std::shared_ptr<AttachmentNode> around,
                                                               ComPtr<IStorage> storage, std::string path) {
    VX_TRY_ASSIGN(auto message, OpenWithin(std::move(around), std::move(storage), std::move(path)));
    // An empty property stream tells the storage of a message from an object's.
    VX_TRY(message->m_storage.WriteStream(CStringW(kPropertyStream), message->PropertyHeader()));
    return message;
}

Status MessageNode::Load() {
    VX_TRY_ASSIGN(const auto elements, m_storage.Elements());
    LoadProperties(elements);
    return {};
}

HeaderSize MessageNode::Header() const noexcept {
    return m_around == nullptr ? HeaderSize::Message : HeaderSize::EmbeddedMessage;
}

void MessageNode::LoadProperties(const std::vector<OpenedStorage::Element>& elements) {
    m_properties.Load(m_storage, elements, Header(), m_file->problems);
    m_isWide = FindsWideTexts();
    m_recipients.clear();
    for (auto& part : PartsIn(m_storage, elements, kRecipientPrefix, m_file->problems)) {
        m_recipients.push_back({std::move(part.name), nullptr, {}});
    }
    for (auto& part : PartsIn(m_storage, elements, kAttachmentPrefix, m_file->problems)) {
        m_nextAttachment = part.number + 1;
        m_attachments.emplace(part.number, AttachmentSlot{std::move(part.name), AttachmentState::Kept, {}});
    }
}

// Whether the message's texts are wide: as they are, where they are all alike; else as the message says, or the one
// around it.
bool MessageNode::FindsWideTexts() const {
    bool hasWide = false;
    bool hasNarrow = false;
    for (const ULONG tag : m_properties.Tags()) {
        hasWide = hasWide || PROP_TYPE(tag) == PT_UNICODE;
        hasNarrow = hasNarrow || PROP_TYPE(tag) == PT_STRING8;
    }
    if (hasWide != hasNarrow) {
        return hasWide;
    }
    if (const auto mask = m_properties.Long(PROP_ID(PR_STORE_SUPPORT_MASK))) {
        return (static_cast<ULONG>(*mask) & STORE_UNICODE_OK) != 0;
    }
    return m_around == nullptr || m_around->Owner().m_isWide;
}

UINT MessageNode::CodePage() {
    const std::array told = {m_properties.Long(PROP_ID(PR_MESSAGE_CODEPAGE)),
                             m_properties.Long(PROP_ID(PR_MESSAGE_LOCALE_ID)),
                             m_properties.Long(PROP_ID(PR_INTERNET_CPID))};
    if (!m_codePage || told != m_toldPages) {
        m_toldPages = told;
        const UINT fallback = m_around != nullptr ? m_around->CodePage() : m_file->fallbackPage;
        m_codePage = StringPageOf(m_properties, fallback);
    }
    return *m_codePage;
}

Result<std::shared_ptr<RecipientNode>> MessageNode::Recipient(std::size_t place) {
    if (place >= m_recipients.size()) {
        return Error{ErrorCode::NotFound, m_storage.Path() + ": there is no recipient " + std::to_string(place)};
    }
    RecipientSlot& slot = m_recipients[place];
    if (slot.inMemory != nullptr) {
        return slot.inMemory;
    }
    if (auto open = slot.opened.lock()) {
        return open;
    }
    VX_TRY_ASSIGN(auto storage, m_storage.OpenStorage(slot.name));
    auto recipient = std::make_shared<RecipientNode>();
    recipient->storage.emplace(std::move(storage), m_storage.NameOf(slot.name) + '/', m_file->isWritable);
    VX_TRY_ASSIGN(const auto elements, recipient->storage->Elements());
    recipient->properties.Load(*recipient->storage, elements, HeaderSize::Part, m_file->problems);
    recipient->properties.AssumeLong(PR_ROWID, static_cast<std::int32_t>(place));
    slot.opened = recipient;
    m_recentRecipients.push_back(recipient);
    if (m_recentRecipients.size() > kRecentRecipients) {
        m_recentRecipients.pop_front();
    }
    return recipient;
}

Status MessageNode::ReplaceRecipients(const std::vector<SRow>& rows) {
    if (rows.size() > kMostParts) {
        return Error{ErrorCode::TooLarge,
                     m_storage.Path() + ": a message has at most " + std::to_string(kMostParts) + " recipients"};
    }
    std::vector<RecipientSlot> replaced;
    for (const SRow& row : rows) {
        auto recipient = std::make_shared<RecipientNode>();
        for (ULONG i = 0; i < row.cValues; ++i) {
            if (IsKept(row.lpProps[i])) {
                VX_TRY(recipient->properties.Write(row.lpProps[i], Form()));
            }
        }
        recipient->properties.SetLong(PR_ROWID, static_cast<std::int32_t>(replaced.size()));
        recipient->properties.SetLongDefault(PR_OBJECT_TYPE, static_cast<std::int32_t>(MAPI_MAILUSER));
        replaced.push_back({CStringW(), std::move(recipient), {}});
    }
    for (RecipientSlot& slot : m_recipients) {
        if (!slot.name.empty()) {
            m_replacedRecipients.push_back(std::move(slot.name));
        }
    }
    m_recentRecipients.clear();
    m_recipients = std::move(replaced);
    return {};
}

std::vector<ULONG> MessageNode::AttachmentNumbers() const {
    std::vector<ULONG> numbers;
    for (const auto& [number, slot] : m_attachments) {
        if (slot.state != AttachmentState::Added) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

Result<std::shared_ptr<AttachmentNode>> MessageNode::Attachment(ULONG number) {
    const auto found = m_attachments.find(number);
    if (found == m_attachments.end()) {
        return Error{ErrorCode::NotFound, m_storage.Path() + ": there is no attachment " + std::to_string(number)};
    }
    AttachmentSlot& slot = found->second;
    if (auto open = slot.opened.lock()) {
        return open;
    }
    VX_TRY_ASSIGN(auto storage, m_storage.OpenStorage(slot.name));
    auto attachment = std::make_shared<AttachmentNode>(shared_from_this(), number, std::move(storage),
                                                       m_storage.NameOf(slot.name) + '/');
    VX_TRY(attachment->Load());
    slot.opened = attachment;
    return attachment;
}

Result<std::shared_ptr<AttachmentNode>> MessageNode::CreateAttachment(ULONG& number) {
    if (m_attachments.size() >= kMostParts) {
        return Error{ErrorCode::TooLarge,
                     m_storage.Path() + ": a message has at most " + std::to_string(kMostParts) + " attachments"};
    }
    const CStringW name = NumberedName(kAttachmentPrefix, m_nextAttachment);
    VX_TRY_ASSIGN(auto storage, m_storage.CreateStorage(name));
    number = m_nextAttachment++;
    auto attachment =
        std::make_shared<AttachmentNode>(shared_from_this(), number, std::move(storage), m_storage.NameOf(name) + '/');
    m_attachments.emplace(number, AttachmentSlot{name, AttachmentState::Added, attachment});
    VX_TRY(attachment->Load());
    return attachment;
}

Status MessageNode::DeleteAttachment(ULONG number) {
    const auto found = m_attachments.find(number);
    if (found == m_attachments.end()) {
        return Error{ErrorCode::NotFound, m_storage.Path() + ": there is no attachment " + std::to_string(number)};
    }
    Status deleted;
    if (found->second.state == AttachmentState::Kept) {
        m_deletedAttachments.push_back(std::move(found->second.name));
    } else {
        deleted = m_storage.Destroy(found->second.name);
    }
    m_attachments.erase(found);
    return deleted;
}

void MessageNode::NoteSaved(ULONG number) {
    const auto found = m_attachments.find(number);
    if (found != m_attachments.end() && found->second.state == AttachmentState::Added) {
        found->second.state = AttachmentState::AddedSaved;
    }
}

// The reserved bytes, the numbers that the next recipient and attachment get, and how many there are: [MS-OXMSG] 2.4.1.
Bytes MessageNode::PropertyHeader() const {
    const std::uint64_t attachments = AttachmentNumbers().size();
    Bytes header;
    AppendNumber(header, 0, 8);
    AppendNumber(header, m_recipients.size(), 4);
    AppendNumber(header, m_nextAttachment, 4);
    AppendNumber(header, m_recipients.size(), 4);
    AppendNumber(header, attachments, 4);
    header.resize(static_cast<std::size_t>(Header()));
    return header;
}

void MessageNode::SetSupportMask() {
    const auto stored = m_properties.Long(PROP_ID(PR_STORE_SUPPORT_MASK));
    if (!stored && !m_isWide) {
        return;
    }
    constexpr auto kWide = static_cast<std::int32_t>(STORE_UNICODE_OK);
    const std::int32_t mask = stored.value_or(kUsualSupportMask);
    m_properties.SetLong(PR_STORE_SUPPORT_MASK, m_isWide ? mask | kWide : mask & ~kWide);
}

Status MessageNode::Save() {
    VX_TRY(SaveRecipients());
    VX_TRY(SaveAttachments());
    SetSupportMask();
    VX_TRY(m_properties.Save(PropertyHeader(), Form()));
    if (m_around != nullptr) {
        return {};
    }
    VX_TRY(SaveNewNames());
    return SaveFile();
}

// Templates have a class of their own, which stays.
Status MessageNode::SaveFile() {
    IStorage& root = m_storage.Interface();
    CLSID known{};
    HRESULT hr = ReadClassStg(&root, &known);
    if (FAILED(hr) || known == CLSID{}) {
        hr = root.SetClass(kMessageClass);
    }
    if (SUCCEEDED(hr) && m_file->commits) {
        hr = root.Commit(STGC_DEFAULT);
    }
    return FAILED(hr) ? Status(StorageFailure(hr, "the message's storage cannot be committed")) : Status();
}

Status MessageNode::SaveNewNames() {
    const std::size_t count = m_file->names.Entries().size();
    if (count == m_file->savedNames && m_storage.OpenStorage(CStringW(kNameStorage))) {
        return {};
    }
    VX_TRY(SaveNames(m_storage, m_file->names));
    m_file->savedNames = count;
    return {};
}

Status MessageNode::SaveRecipients() {
    while (!m_replacedRecipients.empty()) {
        VX_TRY(m_storage.Destroy(m_replacedRecipients.back()));
        m_replacedRecipients.pop_back();
    }
    for (std::size_t place = 0; place < m_recipients.size(); ++place) {
        RecipientSlot& slot = m_recipients[place];
        if (slot.inMemory == nullptr) {
            continue;
        }
        const CStringW name = NumberedName(kRecipientPrefix, static_cast<std::uint32_t>(place));
        RecipientNode& recipient = *slot.inMemory;
        if (!recipient.storage) {
            VX_TRY_ASSIGN(auto storage, m_storage.CreateStorage(name));
            recipient.storage.emplace(std::move(storage), m_storage.NameOf(name) + '/', true);
            recipient.properties.MoveTo(*recipient.storage);
        }
        VX_TRY(recipient.properties.Save(ByteView(kPartHeader.data(), kPartHeader.size()), Form()));
        slot = {name, nullptr, {}};
    }
    return {};
}

Status MessageNode::SaveAttachments() {
    while (!m_deletedAttachments.empty()) {
        VX_TRY(m_storage.Destroy(m_deletedAttachments.back()));
        m_deletedAttachments.pop_back();
    }
    for (auto at = m_attachments.begin(); at != m_attachments.end();) {
        AttachmentSlot& slot = at->second;
        if (slot.state == AttachmentState::Added && slot.opened.expired()) {
            VX_TRY(m_storage.Destroy(slot.name));
            at = m_attachments.erase(at);
            continue;
        }
        if (slot.state == AttachmentState::AddedSaved) {
            slot.state = AttachmentState::Kept;
        }
        ++at;
    }
    return {};
}

void MessageNode::Discard() {
    if (!m_properties.HasChanges()) {
        return;
    }
    if (const auto elements = m_storage.Elements()) {
        m_properties.Load(m_storage, *elements, Header(), m_file->problems);
    }
}

}  // namespace localmapi::msg
