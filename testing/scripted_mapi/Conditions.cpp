#include "testing/scripted_mapi/Conditions.h"

#include <algorithm>
#include <span>

namespace scripted_mapi {

namespace {

template <typename Character>
std::basic_string<Character> Lower(std::basic_string<Character> text) {
    std::transform(text.begin(), text.end(), text.begin(), [](Character unit) {
        return unit >= 'A' && unit <= 'Z' ? static_cast<Character>(unit + ('a' - 'A')) : unit;
    });
    return text;
}

template <typename T>
int Order(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

struct CompareData {
    template <typename T, typename U>
    int operator()(const T&, const U&) const {
        return 0;  // kinds differ; told apart before
    }
    int operator()(LONG a, LONG b) const { return Order(a, b); }
    int operator()(LONGLONG a, LONGLONG b) const { return Order(a, b); }
    int operator()(double a, double b) const { return Order(a, b); }
    int operator()(const std::string& a, const std::string& b) const { return Order(Lower(a), Lower(b)); }
    int operator()(const CStringW& a, const CStringW& b) const { return Order(Lower(a), Lower(b)); }
    int operator()(const Bytes& a, const Bytes& b) const { return Order(a, b); }
};

bool IsMissing(const Value& value) {
    return PROP_TYPE(value.tag) == PT_ERROR;
}

bool Holds(ULONG relop, int comparison) {
    switch (relop) {
        case RELOP_LT: return comparison < 0;
        case RELOP_LE: return comparison <= 0;
        case RELOP_GT: return comparison > 0;
        case RELOP_GE: return comparison >= 0;
        case RELOP_EQ: return comparison == 0;
        case RELOP_NE: return comparison != 0;
        default: return false;
    }
}

// Bytes and text in the same way: whole, at the beginning, or anywhere.
template <typename Sequence>
bool Contains(const Sequence& held, const Sequence& wanted, ULONG level) {
    switch (level & 0xFFFF) {
        case FL_FULLSTRING: return held == wanted;
        case FL_PREFIX: return held.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), held.begin());
        default: return std::search(held.begin(), held.end(), wanted.begin(), wanted.end()) != held.end();
    }
}

bool HasContent(const Bag& bag, const SContentRestriction& condition) {
    const Value held = bag.Read(condition.ulPropTag);
    const Value wanted = CopyOf(*condition.lpProp);
    if (IsMissing(held) || held.data.index() != wanted.data.index()) {
        return false;
    }
    const bool ignoreCase = (condition.ulFuzzyLevel & (FL_IGNORECASE | FL_LOOSE)) != 0;
    if (const auto* bytes = std::get_if<Bytes>(&held.data)) {
        return Contains(*bytes, std::get<Bytes>(wanted.data), condition.ulFuzzyLevel);
    }
    if (const auto* text = std::get_if<CStringW>(&held.data)) {
        const auto& other = std::get<CStringW>(wanted.data);
        return ignoreCase ? Contains(Lower(*text), Lower(other), condition.ulFuzzyLevel)
                          : Contains(*text, other, condition.ulFuzzyLevel);
    }
    if (const auto* text = std::get_if<std::string>(&held.data)) {
        const auto& other = std::get<std::string>(wanted.data);
        return ignoreCase ? Contains(Lower(*text), Lower(other), condition.ulFuzzyLevel)
                          : Contains(*text, other, condition.ulFuzzyLevel);
    }
    return false;
}

bool HasProperty(const Bag& bag, const SPropertyRestriction& condition) {
    const Value held = bag.Read(condition.ulPropTag);
    return !IsMissing(held) && Holds(condition.relop, CompareValues(held, CopyOf(*condition.lpProp)));
}

bool HasBits(const Bag& bag, const SBitMaskRestriction& condition) {
    const Value held = bag.Read(condition.ulPropTag);
    const auto* number = std::get_if<LONG>(&held.data);
    const bool anySet = number != nullptr && (static_cast<ULONG>(*number) & condition.ulMask) != 0;
    return !IsMissing(held) && anySet == (condition.relBMR == BMR_NEZ);
}

}  // namespace

int CompareValues(const Value& a, const Value& b) {
    if (IsMissing(a) || IsMissing(b) || a.data.index() != b.data.index()) {
        return Order(!IsMissing(a), !IsMissing(b));
    }
    return std::visit(CompareData{}, a.data, b.data);
}

bool Satisfies(const Bag& bag, const SRestriction* restriction) {
    if (restriction == nullptr) {
        return true;
    }
    const auto satisfies = [&](const SRestriction& one) { return Satisfies(bag, &one); };
    const auto& res = restriction->res;
    switch (restriction->rt) {
        case RES_AND: {
            const std::span children(res.resAnd.lpRes, res.resAnd.cRes);
            return std::all_of(children.begin(), children.end(), satisfies);
        }
        case RES_OR: {
            const std::span children(res.resOr.lpRes, res.resOr.cRes);
            return std::any_of(children.begin(), children.end(), satisfies);
        }
        case RES_NOT: return !satisfies(*res.resNot.lpRes);
        case RES_CONTENT: return HasContent(bag, res.resContent);
        case RES_PROPERTY: return HasProperty(bag, res.resProperty);
        case RES_EXIST: return !IsMissing(bag.Read(res.resExist.ulPropTag));
        case RES_BITMASK: return HasBits(bag, res.resBitMask);
        default: return false;
    }
}

}  // namespace scripted_mapi
