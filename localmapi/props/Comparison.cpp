// The order of values, and what they contain.
#include "localmapi/props/TextFolding.h"
#include "localmapi/props/ValueTypes.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace localmapi {

namespace {

template <class T>
int OrderOf(T left, T right) noexcept {
    return left < right ? -1 : right < left ? 1 : 0;
}

// Numbers that are none stand above all others, and are equal.
int OrderOfFloats(double left, double right) noexcept {
    if (std::isnan(left) || std::isnan(right)) {
        return OrderOf(std::isnan(left), std::isnan(right));
    }
    return OrderOf(left, right);
}

std::uint64_t Ticks(const FILETIME& time) noexcept {
    return std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

int OrderOfBytes(ByteView left, ByteView right) noexcept {
    const std::size_t common = std::min(left.Size(), right.Size());
    const int order = common == 0 ? 0 : std::memcmp(left.Data(), right.Data(), common);
    return order != 0 ? order : OrderOf(left.Size(), right.Size());
}

ByteView BytesOf(const GUID& guid) noexcept {
    return {reinterpret_cast<const std::byte*>(&guid), sizeof(guid)};
}

// The text of a value of either width, in UTF-16.
class Wide {
public:
    explicit Wide(const SPropValue& value) {
        if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) {
            m_text = value.Value.lpszW;
        } else {
            m_owned = ToWide(value.Value.lpszA, CP_ACP);
            m_text = m_owned.c_str();
        }
    }
    Wide(const Wide&) = delete;
    Wide& operator=(const Wide&) = delete;

    const WCHAR* Terminated() const noexcept { return m_text; }
    WideView Text() const noexcept { return m_text; }

private:
    CStringW m_owned;
    const WCHAR* m_text;
};

bool IsText(const SPropValue& value) noexcept {
    return PROP_TYPE(value.ulPropTag) == PT_UNICODE || PROP_TYPE(value.ulPropTag) == PT_STRING8;
}

int OrderOfSeveral(const SPropValue& left, const SPropValue& right) {
    const ULONG leftCount = ElementsOf(left).count;
    const ULONG rightCount = ElementsOf(right).count;
    for (ULONG i = 0; i < std::min(leftCount, rightCount); ++i) {
        if (const int order = Compare(ElementAt(left, i), ElementAt(right, i)); order != 0) {
            return order;
        }
    }
    return OrderOf(leftCount, rightCount);
}

// Types whose values can be compared: the same ones, and texts of two widths.
bool AreComparable(const SPropValue& left, const SPropValue& right) noexcept {
    const ULONG leftType = PROP_TYPE(left.ulPropTag);
    const ULONG rightType = PROP_TYPE(right.ulPropTag);
    return leftType == rightType
           || (IsTextType(leftType) && IsTextType(rightType) && IsMultiple(leftType) == IsMultiple(rightType));
}

// Texts exactly, all else by its order.
bool AreEqual(const SPropValue& left, const SPropValue& right) {
    if (IsText(left)) {
        return Wide(left).Text() == Wide(right).Text();
    }
    if (!IsMultiple(left.ulPropTag)) {
        return Compare(left, right) == 0;
    }
    const ULONG count = ElementsOf(left).count;
    if (count != ElementsOf(right).count) {
        return false;
    }
    for (ULONG i = 0; i < count; ++i) {
        if (!AreEqual(ElementAt(left, i), ElementAt(right, i))) {
            return false;
        }
    }
    return true;
}

template <class View>
bool Matches(View text, View pattern, ULONG fuzzyLevel) {
    switch (fuzzyLevel & 0xFFFF) {
        case FL_SUBSTRING: return text.find(pattern) != View::npos;
        case FL_PREFIX: return text.starts_with(pattern);
        default: return text == pattern;
    }
}

std::string_view Chars(const SBinary& binary) noexcept {
    return {reinterpret_cast<const char*>(binary.lpb), binary.cb};
}

bool ContainsOne(const SPropValue& value, const SPropValue& pattern, ULONG fuzzyLevel) {
    if (PROP_TYPE(value.ulPropTag) == PT_BINARY && PROP_TYPE(pattern.ulPropTag) == PT_BINARY) {
        return Matches(Chars(value.Value.bin), Chars(pattern.Value.bin), fuzzyLevel);
    }
    if (!IsText(value) || !IsText(pattern)) {
        return false;
    }
    const Wide text(value);
    const Wide part(pattern);
    const Folding folding{.ignoreCase = (fuzzyLevel & (FL_IGNORECASE | FL_LOOSE)) != 0,
                          .ignoreMarks = (fuzzyLevel & (FL_IGNORENONSPACE | FL_LOOSE)) != 0};
    if (!folding.ignoreCase && !folding.ignoreMarks) {
        return Matches(text.Text(), part.Text(), fuzzyLevel);
    }
    return Matches<WideView>(Folded(text.Text(), folding), Folded(part.Text(), folding), fuzzyLevel);
}

}  // namespace

