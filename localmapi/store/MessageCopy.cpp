#include "localmapi/store/MessageCopy.h"

#include "localmapi/props/Values.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Storage.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace localmapi {

namespace {

CopyRequest Everything(const CopyRequest& outer) {
    return CopyRequest{.all = true,
                       .tags = nullptr,
                       .excludedInterfaces = outer.excludedInterfaces,
                       .progress = outer.progress,
                       .flags = outer.flags};
}

// What copying a message or attachment begins with: the request is looked at, and the values are copied.
HRESULT BeginCopy(PropCore& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                  SPropProblemArray** problems, CopyProblems& found) {
    if (problems != nullptr) {
        *problems = nullptr;
    }
    if (to == nullptr || (!request.all && request.tags == nullptr)) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if ((request.flags & MAPI_MOVE) != 0) {
        return failure.Set(MAPI_E_NO_SUPPORT, "the object is open for reading only, so that nothing can be moved out");
    }
    return CopyValues(from, request, *to, found);
}

HRESULT CopyRecipients(MessageObject& from, IMessage& to) {
    Arena memory;
    std::vector<SRow> rows = ReadRecipients(from.TheMessage(), memory);
    if (rows.empty()) {
        return S_OK;
    }
    auto list = MakeRoot<ADRLIST>(CbNewADRLIST(rows.size()));
    list->cEntries = static_cast<ULONG>(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        list->aEntries[i] = ADRENTRY{0, rows[i].cValues, rows[i].lpProps};
    }
    return to.ModifyRecipients(0, list.get());
}

HRESULT CopyOneAttachment(MessageObject& from, ULONG number, const CopyRequest& request, IMessage& to,
                          CopyProblems& problems) {
    IAttach* opened = nullptr;
    HRESULT result = from.OpenAttach(number, nullptr, 0, &opened);
    const auto source = ComPtr<IAttach>::Adopt(opened);
    if (FAILED(result)) {
        return result;
    }
    ULONG targetNumber = 0;
    IAttach* created = nullptr;
    result = to.CreateAttach(nullptr, 0, &targetNumber, &created);
    const auto target = ComPtr<IAttach>::Adopt(created);
    if (FAILED(result)) {
        return result;
    }
    SPropProblemArray* found = nullptr;
    result =
        source->CopyTo(0, nullptr, nullptr, 0, request.progress, &IID_IAttachment, target.Get(), request.flags, &found);
    const MapiPointer<SPropProblemArray> hold(found);
    for (ULONG i = 0; found != nullptr && i < found->cProblem; ++i) {
        problems.Add(found->aProblem[i].ulPropTag, found->aProblem[i].scode);
    }
    return FAILED(result) ? result : target->SaveChanges(KEEP_OPEN_READWRITE);
}

void CopyAttachments(MessageObject& from, const CopyRequest& request, IMessage& to, CopyProblems& problems) {
    for (const ULONG number : from.TheMessage().AttachmentNumbers()) {
        const HRESULT copied = CopyOneAttachment(from, number, request, to, problems);
        if (FAILED(copied)) {
            problems.Add(PR_MESSAGE_ATTACHMENTS, copied);
        }
    }
}

HRESULT CopyEmbedded(AttachObject& from, const CopyRequest& request, IMAPIProp& to) {
    auto source = OpenAttachedMessage(from);
    if (!source) {
        return ResultOf(source.Failure().code);
    }
    ComPtr<IUnknown> object;
    HRESULT result = to.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_CREATE | MAPI_MODIFY, object.Receive());
    const ComPtr<IMessage> target = FAILED(result) ? nullptr : QueryFor<IMessage>(object.Get(), IID_IMessage);
    if (!target) {
        return FAILED(result) ? result : MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    result = (*source)->CopyTo(0, nullptr, nullptr, 0, request.progress, &IID_IMessage, target.Get(), request.flags,
                               nullptr);
    return FAILED(result) ? result : target->SaveChanges(KEEP_OPEN_READWRITE);
}

HRESULT CopyStorage(AttachObject& from, IMAPIProp& to) {
    auto source = from.TheAttachment().OpenStorage();
    if (!source) {
        return ResultOf(source.Failure().code);
    }
    ComPtr<IUnknown> object;
    HRESULT result =
        to.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IStorage, STGM_READWRITE, MAPI_CREATE | MAPI_MODIFY, object.Receive());
    const ComPtr<IStorage> target = FAILED(result) ? nullptr : QueryFor<IStorage>(object.Get(), IID_IStorage);
    if (!target) {
        return FAILED(result) ? result : MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    result = (*source)->CopyTo(0, nullptr, nullptr, target.Get());
    return FAILED(result) ? result : target->Commit(STGC_DEFAULT);
}

const SPropValue* FindValue(const SPropValue* values, ULONG count, ULONG tag) {
    for (ULONG i = 0; i < count; ++i) {
        if (values[i].ulPropTag == tag) {
            return &values[i];
        }
    }
    return nullptr;
}

std::optional<LONG> RowIdOf(const SPropValue* values, ULONG count) {
    const SPropValue* found = FindValue(values, count, PR_ROWID);
    return found == nullptr ? std::nullopt : std::optional(found->Value.l);
}

SRow RowWithId(const ADRENTRY& entry, LONG id, Arena& memory) {
    auto* values = memory.Array<SPropValue>(entry.cValues + 1);
    ULONG count = 0;
    for (ULONG i = 0; i < entry.cValues; ++i) {
        if (PROP_ID(entry.rgPropVals[i].ulPropTag) != PROP_ID(PR_ROWID)) {
            values[count++] = entry.rgPropVals[i];
        }
    }
    values[count++] = LongValue(PR_ROWID, id);
    return SRow{0, count, values};
}

}  // namespace

