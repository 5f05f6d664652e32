// CVxMapiProp: the second base of every item. It turns a table of fields into three calls of MAPI, one that finds the
// tags of the named properties and two that read all values, and hands each value on under its field's number.
//
// The tables are constants; whoever loads an item only reads them, on any thread.
#pragma once

#include "mapi/MapiFlags.h"
#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"
#include "provider/MapiHolders.h"

#include <array>
#include <cstddef>

// One row of a field table: a property with a fixed tag, or one with a name.
struct VxField {
    EVxItemType itemType;  // of the table; for its readers
    LONG fieldId;          // what GetProperty is told
    LONG isNamed = 0;      // for the table's readers: propTag decides

    // A name: its property set, and a number (MNID_ID) or a text (MNID_STRING).
    const GUID* propSet = nullptr;
    ULONG nameKind = MNID_ID;
    LONG nameId = 0;
    const WCHAR* nameText = nullptr;

    ULONG propTag = 0;     // a tag, or a property id alone; 0 for a named property
    ULONG propType = 0;    // the type in which it is asked for, whatever the tag says
    LONG altFieldId = -1;  // takes the place of fieldId, with kVxAltField added to it, where it is not -1
};

// The bit that tells GetProperty that the number is a row's altFieldId.
inline constexpr ULONG kVxAltField = 0x80000000;

// What stands at one place of the tag arrays: the numbers of the field that is asked for there.
struct CVxProperty {
    static constexpr LONG kNoField = 193;

    LONG namedId = kNoField;
    LONG fixedId = kNoField;
    LONG namedAltId = -1;
    LONG fixedAltId = -1;
};

// The working record of one load. It lives on the stack, and its array is as large as a table may be.
class CVxProperties {
public:
    static constexpr ULONG kMostFields = 256;

    // A table of more than kMostFields rows is logged as an error; the rows behind them are not loaded.
    explicit CVxProperties(LONG fieldCount);

    // Rows that are loaded.
    ULONG Count() const noexcept { return m_count; }

    // The element at a place. A place above Count() is logged as an error; one behind the array gives its last element.
    const CVxProperty& GetProperty(ULONG index) const;
    CVxProperty& GetProperty(ULONG index);

    // Puts the starting values into every element.
    void Reset() noexcept { m_properties.fill({}); }

    VxMapiFrBufPtr<SPropTagArray> m_namedTags;  // null when no named property is to be read
    VxMapiFrBufPtr<SPropTagArray> m_fixedTags;

private:
    void CheckIndex(ULONG index) const;

    ULONG m_count;
    std::array<CVxProperty, kMostFields> m_properties;
};

class CVxMapiProp {
public:
    virtual ~CVxMapiProp() = default;
    CVxMapiProp(const CVxMapiProp&) = delete;
    CVxMapiProp& operator=(const CVxMapiProp&) = delete;

    // Only items that have a read status override these.
    virtual void SetReadStatus(bool /*isRead*/) {}
    virtual int GetReadStatus() { return 0; }

    // Reads PR_LAST_MODIFICATION_TIME of the object; false when it has none.
    virtual bool GetLastModifiedTime();

    // The open object, lent; null while it is closed.
    virtual IMAPIProp* GetMapiPropObj() = 0;

    // Reads what no table tells.
    virtual bool GetTypeSpecificProperties() = 0;

    // Takes a field's value. A value of a fixed tag may be of type PT_ERROR; the value is lent for the call.
    virtual void GetProperty(ULONG field, const SPropValue* value) = 0;

    // Reads the table's fields, then the rest. False when either fails.
    bool GetProperties();

    // Reads the table's fields. False when the object has no modification time, or when the fixed tags cannot be read.
    // Named properties that cannot be read are left out; so are those of them that are in error.
    bool GetBaseProperties();

    // Fills the tag arrays of `props` and its elements. False when memory does not suffice.
    bool ResolveTags(CVxProperties& props);

    const FILETIME& GetLastModified() const noexcept { return m_lastModified; }
    void SetLastModified(const FILETIME& time) noexcept { m_lastModified = time; }

protected:
    CVxMapiProp() = default;

    const VxField* m_fields = nullptr;  // not owned: a constant table, set by the item's class
    LONG m_fieldCount = 0;
    FILETIME m_lastModified = {0, 0};

private:
    void CollectFixedTags(CVxProperties& props);
    void FindNamedTags(CVxProperties& props);
    void ReadNamedValues(CVxProperties& props);
    bool ReadFixedValues(CVxProperties& props);
};
