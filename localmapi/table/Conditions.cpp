#include "localmapi/table/Conditions.h"

#include "localmapi/props/ValueTypes.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

#include <algorithm>
#include <span>

namespace localmapi {

namespace {

std::span<const SRestriction> Children(const SRestriction& restriction) noexcept {
    switch (restriction.rt) {
        case RES_AND: return {restriction.res.resAnd.lpRes, restriction.res.resAnd.cRes};
        case RES_OR: return {restriction.res.resOr.lpRes, restriction.res.resOr.cRes};
        case RES_NOT: return {restriction.res.resNot.lpRes, 1};
        case RES_SUBRESTRICTION: return {restriction.res.resSub.lpRes, 1};
        case RES_COUNT: return {restriction.res.resCount.lpRes, 1};
        case RES_COMMENT:
        case RES_ANNOTATION:
            return {restriction.res.resComment.lpRes, restriction.res.resComment.lpRes == nullptr ? 0U : 1U};
        default: return {};
    }
}

bool IsOrder(ULONG relop) noexcept {
    return relop <= RELOP_NE;
}

bool HasContent(ULONG tag) noexcept {
    return IsTextType(PROP_TYPE(tag)) || (PROP_TYPE(tag) & ~MV_FLAG) == PT_BINARY;
}

bool IsAnswered(const SRestriction& restriction) noexcept {
    switch (restriction.rt) {
        case RES_PROPERTY: return IsOrder(restriction.res.resProperty.relop);
        case RES_COMPAREPROPS: return IsOrder(restriction.res.resCompareProps.relop);
        case RES_SIZE: return IsOrder(restriction.res.resSize.relop);
        case RES_BITMASK: return restriction.res.resBitMask.relBMR <= BMR_NEZ;
        case RES_CONTENT: return HasContent(restriction.res.resContent.lpProp->ulPropTag);
        default: return true;
    }
}

// Whether all nodes satisfy `test`. The tree is no deeper than a copy may be.
template <class Test>
bool AllNodes(const SRestriction& restriction, Test test) {
    return test(restriction) && std::ranges::all_of(Children(restriction), [test](const SRestriction& child) {
               return AllNodes(child, test);
           });
}

// `value relop operand`; of several values any, unless the operand is several too.
bool AnyHolds(const SPropValue& value, ULONG relop, const SPropValue& operand) {
    if (!IsMultiple(value.ulPropTag) || IsMultiple(operand.ulPropTag)) {
        return Holds(value, relop, operand);
    }
    for (ULONG i = 0; i < ElementsOf(value).count; ++i) {
        if (Holds(ElementAt(value, i), relop, operand)) {
            return true;
        }
    }
    return false;
}

bool HasBits(const SPropValue& value, const SBitMaskRestriction& restriction) noexcept {
    ULONG bits = 0;
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_LONG: bits = value.Value.ul; break;
        case PT_I2: bits = static_cast<USHORT>(value.Value.i); break;
        case PT_BOOLEAN: bits = value.Value.b; break;
        default: return false;
    }
    return ((bits & restriction.ulMask) != 0) == (restriction.relBMR == BMR_NEZ);
}

}  // namespace

HRESULT OwnedRestriction::Assign(const SRestriction& restriction) {
    if (const HRESULT result = CopyRestriction(restriction, m_memory, m_root); FAILED(result)) {
        return result;
    }
    if (!AllNodes(m_root, IsAnswered)) {
        return MAPI_E_TOO_COMPLEX;
    }
    m_counts = !AllNodes(m_root, [](const SRestriction& node) { return node.rt != RES_COUNT; });
    return S_OK;
}

// ---- Matching -------------------------------------------------------------------------------------------------------

bool Matcher::Matches(RowNumber row) {
    m_memory.Clear();
    m_known.clear();
    return Holds(m_restriction, row);
}

Cell Matcher::Value(RowNumber row, ULONG tag) {
    const ULONG id = PROP_ID(tag);
    if (KeyColumn* const column = m_keys == nullptr ? nullptr : m_keys->Column(id)) {
        return column->At(row);
    }
    const auto known = std::ranges::find(m_known, id, &Known::id);
    return known != m_known.end() ? known->cell
                                  : m_known.emplace_back(Known{id, ReadCell(m_rows, row, id, m_memory)}).cell;
}

