#include "tests/localmapi/support/ValueText.h"

#include "platform/WideText.h"

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace localmapi::testing {

namespace {

std::string Hex(std::uint64_t number, int digits) {
    char text[20];
    std::snprintf(text, sizeof(text), "%0*llX", digits, static_cast<unsigned long long>(number));
    return text;
}

std::string Narrow(WideView text) {
    std::string narrow;
    for (const WCHAR unit : text) {
        narrow += unit < 0x7F ? std::string(1, static_cast<char>(unit)) : "<" + Hex(unit, 4) + ">";
    }
    return narrow;
}

std::string BytesText(const SBinary& binary) {
    std::string text = "x";
    for (ULONG i = 0; i < binary.cb; ++i) {
        text += Hex(binary.lpb[i], 2);
    }
    return text;
}

std::string TimeText(const FILETIME& time) {
    return "t" + std::to_string(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime);
}

template <class Element, class Text>
std::string Several(ULONG count, const Element* elements, Text&& text) {
    std::string all = "[";
    for (ULONG i = 0; i < count; ++i) {
        all += (i > 0 ? "," : "") + text(elements[i]);
    }
    return all + "]";
}

std::string Number(auto number) {
    return std::to_string(number);
}

std::string Real(double number) {
    char text[40];
    std::snprintf(text, sizeof(text), "%g", number);
    return text;
}

std::string ActionText(const ACTION& action) {
    std::string text = "action " + std::to_string(action.acttype);
    if (action.lpRes != nullptr) {
        text += " " + TextOf(*action.lpRes);
    }
    if (action.lpPropTagArray != nullptr) {
        text += " tag " + Hex(action.lpPropTagArray->aulPropTag[0], 8);
    }
    switch (action.acttype) {
        case OP_MOVE:
        case OP_COPY:
            return text + " "
                   + BytesText(
                       {action.actMoveCopy.cbStoreEntryId, reinterpret_cast<LPBYTE>(action.actMoveCopy.lpStoreEntryId)})
                   + " "
                   + BytesText(
                       {action.actMoveCopy.cbFldEntryId, reinterpret_cast<LPBYTE>(action.actMoveCopy.lpFldEntryId)});
        case OP_REPLY:
        case OP_OOF_REPLY:
            return text + " "
                   + BytesText({action.actReply.cbEntryId, reinterpret_cast<LPBYTE>(action.actReply.lpEntryId)});
        case OP_DEFER_ACTION:
            return text + " " + BytesText({action.actDeferAction.cbData, action.actDeferAction.pbData});
        case OP_FORWARD:
        case OP_DELEGATE:
            for (ULONG i = 0; i < action.lpadrlist->cEntries; ++i) {
                const ADRENTRY& entry = action.lpadrlist->aEntries[i];
                text += " {" + TextOf(std::span<const SPropValue>(entry.rgPropVals, entry.cValues)) + "}";
            }
            return text;
        case OP_TAG: return text + " " + TextOf(action.propTag);
        default: return text;
    }
}

std::string ActionsText(const ACTIONS& actions) {
    std::string text;
    for (UINT i = 0; i < actions.cActions; ++i) {
        text += (i > 0 ? "; " : "") + ActionText(actions.lpAction[i]);
    }
    return text;
}

std::string ChildrenText(const char* name, ULONG count, const SRestriction* children) {
    std::string text = std::string(name) + "(";
    for (ULONG i = 0; i < count; ++i) {
        text += (i > 0 ? "," : "") + TextOf(children[i]);
    }
    return text + ")";
}

std::string Comparison(const char* name, ULONG first, ULONG tag, const std::string& last) {
    return std::string(name) + "(" + Hex(first, 1) + "," + Hex(tag, 8) + "," + last + ")";
}

}  // namespace

std::string TextOf(const SPropValue& value) {
    const SPropValue::Contents& v = value.Value;
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_NULL: return "null";
        case PT_OBJECT: return "object";
        case PT_I2: return Number(v.i) + ":I2";
        case PT_LONG: return Number(v.l);
        case PT_R4: return Real(v.flt) + ":R4";
        case PT_DOUBLE: return Real(v.dbl) + ":R8";
        case PT_CURRENCY: return Number(v.cur.int64) + ":CY";
        case PT_APPTIME: return Real(v.at) + ":AT";
        case PT_ERROR: return "!" + Hex(static_cast<std::uint8_t>(v.err), 2);
        case PT_BOOLEAN: return v.b != 0 ? "true" : "false";
        case PT_I8: return Number(v.li.QuadPart) + ":I8";
        case PT_STRING8: return "a'" + std::string(v.lpszA) + "'";
        case PT_UNICODE: return "w'" + Narrow(v.lpszW) + "'";
        case PT_SYSTIME: return TimeText(v.ft);
        case PT_CLSID: return "g" + Hex(v.lpguid->Data1, 8);
        case PT_SVREID:
        case PT_BINARY: return BytesText(v.bin);
        case PT_SRESTRICTION: return TextOf(*reinterpret_cast<const SRestriction*>(v.lpszA));
        case PT_ACTIONS: return ActionsText(*reinterpret_cast<const ACTIONS*>(v.lpszA));
        case PT_MV_I2: return Several(v.MVi.cValues, v.MVi.lpi, Number<SHORT>) + ":I2";
        case PT_MV_LONG: return Several(v.MVl.cValues, v.MVl.lpl, Number<LONG>);
        case PT_MV_R4: return Several(v.MVflt.cValues, v.MVflt.lpflt, Real) + ":R4";
        case PT_MV_DOUBLE: return Several(v.MVdbl.cValues, v.MVdbl.lpdbl, Real) + ":R8";
        case PT_MV_CURRENCY:
            return Several(v.MVcur.cValues, v.MVcur.lpcur, [](const CURRENCY& c) { return Number(c.int64); }) + ":CY";
        case PT_MV_APPTIME: return Several(v.MVat.cValues, v.MVat.lpat, Real) + ":AT";
        case PT_MV_I8:
            return Several(v.MVli.cValues, v.MVli.lpli, [](const LARGE_INTEGER& l) { return Number(l.QuadPart); })
                   + ":I8";
        case PT_MV_SYSTIME: return Several(v.MVft.cValues, v.MVft.lpft, TimeText);
        case PT_MV_CLSID:
            return Several(v.MVguid.cValues, v.MVguid.lpguid, [](const GUID& g) { return "g" + Hex(g.Data1, 8); });
        case PT_MV_STRING8:
            return Several(v.MVszA.cValues, v.MVszA.lppszA, [](LPCSTR s) { return "a'" + std::string(s) + "'"; });
        case PT_MV_UNICODE:
            return Several(v.MVszW.cValues, v.MVszW.lppszW, [](LPCWSTR s) { return "w'" + Narrow(s) + "'"; });
        case PT_MV_BINARY: return Several(v.MVbin.cValues, v.MVbin.lpbin, BytesText);
        default: return "type " + Hex(PROP_TYPE(value.ulPropTag), 4);
    }
}