HRESULT CopyMessage(MessageObject& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                    SPropProblemArray** problems) {
    CopyProblems found;
    const HRESULT copied = BeginCopy(from, request, to, failure, problems, found);
    if (FAILED(copied)) {
        return copied;
    }
    if (const auto target = QueryFor<IMessage>(to, IID_IMessage)) {
        if (IsAskedFor(request, PROP_ID(PR_MESSAGE_RECIPIENTS))) {
            const HRESULT listed = CopyRecipients(from, *target);
            if (FAILED(listed)) {
                found.Add(PR_MESSAGE_RECIPIENTS, listed);
            }
        }
        if (IsAskedFor(request, PROP_ID(PR_MESSAGE_ATTACHMENTS))) {
            CopyAttachments(from, Everything(request), *target, found);
        }
    }
    return found.Give(problems);
}

HRESULT CopyAttachment(AttachObject& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                       SPropProblemArray** problems) {
    CopyProblems found;
    const HRESULT copied = BeginCopy(from, request, to, failure, problems, found);
    if (FAILED(copied)) {
        return copied;
    }
    const auto data = from.TheAttachment().TagOf(PROP_ID(PR_ATTACH_DATA_OBJ));
    if (data && PROP_TYPE(*data) == PT_OBJECT && IsAskedFor(request, PROP_ID(PR_ATTACH_DATA_OBJ))) {
        HRESULT result = CopyEmbedded(from, request, *to);
        if (result == MAPI_E_NOT_FOUND) {
            result = CopyStorage(from, *to);
        }
        if (FAILED(result)) {
            found.Add(PR_ATTACH_DATA_OBJ, result);
        }
    }
    return found.Give(problems);
}

std::vector<SRow> ReadRecipients(MessageSource& message, Arena& memory) {
    const std::unique_ptr<RowSource> source = message.Recipients();
    const std::vector<ULONG> columns = source->Columns();
    std::vector<SRow> rows;
    for (std::size_t row = 0; row < source->Count(); ++row) {
        auto* values = memory.Array<SPropValue>(columns.size());
        ULONG count = 0;
        for (const ULONG column : columns) {
            SPropValue value{};
            if (source->Read(row, PROP_ID(column), memory, value)) {
                // Texts are copied wide, whatever the source keeps.
                const ULONG type = PROP_TYPE(value.ulPropTag);
                if (IsTextType(type)) {
                    ChangeWidth(value, PT_UNICODE | (type & MV_FLAG), source->CodePage(row), memory);
                }
                values[count++] = value;
            }
        }
        rows.push_back(SRow{0, count, values});
    }
    return rows;
}

HRESULT MergeRecipients(std::vector<SRow>& rows, ULONG way, const ADRLIST& changes, Arena& memory) {
    LONG nextId = 0;
    for (const SRow& row : rows) {
        nextId = std::max(nextId, RowIdOf(row.lpProps, row.cValues).value_or(-1) + 1);
    }
    for (ULONG i = 0; i < changes.cEntries; ++i) {
        const ADRENTRY& entry = changes.aEntries[i];
        if (entry.cValues > 0 && entry.rgPropVals == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        const std::optional<LONG> id = RowIdOf(entry.rgPropVals, entry.cValues);
        if (way == 0 || way == MODRECIP_ADD) {
            const LONG given = way == 0 && id ? *id : nextId;
            rows.push_back(RowWithId(entry, given, memory));
            nextId = std::max(nextId, given + 1);
            continue;
        }
        const auto found = std::find_if(rows.begin(), rows.end(),
                                        [&](const SRow& row) { return id && RowIdOf(row.lpProps, row.cValues) == id; });
        if (found == rows.end()) {
            return MAPI_E_NOT_FOUND;
        }
        if (way == MODRECIP_REMOVE) {
            rows.erase(found);
        } else {
            *found = RowWithId(entry, *id, memory);
        }
    }
    return S_OK;
}

}  // namespace localmapi
