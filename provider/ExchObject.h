// CExchObject: a record, the form in which structured values cross the boundary between provider and host. A record is
// a VARIANT of type VT_ARRAY | VT_VARIANT whose array has one dimension and the lower bound 0; the position of an
// element is its field (provider/RecordKeys.h), and a field that was never set is VT_EMPTY.
//
// An object of this class holds one such array: its own, destroyed with it, or one borrowed from the host. To fill a
// list, each record is filled, detached into a VARIANT and moved into the list, which is detached at the end:
//
//     CArrayObjectData list(count);
//     for (std::size_t i = 0; i < count; ++i) {
//         CFolderInfoObjectData record;
//         record.SetStringFieldVal("fi_folderPath"_field, folders[i].path, true);
//         VARIANT element;
//         record.Dettach(&element);
//         list.SetVariantFieldVal(i, &element, true);
//     }
//     list.Dettach(out);
//
// One thread at a time. Operations that allocate throw std::bad_alloc; nothing else is reported. An index that the
// array does not have, or any index when there is no array of VARIANTs, reads as an unset field, and setting it does
// nothing.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/BstrHolder.h"
#include "platform/SafeArray.h"
#include "platform/Variant.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <string>

class CExchObject {
public:
    // Releases the lock, and destroys the array with all it holds if it is this object's own.
    virtual ~CExchObject();

    // The key of a field, for people to read; "" for an index that the kind does not have.
    virtual const WCHAR* GetFieldName(std::size_t index) const = 0;

    // The number of fields of this kind of record. The array may have another number when it is the host's.
    virtual std::size_t GetSize() const = 0;

    CExchObject& operator=(const CExchObject&) = delete;

    // Whatever array the object had before is given up first, destroyed if it was its own.

    // Gives the object an array of `n` unset elements.
    void Init(std::size_t n);

    // Borrows the host's array, which must outlive this object; null is a record without fields. Gives its number of
    // elements.
    std::size_t Init(SAFEARRAY* array);

    // Gives the object a deep copy of the other's array. None, when the other has none or holds what cannot be copied.
    void InitFrom(const CExchObject& other);

    // Locks the array for access to its elements, unless it is locked already. Every accessor below does this, and the
    // lock stays: after reading one field the array is locked until ReleaseLock or Dettach.
    void EnsureLock() const;
    void ReleaseLock() const;

    // Hands the array over to the receiver: *out is overwritten as it stands and becomes the record, unlocked. This
    // object still sees the array until it is destroyed elsewhere, as a borrower.
    void Dettach(VARIANT* out);

    // The same with the bare array. Null when there is none.
    [[nodiscard]] SAFEARRAY* Dettach();

    // The element itself; null for an index out of range. It stays the record's, and valid while the array is locked.
    VARIANT* GetData(std::size_t index);
    const VARIANT* GetData(std::size_t index) const;
    VARIANT* GetVariantFieldVal(std::size_t index);
    const VARIANT* GetVariantFieldVal(std::size_t index) const;

    // Setting. `fresh` says that the element holds nothing yet, so that there is nothing to clear. 64-bit integers and
    // booleans take no notice of it and clear a set element in any case; doubles and bytes never clear one.

    // Moves *value into the record, which owns what it holds from then on: the caller must not clear *value. Setting an
    // element to itself does nothing. The index must be in range, or *value stays the caller's.
    void SetVariantFieldVal(std::size_t index, VARIANT* value, bool fresh);

    // Without `fresh`, an element of another type than VT_I4 is cleared first.
    void SetIntFieldVal(std::size_t index, int value, bool fresh);
    void SetLongLongFieldVal(std::size_t index, std::int64_t value, bool fresh);
    void SetBooleanFieldVal(std::size_t index, bool value, bool fresh);
    void SetDoubleFieldVal(std::size_t index, double value);

    // Stores the text up to its first zero, after a round trip through UTF-8: what cannot survive that, unpaired
    // surrogates, is U+FFFD before it reaches the host. A null pointer clears the element whatever `fresh` says, and
    // stores an empty text.
    void SetStringFieldVal(std::size_t index, const CStringW& value, bool fresh);
    void SetStringFieldVal(std::size_t index, const WCHAR* value, bool fresh);

    // Stores a copy of `size` bytes. Null and 0 make an empty array of bytes, which is not an unset field.
    void SetBinaryBlobFieldVal(std::size_t index, const std::uint8_t* data, int size);

    // The same into any VARIANT, which is overwritten as it stands. A negative size counts as 0.
    static void SetBinaryInVariant(VARIANT* target, const std::uint8_t* data, int size);

    // Reading. Numbers are taken from the element without a look at its type: whoever reads a field knows what it holds.

    // A copy of the text; null for an element that holds no text or a null BSTR.
    _bstr_t GetStringFieldVal(std::size_t index) const;

    // The low 32 bits of the value, also of an unset element.
    int GetIntFieldVal(std::size_t index) const;

    // The value; 0 or false for an unset element. A boolean is true when any of its 16 bits is set.
    std::int64_t GetLongLongFieldVal(std::size_t index) const;
    double GetDoubleFieldVal(std::size_t index) const;
    bool GetBooleanFieldVal(std::size_t index) const;

    // The bytes; none for an unset element, for one that is no array, and for an array without dimensions or elements.
    void GetBinaryBlobFieldVal(std::size_t index, std::string& out) const;

    // Whether the element is neither VT_EMPTY nor VT_NULL.
    bool IsFieldSet(std::size_t index) const;

    // What GetDataType tells about an element.
    enum DataType : int {
        eDataOther = 0,  // unset, or of a type not listed here
        eDataInt = 1,    // VT_I4, VT_INT
        eDataString = 2,
        eDataLongLong = 3,  // VT_I8, VT_CY
        eDataBoolean = 4,
        eDataBytes = 5,
        eDataDouble = 6,
    };
    int GetDataType(std::size_t index) const;

protected:
    CExchObject() = default;

    // A deep copy that owns its array; the lock of `other` is released first.
    CExchObject(const CExchObject& other);

private:
    void Hold(SAFEARRAY* array, bool owned);
    VARIANT* Element(std::size_t index) const;

    bool m_owned = true;  // whether the array is destroyed with this object
    SAFEARRAY* m_array = nullptr;
    mutable VARIANT* m_data = nullptr;  // the elements, while the array is locked by this object
};