std::string TextOf(std::span<const SPropValue> values) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        text += (i > 0 ? "|" : "") + TextOf(values[i]);
    }
    return text;
}

std::string TextOf(const SRow& row) {
    return TextOf(std::span<const SPropValue>(row.lpProps, row.cValues));
}

std::string TextOf(const SRestriction& r) {
    switch (r.rt) {
        case RES_AND: return ChildrenText("and", r.res.resAnd.cRes, r.res.resAnd.lpRes);
        case RES_OR: return ChildrenText("or", r.res.resOr.cRes, r.res.resOr.lpRes);
        case RES_NOT: return ChildrenText("not", 1, r.res.resNot.lpRes);
        case RES_CONTENT:
            return Comparison("content", r.res.resContent.ulFuzzyLevel, r.res.resContent.ulPropTag,
                              TextOf(*r.res.resContent.lpProp));
        case RES_PROPERTY:
            return Comparison("prop", r.res.resProperty.relop, r.res.resProperty.ulPropTag,
                              TextOf(*r.res.resProperty.lpProp));
        case RES_COMPAREPROPS:
            return Comparison("compare", r.res.resCompareProps.relop, r.res.resCompareProps.ulPropTag1,
                              Hex(r.res.resCompareProps.ulPropTag2, 8));
        case RES_BITMASK:
            return Comparison("bits", r.res.resBitMask.relBMR, r.res.resBitMask.ulPropTag,
                              Hex(r.res.resBitMask.ulMask, 1));
        case RES_SIZE:
            return Comparison("size", r.res.resSize.relop, r.res.resSize.ulPropTag, std::to_string(r.res.resSize.cb));
        case RES_EXIST: return "exist(" + Hex(r.res.resExist.ulPropTag, 8) + ")";
        case RES_SUBRESTRICTION:
            return "sub(" + Hex(r.res.resSub.ulSubObject, 8) + "," + TextOf(*r.res.resSub.lpRes) + ")";
        case RES_COUNT:
            return "count(" + std::to_string(r.res.resCount.ulCount) + "," + TextOf(*r.res.resCount.lpRes) + ")";
        case RES_COMMENT:
        case RES_ANNOTATION: {
            const SCommentRestriction& comment = r.res.resComment;
            const std::string values = TextOf(std::span<const SPropValue>(comment.lpProp, comment.cValues));
            return "comment(" + values + "," + (comment.lpRes == nullptr ? "-" : TextOf(*comment.lpRes)) + ")";
        }
        default: return "kind " + std::to_string(r.rt);
    }
}

}  // namespace localmapi::testing
