// How a set of properties is read from its storage.
#include "localmapi/base/Format.h"
#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/PropertySet.h"

#include <algorithm>

namespace localmapi::msg {

namespace {

constexpr std::size_t kEntrySize = 16;

// A property stream with so many entries of unknown types in a row is none, or is shifted.
constexpr unsigned kMostUnknown = 8;

// Types that the format knows, and that we only carry along.
bool IsCarriedType(ULONG type) noexcept {
    return type == PT_SVREID || type == PT_SRESTRICTION || type == PT_ACTIONS;
}

bool IsPropertyTag(ULONG tag) noexcept {
    return PROP_ID(tag) != 0 && PROP_ID(tag) != PROP_ID_INVALID && FormOf(tag) != ValueForm::Unknown;
}

// Messages are stored with the header of either kind by some programs: the one behind which an entry begins is right.
std::size_t FindHeader(ByteView stream, HeaderSize expected) noexcept {
    const auto usual = static_cast<std::size_t>(expected);
    if (stream.Size() <= usual || (stream.Has(usual, kEntrySize) && IsPropertyTag(stream.U32(usual)))) {
        return usual;
    }
    for (const HeaderSize other : {HeaderSize::Message, HeaderSize::EmbeddedMessage, HeaderSize::Part}) {
        const auto size = static_cast<std::size_t>(other);
        if (stream.Has(size, kEntrySize) && IsPropertyTag(stream.U32(size))) {
            return size;
        }
    }
    return usual;
}

}  // namespace

void PropertySet::Load(OpenedStorage& storage, const std::vector<OpenedStorage::Element>& elements, HeaderSize header,
                       Diagnostics& problems) {
    *this = PropertySet();
    m_storage = &storage;
    m_problems = &problems;
    TakeElements(elements);
    if (!ReadPropertyStream(elements, header, problems)) {
        TakeNamedElements();
    }
    KeepFirstOfEachId();
}

void PropertySet::TakeElements(const std::vector<OpenedStorage::Element>& elements) {
    for (const OpenedStorage::Element& element : elements) {
        if (const auto value = ParseValueName(element.name)) {
            const std::uint64_t place = value->index ? PlaceOf(*value->index) : kMain;
            m_elements.try_emplace(ElementKey{value->tag, place}, ElementFacts{element.size, element.isStorage});
        }
    }
}

// False when there is no property stream, or none that says all.
bool PropertySet::ReadPropertyStream(const std::vector<OpenedStorage::Element>& elements, HeaderSize header,
                                     Diagnostics& problems) {
    const auto found = std::find_if(elements.begin(), elements.end(), [](const OpenedStorage::Element& element) {
        return !element.isStorage && IsSameName(element.name, kPropertyStream);
    });
    if (found == elements.end()) {
        if (!m_elements.empty()) {
            problems.Report("storage \"" + m_storage->Path()
                            + "\" has no property stream; its properties are known by the names of their streams");
        }
        return false;
    }
    auto stream = m_storage->OpenStream(found->name);
    auto bytes = stream ? (*stream)->ReadAll(static_cast<std::size_t>(header) + kMostProperties * kEntrySize)
                        : Result<Bytes>(stream.TakeFailure());
    if (!bytes) {
        problems.Report(bytes.Failure().text + "; properties are known by the names of their streams");
        return false;
    }
    const ByteView view(*bytes);
    return TakeEntries(view.Part(FindHeader(view, header)), problems);
}

bool PropertySet::TakeEntries(ByteView entries, Diagnostics& problems) {
    unsigned unknown = 0;
    for (std::size_t at = 0; entries.Has(at, kEntrySize); at += kEntrySize) {
        const ULONG tag = entries.U32(at);
        if (IsPropertyTag(tag)) {
            unknown = 0;
            TakeEntry(tag, entries.U64(at + 8));
            continue;
        }
        if (!IsCarriedType(PROP_TYPE(tag))) {
            problems.Report(m_storage->NameOf(CStringW(kPropertyStream)) + ": the entry " + Hex(tag)
                            + " is of no known type; it is left out");
            ++unknown;
        }
        if (unknown >= kMostUnknown) {
            problems.Report(m_storage->NameOf(CStringW(kPropertyStream))
                            + " makes no sense; what is left of it is not read");
            m_foreign.clear();
            return false;
        }
        CopyInto(m_foreign.emplace_back(), entries.Part(at, kEntrySize));
    }
    return true;
}

void PropertySet::TakeEntry(ULONG tag, std::uint64_t area) {
    Property property{.tag = tag, .area = area, .inMemory = nullptr};
    if (FormOf(tag) != ValueForm::Area && !HasElements(tag)) {
        const bool isEmpty =
            FormOf(tag) == ValueForm::Stream && static_cast<std::uint32_t>(area) <= TerminatorSize(tag);
        if (!isEmpty) {
            m_problems->Report(NameOf(tag) + " is missing; so is the property");
            return;
        }
        property.inMemory = std::make_shared<const StreamValue>();
    }
    m_properties.push_back(std::move(property));
}

void PropertySet::TakeNamedElements() {
    for (const auto& [key, facts] : m_elements) {
        const ValueForm form = FormOf(key.tag);
        if (key.place == kMain && IsPropertyTag(key.tag) && form != ValueForm::Area && HasElements(key.tag)
            && m_properties.size() < kMostProperties) {
            m_properties.push_back({.tag = key.tag, .area = DeclaredSize(key.tag, facts.size), .inMemory = nullptr});
        }
    }
}

void PropertySet::KeepFirstOfEachId() {
    const auto id = [](const Property& property) { return PROP_ID(property.tag); };
    std::stable_sort(m_properties.begin(), m_properties.end(),
                     [&](const Property& a, const Property& b) { return id(a) < id(b); });
    m_properties.erase(std::unique(m_properties.begin(), m_properties.end(),
                                   [&](const Property& a, const Property& b) { return id(a) == id(b); }),
                       m_properties.end());
}

// Several values of which there are none are no property.
bool PropertySet::HasElements(ULONG tag) const {
    const auto found = m_elements.find({tag, kMain});
    if (found == m_elements.end()) {
        return false;
    }
    switch (FormOf(tag)) {
        case ValueForm::Stream: return !found->second.isStorage;
        case ValueForm::Object: return true;
        default: return !found->second.isStorage && found->second.size > 0;
    }
}

}  // namespace localmapi::msg
