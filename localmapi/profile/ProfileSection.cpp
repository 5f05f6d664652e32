#include "localmapi/profile/ProfileSection.h"

#include "localmapi/model/PropertyNames.h"
#include "localmapi/model/PropertySource.h"
#include "localmapi/object/PropObject.h"
#include "localmapi/object/ValueStreams.h"
#include "localmapi/profile/PropertyText.h"
#include "localmapi/profile/Services.h"
#include "localmapi/profile/TextEscapes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace localmapi::profile {

namespace {

Error NoSuchSection(const MAPIUID& uid) {
    return Error{ErrorCode::NotFound, "the profile has no section " + HexText(BytesOf(uid))};
}

// Bytes of a text without terminator, or of a binary. Nothing for other types.
std::optional<ByteView> BytesWithin(const SPropValue& value) {
    const auto* text = reinterpret_cast<const std::byte*>(value.Value.lpszA);
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_UNICODE: return ByteView(text, WideView(value.Value.lpszW).size() * sizeof(WCHAR));
        case PT_STRING8: return ByteView(text, std::strlen(value.Value.lpszA));
        case PT_BINARY: return localmapi::BytesOf(value.Value.bin);
        default: return std::nullopt;
    }
}

// The properties of a section as its file has them at the moment of asking. Changes are collected, and Save makes them
// all in one step.
class SectionSource final : public PropertySource {
public:
    SectionSource(ProfileStorage storage, CStringW profileName, const MAPIUID& uid, bool isWritable, bool isNew)
        : m_storage(std::move(storage)),
          m_profileName(std::move(profileName)),
          m_uid(uid),
          m_isWritable(isWritable),
          m_isNew(isNew) {}

    std::vector<ULONG> Tags() override {
        std::vector<ULONG> tags;
        if (const auto section = Current()) {
            std::ranges::transform(section->Properties(), std::back_inserter(tags), &SPropValue::ulPropTag);
        }
        return tags;
    }

    std::optional<ULONG> TagOf(ULONG id) override {
        const auto section = Current();
        const SPropValue* value = section ? section->Find(id) : nullptr;
        return value != nullptr ? std::optional(value->ulPropTag) : std::nullopt;
    }

    std::uint64_t SizeOf(ULONG id) override {
        const auto section = Current();
        const SPropValue* value = section ? section->Find(id) : nullptr;
        const auto bytes = value != nullptr ? BytesWithin(*value) : std::nullopt;
        return bytes ? bytes->Size() : 0;
    }

    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override {
        VX_TRY_ASSIGN(const Section section, Current());
        VX_TRY_ASSIGN(const SPropValue* found, Find(section, id));
        if (localmapi::SizeOf(*found) > limit) {
            return Error{ErrorCode::TooLarge, "the property is larger than what was asked for"};
        }
        CopyValue(*found, memory, value);
        return {};
    }

    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override {
        VX_TRY_ASSIGN(const Section section, Current());
        VX_TRY_ASSIGN(const SPropValue* found, Find(section, id));
        const auto bytes = BytesWithin(*found);
        if (!bytes) {
            return Error{ErrorCode::Unsupported, "the property is neither a text nor a binary"};
        }
        return std::unique_ptr<ByteSource>(
            std::make_unique<OwnedBytes>(Bytes(bytes->Span().begin(), bytes->Span().end())));
    }

    UINT CodePage() override { return CP_ACP; }

    Status Write(const SPropValue& value) override {
        if (IsSecret(value.ulPropTag)) {
            return Error{ErrorCode::AccessDenied, "passwords are not kept in profiles"};
        }
        if (PropertyLine(value).empty()) {
            return Error{ErrorCode::Unsupported, "profiles keep no properties of this type"};
        }
        return m_changes.Set(value) == S_OK ? Status()
                                            : Status(Error{ErrorCode::Unsupported, "the value is not valid"});
    }

    Status Write(ULONG tag, ByteSource& bytes) override {
        VX_TRY_ASSIGN(const Bytes all, ReadAll(bytes, ProfileStorage::kLargestFile));
        Arena memory;
        const auto value = ValueFromBytes(tag, all, memory);
        return value ? Write(*value) : Status(Error{ErrorCode::Unsupported, "the property cannot be set from bytes"});
    }

