// A profile in memory: what one file of the profiles folder holds. A profile has services (a mailbox file, an Exchange
// account), a service has providers (a store, an address book), and every one of them is a section: properties under
// an identifier of 16 bytes. Beside them stand the global section and sections that belong to nobody.
//
// A profile is a snapshot. Changing one changes nothing on disk: ProfileStorage::Change does.
// One thread at a time.
#pragma once

#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace localmapi::profile {

class Section {
public:
    // Values are put into `memory`, which sections of a profile share.
    Section(const MAPIUID& uid, std::shared_ptr<Arena> memory) : m_uid(uid), m_memory(std::move(memory)) {}

    const MAPIUID& Uid() const noexcept { return m_uid; }

    // Sorted by id, one for each.
    const std::vector<SPropValue>& Properties() const noexcept { return m_properties; }

    // Null when there is none.
    const SPropValue* Find(ULONG id) const noexcept;

    // The value of a property of that id, if it is of such a type. A text of either width is wide.
    CStringW Text(ULONG tag) const;
    std::optional<LONG> Long(ULONG tag) const noexcept;
    bool Bool(ULONG tag) const noexcept;
    ByteView Binary(ULONG tag) const noexcept;

    // A deep copy is taken; a property of the same id goes. MAPI_E_INVALID_PARAMETER when the value is not valid.
    HRESULT Set(const SPropValue& value);
    void SetText(ULONG tag, WideView text);
    void SetLong(ULONG tag, LONG number);
    void SetBool(ULONG tag, bool truth);
    void SetBinary(ULONG tag, ByteView bytes);

    // False when there was none.
    bool Remove(ULONG id);

    const std::shared_ptr<Arena>& Memory() const noexcept { return m_memory; }

private:
    std::size_t Place(ULONG id) const noexcept;

    MAPIUID m_uid;
    std::shared_ptr<Arena> m_memory;  // values are never changed in place, so that copies may share them
    std::vector<SPropValue> m_properties;
};

struct Service {
    Section section;
    std::vector<Section> providers;
};

class Profile {
public:
    // With a global section that lists no stores, and nothing else.
    explicit Profile(CStringW name);

    CStringW name;
    Section global;
    std::vector<Service> services;  // in the order in which they came
    std::vector<Section> others;    // made by clients for their own purposes

    // A section that is not in the profile yet.
    Section NewSection(const MAPIUID& uid) const { return Section(uid, global.Memory()); }

    // Null when there is none.
    Service* FindService(const MAPIUID& uid) noexcept;
    Section* FindProvider(const MAPIUID& uid) noexcept;
    Section* FindSection(const MAPIUID& uid) noexcept;
    Service* ServiceOf(const MAPIUID& provider) noexcept;
    const Service* ServiceOf(const MAPIUID& provider) const noexcept;

    // The section of that identifier; it is made when there is none.
    Section& SectionFor(const MAPIUID& uid);

    // Take with them what they have in the lists of the global section. False when there is none.
    bool RemoveService(const MAPIUID& uid);
    bool RemoveProvider(const MAPIUID& uid);

    // Puts a provider last in a list of the global section: PR_STORE_PROVIDERS and the like, 16 bytes for each.
    void Enlist(ULONG listTag, const MAPIUID& provider);

    // Puts providers first in such a list, in this order; the others follow in theirs.
    void MoveToFront(ULONG listTag, std::span<const MAPIUID> order);

    // The providers of stores: those that PR_STORE_PROVIDERS lists, in its order, then the others in the file's. They
    // live as long as the profile is not changed.
    std::vector<const Section*> StoreProviders() const;

private:
    void Delist(const MAPIUID& provider);
};

// 16 bytes that no other section has.
MAPIUID NewUid();

inline ByteView BytesOf(const MAPIUID& uid) noexcept {
    return {reinterpret_cast<const std::byte*>(uid.ab), sizeof(uid.ab)};
}

// Profiles, services and providers are told apart, and profiles sorted, without regard to case.
bool IsSameName(WideView left, WideView right);
bool IsNameBefore(WideView left, WideView right);

}  // namespace localmapi::profile
