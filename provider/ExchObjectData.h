// The kinds of records, one small class each: how many fields, with which keys (provider/RecordKeys.h). Made empty, a
// record owns an array with all fields unset; made from a VARIANT, it borrows the host's array without looking at its
// type or length. Copies are deep.
#pragma once

#include "provider/ExchObject.h"
#include "provider/RecordKeys.h"

#include <array>
#include <cstddef>

// The key of a field that is not there.
inline constexpr const WCHAR* kNoKey = ""_w;

// The common part of kinds whose fields are a table.
template <const auto& Fields>
class RecordOf : public CExchObject {
public:
    const WCHAR* GetFieldName(std::size_t index) const override {
        return index < Fields.size() ? Fields[index].key : kNoKey;
    }
    std::size_t GetSize() const override { return Fields.size(); }

protected:
    RecordOf() { Init(Fields.size()); }
    explicit RecordOf(VARIANT* record) { Init(record == nullptr ? nullptr : record->parray); }
};

// A list: each element is a record, moved in by SetVariantFieldVal. A list without elements is an array of length 0.
class CArrayObjectData final : public CExchObject {
public:
    explicit CArrayObjectData(std::size_t size) : m_size(size) { Init(size); }
    explicit CArrayObjectData(VARIANT* list) : m_size(Init(list == nullptr ? nullptr : list->parray)) {}

    const WCHAR* GetFieldName(std::size_t) const override { return kNoKey; }
    std::size_t GetSize() const override { return m_size; }

private:
    std::size_t m_size;
};

// An item of any type, or an attachment.
class CExchObjectData final : public RecordOf<kItemFields> {
public:
    CExchObjectData() = default;
    explicit CExchObjectData(VARIANT* record) : RecordOf(record) {}
};

class CFolderInfoObjectData final : public RecordOf<kFolderFields> {
public:
    CFolderInfoObjectData() = default;
    explicit CFolderInfoObjectData(VARIANT* record) : RecordOf(record) {}
};

class CStoreInfoObjectData final : public RecordOf<kStoreFields> {
public:
    CStoreInfoObjectData() = default;
    explicit CStoreInfoObjectData(VARIANT* record) : RecordOf(record) {}
};

class CProfileInfoObjectData final : public RecordOf<kProfileFields> {
public:
    CProfileInfoObjectData() = default;
    explicit CProfileInfoObjectData(VARIANT* record) : RecordOf(record) {}
};
