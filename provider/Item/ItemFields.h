// The rows of the items' property tables: a property, the number by which CVxMapiProp hands its value on, and what the
// item does with the value. Each item class has one table of rows, from which its VxField table is made.
//
// No value is trusted to have the type that it was asked for in: a reader leaves its member as it is where the type is
// another one; a text then becomes empty.
#pragma once

#include "mapi/MapiTypes.h"
#include "mapi/NamedProps.h"
#include "platform/WideText.h"
#include "provider/Common/Format.h"
#include "provider/ItemTypes.h"
#include "provider/MAPIUtils.h"
#include "provider/VxMapiProp.h"

#include <array>
#include <cstddef>

template <typename Item>
struct ItemRow {
    VxField field;
    void (*read)(Item& item, const SPropValue& value);  // null: asked for, and not kept
    bool exactTag = false;                              // a value with another tag than the row's is dropped
};

// ---- Rows' properties ----

constexpr VxField FixedField(EVxItemType type, LONG id, ULONG tag) noexcept {
    return {.itemType = type, .fieldId = id, .propTag = tag, .propType = PROP_TYPE(tag)};
}

constexpr VxField NamedField(EVxItemType type, LONG id, const GUID& set, LONG name, ULONG propType) noexcept {
    return {.itemType = type, .fieldId = id, .isNamed = 1, .propSet = &set, .nameId = name, .propType = propType};
}

// "Keywords" of the public strings: the categories of every item.
constexpr VxField KeywordsField(EVxItemType type, LONG id) noexcept {
    return {.itemType = type,
            .fieldId = id,
            .isNamed = 1,
            .propSet = PidNameKeywords.set,
            .nameKind = MNID_STRING,
            .nameText = PidNameKeywords.name,
            .propType = PidNameKeywords.type};
}

template <typename Item, std::size_t N>
constexpr std::array<VxField, N> FieldsOf(const ItemRow<Item> (&rows)[N]) noexcept {
    std::array<VxField, N> fields = {};
    for (std::size_t i = 0; i < N; ++i) {
        fields[i] = rows[i].field;
    }
    return fields;
}

// Hands a value to its row's reader. A value in error is none.
template <typename Item, std::size_t N>
void ReadField(Item& item, const ItemRow<Item> (&rows)[N], ULONG field, const SPropValue* value) {
    if (value == nullptr || PROP_TYPE(value->ulPropTag) == PT_ERROR) {
        return;
    }
    for (const ItemRow<Item>& row : rows) {
        if (static_cast<ULONG>(row.field.fieldId) == field) {
            if (row.read != nullptr && (!row.exactTag || row.field.propTag == value->ulPropTag)) {
                row.read(item, *value);
            }
            return;
        }
    }
}

// ---- Values ----

// The number of an importance; -1 for one that is none.
LONG ImportanceOf(const SPropValue& value) noexcept;

// "Normal", "Personal", "Private", "Confidential"; "Unknown" for every other number.
const WCHAR* SensitivityText(const SPropValue& value) noexcept;

// Adds the texts of a PT_MV_UNICODE value to what is there, with ", " between them.
void JoinTexts(const SPropValue& value, CStringW& text);

// What a recurrence pattern says: its kind, and whether there is one at all.
struct Recurrence {
    const WCHAR* type;
    const WCHAR* recurrence;
};
Recurrence RecurrenceOf(const SPropValue& value) noexcept;

inline bool IsOfType(const SPropValue& value, ULONG type) noexcept {
    return PROP_TYPE(value.ulPropTag) == type;
}

// ---- Readers, by the member that they fill ----

template <auto Member, typename Item>
void ReadText(Item& item, const SPropValue& value) {
    item.*Member = CMapiUtil::Mapi2SimpleString(&value);
}

template <auto Member, typename Item>
void ReadTexts(Item& item, const SPropValue& value) {
    JoinTexts(value, item.*Member);
}

template <auto Member, typename Item>
void ReadHex(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_BINARY)) {
        item.*Member = CMapiUtil::Bin2Hex(value.Value.bin.cb, value.Value.bin.lpb);
    }
}

template <auto Member, typename Item>
void ReadTime(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_SYSTIME)) {
        item.*Member = value.Value.ft;
    }
}

template <auto Member, typename Item>
void ReadNumber(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_LONG)) {
        item.*Member = value.Value.l;
    }
}

template <auto Member, typename Item>
void ReadNumberText(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_LONG)) {
        item.*Member = Vx::FormatString("%d"_w, value.Value.l);
    }
}

template <auto Member, typename Item>
void ReadDouble(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_DOUBLE)) {
        item.*Member = value.Value.dbl;
    }
}

template <auto Member, typename Item>
void ReadFlag(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_BOOLEAN)) {
        item.*Member = value.Value.b != 0;
    }
}

template <auto Member, typename Item>
void ReadFlagText(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_BOOLEAN)) {
        item.*Member = value.Value.b != 0 ? "True"_w : "False"_w;
    }
}

template <auto Member, typename Item>
void ReadImportance(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_LONG)) {
        item.*Member = ImportanceOf(value);
    }
}

template <auto Member, typename Item>
void ReadSensitivity(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_LONG)) {
        item.*Member = SensitivityText(value);
    }
}

template <auto TypeMember, auto Member, typename Item>
void ReadRecurrence(Item& item, const SPropValue& value) {
    if (IsOfType(value, PT_BINARY)) {
        const Recurrence found = RecurrenceOf(value);
        item.*TypeMember = found.type;
        item.*Member = found.recurrence;
    }
}
