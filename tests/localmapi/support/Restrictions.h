// Restrictions written as one expression. What they point at lives as long as the maker.
#pragma once

#include "localmapi/props/Values.h"
#include "mapi/MapiRestrictions.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>

namespace localmapi::testing {

class RestrictionMaker {
public:
    SPropValue Wide(std::string_view ascii, ULONG tag = PROP_TAG(PT_UNICODE, 0x3001)) {
        return WideValue(tag, CStringW(ascii.begin(), ascii.end()), m_arena);
    }
    SPropValue Narrow(std::string_view text, ULONG tag = PROP_TAG(PT_STRING8, 0x3001)) {
        return NarrowValue(tag, text, m_arena);
    }
    SPropValue Binary(std::string_view bytes, ULONG tag = PROP_TAG(PT_BINARY, 0x0FFF)) {
        return BinaryValue(tag, {reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()}, m_arena);
    }
    // Several wide texts.
    SPropValue Words(std::initializer_list<std::string_view> texts, ULONG tag = PROP_TAG(PT_MV_UNICODE, 0x8001)) {
        SPropValue value{};
        value.ulPropTag = tag;
        value.Value.MVszW = {static_cast<ULONG>(texts.size()), m_arena.Array<LPWSTR>(texts.size())};
        LPWSTR* next = value.Value.MVszW.lppszW;
        for (const std::string_view text : texts) {
            *next++ = Wide(text).Value.lpszW;
        }
        return value;
    }
    static SPropValue Time(std::uint64_t ticks, ULONG tag = PROP_TAG(PT_SYSTIME, 0x3008)) {
        SPropValue value{};
        value.ulPropTag = tag;
        value.Value.ft = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
        return value;
    }

    SRestriction And(std::initializer_list<SRestriction> children) { return Group(RES_AND, children); }
    SRestriction Or(std::initializer_list<SRestriction> children) { return Group(RES_OR, children); }
    SRestriction Not(const SRestriction& child) {
        SRestriction made = Of(RES_NOT);
        made.res.resNot.lpRes = Keep(child);
        return made;
    }
    SRestriction Property(ULONG relop, const SPropValue& value) { return Property(relop, value.ulPropTag, value); }
    SRestriction Property(ULONG relop, ULONG tag, const SPropValue& value) {
        SRestriction made = Of(RES_PROPERTY);
        made.res.resProperty = {relop, tag, Keep(value)};
        return made;
    }
    SRestriction Content(ULONG fuzzyLevel, const SPropValue& value) {
        SRestriction made = Of(RES_CONTENT);
        made.res.resContent = {fuzzyLevel, value.ulPropTag, Keep(value)};
        return made;
    }
    SRestriction Sub(ULONG object, const SRestriction& child) {
        SRestriction made = Of(RES_SUBRESTRICTION);
        made.res.resSub = {object, Keep(child)};
        return made;
    }
    SRestriction Count(ULONG count, const SRestriction& child) {
        SRestriction made = Of(RES_COUNT);
        made.res.resCount = {count, Keep(child)};
        return made;
    }
    SRestriction Comment(const SRestriction* child, const SPropValue& value, ULONG kind = RES_COMMENT) {
        SRestriction made = Of(kind);
        made.res.resComment = {1, child == nullptr ? nullptr : Keep(*child), Keep(value)};
        return made;
    }
    static SRestriction CompareProps(ULONG relop, ULONG first, ULONG second) {
        SRestriction made = Of(RES_COMPAREPROPS);
        made.res.resCompareProps = {relop, first, second};
        return made;
    }
    static SRestriction Bits(ULONG relation, ULONG tag, ULONG mask) {
        SRestriction made = Of(RES_BITMASK);
        made.res.resBitMask = {relation, tag, mask};
        return made;
    }
    static SRestriction Size(ULONG relop, ULONG tag, ULONG size) {
        SRestriction made = Of(RES_SIZE);
        made.res.resSize = {relop, tag, size};
        return made;
    }
    static SRestriction Exist(ULONG tag) {
        SRestriction made = Of(RES_EXIST);
        made.res.resExist = {0, tag, 0};
        return made;
    }

    Arena& Memory() noexcept { return m_arena; }

private:
    static SRestriction Of(ULONG kind) {
        SRestriction made{};
        made.rt = kind;
        return made;
    }
    SRestriction Group(ULONG kind, std::initializer_list<SRestriction> children) {
        SRestriction made = Of(kind);
        auto* const kept = m_arena.Array<SRestriction>(children.size());
        std::uninitialized_copy(children.begin(), children.end(), kept);
        made.res.resAnd = {static_cast<ULONG>(children.size()), kept};
        return made;
    }
    template <class T>
    T* Keep(const T& value) {
        return std::construct_at(m_arena.Array<T>(1), value);
    }

    Arena m_arena;
};

}  // namespace localmapi::testing