    Status Remove(ULONG id) override {
        VX_TRY_ASSIGN(const Section section, Current());
        VX_TRY(Find(section, id));
        m_changes.Set(ErrorValue(PROP_TAG(PT_ERROR, id), MAPI_E_NOT_FOUND));
        return {};
    }

    Result<ComPtr<IStream>> OpenForWriting(ULONG, bool) override {
        return Error{ErrorCode::Unsupported, "the properties of profiles are set, not written as streams"};
    }

    Status Save() override {
        if (m_changes.Properties().empty()) {
            return {};
        }
        const Status saved = m_storage.Change(m_profileName, [this](Profile& profile) { return Apply(profile); });
        m_changes = NoChanges();
        m_isNew = m_isNew && !saved;
        return saved;
    }

    bool IsWritable() const override { return m_isWritable; }

private:
    Section NoChanges() const { return Section(m_uid, std::make_shared<Arena>()); }

    Result<Section> Current() const {
        VX_TRY_ASSIGN(Profile profile, m_storage.Load(m_profileName));
        const Section* section = profile.FindSection(m_uid);
        if (section == nullptr) {
            return m_isNew ? Result<Section>(NoChanges()) : NoSuchSection(m_uid);
        }
        return *section;
    }

    static Result<const SPropValue*> Find(const Section& section, ULONG id) {
        const SPropValue* value = section.Find(id);
        return value != nullptr ? Result<const SPropValue*>(value)
                                : Error{ErrorCode::NotFound, "the section has no such property"};
    }

    // A section that went away is not made again: it was a service or a provider.
    Status Apply(Profile& profile) const {
        if (!m_isNew && profile.FindSection(m_uid) == nullptr) {
            return NoSuchSection(m_uid);
        }
        Section& section = profile.SectionFor(m_uid);
        for (const SPropValue& value : m_changes.Properties()) {
            if (PROP_TYPE(value.ulPropTag) == PT_ERROR) {
                section.Remove(PROP_ID(value.ulPropTag));
            } else {
                section.Set(value);
            }
        }
        return {};
    }

    ProfileStorage m_storage;
    CStringW m_profileName;
    MAPIUID m_uid;
    bool m_isWritable;
    bool m_isNew;                     // not in the profile yet
    Section m_changes = NoChanges();  // a PT_ERROR stands for a property to be removed
};

class ProfileSection final : public PropObject<IProfSect> {
public:
    ProfileSection(std::unique_ptr<PropertySource> source, const SharedLock& lock)
        : PropObject<IProfSect>(std::move(source), nullptr, m_noNames, lock) {}

    HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* problems) override {
        return Guarded([&] { return SaveAfter(PropCore::SetProps(count, values, problems), problems); });
    }
    HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override {
        return Guarded([&] { return SaveAfter(PropCore::DeleteProps(tags, problems), problems); });
    }

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == IID_IProfSect || PropObject<IProfSect>::Implements(interfaceId);
    }

private:
    HRESULT SaveAfter(HRESULT changed, SPropProblemArray** problems) {
        const HRESULT saved = SUCCEEDED(changed) ? Save() : changed;
        if (FAILED(saved) && SUCCEEDED(changed) && problems != nullptr) {
            FreeRoot(std::exchange(*problems, nullptr));
        }
        return saved;
    }

    PropertyNames m_noNames;  // profiles have no named properties
};

}  // namespace

HRESULT OpenSection(const ProfileStorage& storage, WideView profileName, const MAPIUID* uid, LPCIID interfaceId,
                    ULONG flags, const SharedLock& lock, LastFailure& failure, IProfSect** section) {
    if (uid == nullptr || section == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *section = nullptr;
    if (interfaceId != nullptr && *interfaceId != IID_IProfSect && *interfaceId != IID_IMAPIProp) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    Result<Profile> profile = storage.Load(profileName);
    if (!profile) {
        return failure.Set(profile.Failure());
    }
    const bool isWritable = (flags & MAPI_MODIFY) != 0;
    const bool isNew = profile->FindSection(*uid) == nullptr;
    if (isNew && !isWritable) {
        return failure.Set(NoSuchSection(*uid));
    }
    auto source = std::make_unique<SectionSource>(storage, CStringW(profileName), *uid, isWritable, isNew);
    *section = MakeObject<ProfileSection>(std::move(source), lock).Detach();
    return S_OK;
}

}  // namespace localmapi::profile