int Compare(const SPropValue& left, const SPropValue& right) {
    const ULONG type = PROP_TYPE(left.ulPropTag);
    if (!AreComparable(left, right)) {
        return OrderOf(type, PROP_TYPE(right.ulPropTag));
    }
    if (IsMultiple(type)) {
        return OrderOfSeveral(left, right);
    }
    const SPropValue::Contents& a = left.Value;
    const SPropValue::Contents& b = right.Value;
    switch (type) {
        case PT_I2: return OrderOf(a.i, b.i);
        case PT_LONG: return OrderOf(a.l, b.l);
        case PT_ERROR: return OrderOf(a.err, b.err);
        case PT_R4: return OrderOfFloats(a.flt, b.flt);
        case PT_DOUBLE: return OrderOfFloats(a.dbl, b.dbl);
        case PT_APPTIME: return OrderOfFloats(a.at, b.at);
        case PT_BOOLEAN: return OrderOf(a.b != 0, b.b != 0);
        case PT_CURRENCY: return OrderOf(a.cur.int64, b.cur.int64);
        case PT_I8: return OrderOf(a.li.QuadPart, b.li.QuadPart);
        case PT_SYSTIME: return OrderOf(Ticks(a.ft), Ticks(b.ft));
        case PT_CLSID: return OrderOfBytes(BytesOf(*a.lpguid), BytesOf(*b.lpguid));
        case PT_SVREID:
        case PT_BINARY: return OrderOfBytes(BytesOf(a.bin), BytesOf(b.bin));
        case PT_UNICODE:
        case PT_STRING8: return CompareWithoutCase(Wide(left).Terminated(), Wide(right).Terminated());
        default: return 0;
    }
}

bool Holds(const SPropValue& left, ULONG relop, const SPropValue& right) {
    if (!AreComparable(left, right)) {
        return false;
    }
    switch (relop) {
        case RELOP_LT: return Compare(left, right) < 0;
        case RELOP_LE: return Compare(left, right) <= 0;
        case RELOP_GT: return Compare(left, right) > 0;
        case RELOP_GE: return Compare(left, right) >= 0;
        case RELOP_EQ: return AreEqual(left, right);
        case RELOP_NE: return !AreEqual(left, right);
        default: return false;
    }
}

bool Contains(const SPropValue& value, const SPropValue& pattern, ULONG fuzzyLevel) {
    if (IsMultiple(value.ulPropTag)) {
        for (ULONG i = 0; i < ElementsOf(value).count; ++i) {
            if (Contains(ElementAt(value, i), pattern, fuzzyLevel)) {
                return true;
            }
        }
        return false;
    }
    if (IsMultiple(pattern.ulPropTag)) {
        for (ULONG i = 0; i < ElementsOf(pattern).count; ++i) {
            if (ContainsOne(value, ElementAt(pattern, i), fuzzyLevel)) {
                return true;
            }
        }
        return false;
    }
    return ContainsOne(value, pattern, fuzzyLevel);
}

}  // namespace localmapi