bool Matcher::Holds(const SRestriction& restriction, RowNumber row) {
    const auto holds = [this, row](const SRestriction& child) { return Holds(child, row); };
    switch (restriction.rt) {
        case RES_AND: return std::ranges::all_of(Children(restriction), holds);
        case RES_OR: return std::ranges::any_of(Children(restriction), holds);
        case RES_NOT: return !Holds(*restriction.res.resNot.lpRes, row);
        case RES_COMMENT:
        case RES_ANNOTATION: return std::ranges::all_of(Children(restriction), holds);
        case RES_SUBRESTRICTION: return HoldsWithin(restriction.res.resSub, row);
        case RES_COUNT: return HoldsForFirst(restriction.res.resCount, row);
        case RES_COMPAREPROPS: return CompareTwo(restriction.res.resCompareProps, row);
        case RES_SIZE: return CompareSize(restriction.res.resSize, row);
        case RES_EXIST: return Value(row, restriction.res.resExist.ulPropTag).state != Cell::State::Missing;
        default: break;
    }
    if (restriction.rt == RES_PROPERTY) {
        const SPropertyRestriction& property = restriction.res.resProperty;
        const Cell cell = Value(row, property.ulPropTag);
        return cell.state == Cell::State::There && AnyHolds(cell.value, property.relop, *property.lpProp);
    }
    if (restriction.rt == RES_CONTENT) {
        const SContentRestriction& content = restriction.res.resContent;
        const Cell cell = Value(row, content.ulPropTag);
        return cell.state == Cell::State::There && Contains(cell.value, *content.lpProp, content.ulFuzzyLevel);
    }
    const SBitMaskRestriction& bits = restriction.res.resBitMask;
    const Cell cell = Value(row, bits.ulPropTag);
    return cell.state == Cell::State::There && HasBits(cell.value, bits);
}

bool Matcher::HoldsWithin(const SSubRestriction& restriction, RowNumber row) {
    const auto within = m_rows.RowsWithin(row, restriction.ulSubObject);
    if (!within) {
        return false;
    }
    Matcher matcher(**within, nullptr, *restriction.lpRes);
    const std::size_t count = std::min<std::size_t>((*within)->Count(), UINT32_MAX);
    for (std::size_t i = 0; i < count; ++i) {
        if (matcher.Matches(static_cast<RowNumber>(i))) {
            return true;
        }
    }
    return false;
}

bool Matcher::HoldsForFirst(const SCountRestriction& restriction, RowNumber row) {
    ULONG& counted = m_counted[&restriction];
    if (counted >= restriction.ulCount || !Holds(*restriction.lpRes, row)) {
        return false;
    }
    ++counted;
    return true;
}

bool Matcher::CompareTwo(const SComparePropsRestriction& restriction, RowNumber row) {
    const Cell first = Value(row, restriction.ulPropTag1);
    const Cell second = Value(row, restriction.ulPropTag2);
    return first.state == Cell::State::There && second.state == Cell::State::There
           && AnyHolds(first.value, restriction.relop, second.value);
}

// Reads the value as it is stored: a text is as large as its own width makes it.
bool Matcher::CompareSize(const SSizeRestriction& restriction, RowNumber row) {
    SPropValue value{};
    std::uint64_t size = RowSource::kLargestCell + 1;
    if (const Status read = m_rows.Read(row, PROP_ID(restriction.ulPropTag), m_memory, value); read) {
        size = SizeOf(value);
    } else if (read.Failure().code != ErrorCode::TooLarge) {
        return false;
    }
    const std::uint64_t bound = restriction.cb;
    switch (restriction.relop) {
        case RELOP_LT: return size < bound;
        case RELOP_LE: return size <= bound;
        case RELOP_GT: return size > bound;
        case RELOP_GE: return size >= bound;
        case RELOP_EQ: return size == bound;
        default: return size != bound;
    }
}

// ---- Indexes --------------------------------------------------------------------------------------------------------

std::optional<std::vector<RowNumber>> IndexedRows(RowSource& rows, const SRestriction& restriction) {
    if (restriction.rt == RES_PROPERTY) {
        const SPropertyRestriction& property = restriction.res.resProperty;
        const ULONG id = PROP_ID(property.ulPropTag);
        if (property.relop != RELOP_EQ || PROP_TYPE(property.lpProp->ulPropTag) != PT_BINARY || !rows.IsIndexed(id)) {
            return std::nullopt;
        }
        std::vector<RowNumber> found;
        if (const auto row = rows.Find(id, BytesOf(property.lpProp->Value.bin)); row && *row < rows.Count()) {
            found.push_back(static_cast<RowNumber>(*row));
        }
        return found;
    }
    if (restriction.rt == RES_OR) {
        std::vector<RowNumber> all;
        for (const SRestriction& child : Children(restriction)) {
            const auto found = IndexedRows(rows, child);
            if (!found) {
                return std::nullopt;
            }
            all.insert(all.end(), found->begin(), found->end());
        }
        std::ranges::sort(all);
        all.erase(std::unique(all.begin(), all.end()), all.end());
        return all;
    }
    if (restriction.rt == RES_AND || restriction.rt == RES_COMMENT || restriction.rt == RES_ANNOTATION) {
        for (const SRestriction& child : Children(restriction)) {
            if (auto found = IndexedRows(rows, child)) {
                return found;
            }
        }
    }
    return std::nullopt;
}

}  // namespace localmapi
