#include "tests/provider/mapi/import/CopySamples.h"

#include "mapi/PropTags.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace {

std::string Bytes(const void* bytes, ULONG count) {
    return count == 0 || bytes == nullptr ? "-" : std::string(static_cast<const char*>(bytes), count);
}

std::string Children(const char* name, const SRestriction* nodes, ULONG count) {
    std::string text = name + std::string("(");
    for (ULONG i = 0; i < count; ++i) {
        text += Describe(nodes[i]) + " ";
    }
    return text + ")";
}

std::string Props(const SPropValue* props, ULONG count) {
    std::string text;
    for (ULONG i = 0; i < count; ++i) {
        text += Describe(props[i]) + ";";
    }
    return text;
}

std::string Describe(const ACTION& action) {
    std::ostringstream text;
    text << "[" << action.acttype << " " << action.ulActionFlavor << " " << action.ulFlags;
    if (action.lpRes != nullptr) {
        text << " if " << Describe(*action.lpRes);
    }
    for (ULONG i = 0; action.lpPropTagArray != nullptr && i < action.lpPropTagArray->cValues; ++i) {
        text << " tag " << action.lpPropTagArray->aulPropTag[i];
    }
    switch (action.acttype) {
        case OP_MOVE:
        case OP_COPY:
            text << " " << Bytes(action.actMoveCopy.lpStoreEntryId, action.actMoveCopy.cbStoreEntryId) << " "
                 << Bytes(action.actMoveCopy.lpFldEntryId, action.actMoveCopy.cbFldEntryId);
            break;
        case OP_REPLY:
        case OP_OOF_REPLY:
            text << " " << Bytes(action.actReply.lpEntryId, action.actReply.cbEntryId) << " "
                 << action.actReply.guidReplyTemplate.Data1;
            break;
        case OP_DEFER_ACTION: text << " " << Bytes(action.actDeferAction.pbData, action.actDeferAction.cbData); break;
        case OP_BOUNCE: text << " " << action.scBounceCode; break;
        case OP_FORWARD:
        case OP_DELEGATE:
            for (ULONG i = 0; i < action.lpadrlist->cEntries; ++i) {
                text << " to "
                     << Props(action.lpadrlist->aEntries[i].rgPropVals, action.lpadrlist->aEntries[i].cValues);
            }
            break;
        case OP_TAG: text << " " << Describe(action.propTag); break;
        default: break;
    }
    return text.str() + "]";
}

}  // namespace

std::string Describe(const SPropValue& prop) {
    std::ostringstream text;
    text << std::hex << prop.ulPropTag << "=" << std::dec;
    switch (PROP_TYPE(prop.ulPropTag)) {
        case PT_LONG: text << prop.Value.l; break;
        case PT_UNICODE:
            for (const WCHAR* unit = prop.Value.lpszW; *unit != 0; ++unit) {
                text << static_cast<char>(*unit);
            }
            break;
        case PT_RESTRICTION: text << Describe(*reinterpret_cast<LPSRestriction>(prop.Value.lpszA)); break;
        case PT_ACTIONS: text << Describe(*reinterpret_cast<LPACTIONS>(prop.Value.lpszA)); break;
        default: text << "?"; break;
    }
    return text.str();
}

std::string Describe(const SRestriction& node) {
    std::ostringstream text;
    const auto& res = node.res;
    switch (node.rt) {
        case RES_AND: return Children("and", res.resAnd.lpRes, res.resAnd.cRes);
        case RES_OR: return Children("or", res.resOr.lpRes, res.resOr.cRes);
        case RES_NOT: return Children("not", res.resNot.lpRes, 1);
        case RES_CONTENT:
            text << "content " << res.resContent.ulFuzzyLevel << " " << res.resContent.ulPropTag << " "
                 << Describe(*res.resContent.lpProp);
            break;
        case RES_PROPERTY:
            text << "property " << res.resProperty.relop << " " << res.resProperty.ulPropTag << " "
                 << Describe(*res.resProperty.lpProp);
            break;
        case RES_COMPAREPROPS:
            text << "compare " << res.resCompareProps.relop << " " << res.resCompareProps.ulPropTag1 << " "
                 << res.resCompareProps.ulPropTag2;
            break;
        case RES_BITMASK:
            text << "bits " << res.resBitMask.relBMR << " " << res.resBitMask.ulPropTag << " " << res.resBitMask.ulMask;
            break;
        case RES_SIZE:
            text << "size " << res.resSize.relop << " " << res.resSize.ulPropTag << " " << res.resSize.cb;
            break;
        case RES_EXIST: text << "exist " << res.resExist.ulPropTag; break;
        case RES_SUBRESTRICTION: text << res.resSub.ulSubObject << Children("sub", res.resSub.lpRes, 1); break;
        case RES_COMMENT:
        case RES_ANNOTATION:
            text << "comment " << node.rt << " " << Props(res.resComment.lpProp, res.resComment.cValues)
                 << (res.resComment.lpRes != nullptr ? Describe(*res.resComment.lpRes) : "none");
            break;
        case RES_COUNT: text << res.resCount.ulCount << Children("count", res.resCount.lpRes, 1); break;
        default: text << "unknown " << node.rt; break;
    }
    return text.str();
}

std::string Describe(const ACTIONS& actions) {
    std::string text = "version " + std::to_string(actions.ulVersion) + ":";
    for (ULONG i = 0; i < actions.cActions; ++i) {
        text += " " + Describe(actions.lpAction[i]);
    }
    return text;
}

LPSPropValue Samples::Long(LONG value) {
    auto* const prop = Make<SPropValue>();
    prop->ulPropTag = PR_IMPORTANCE;
    prop->Value.l = value;
    return prop;
}

LPSPropValue Samples::Text(const char* text) {
    auto* const prop = Make<SPropValue>();
    prop->ulPropTag = PR_SUBJECT_W;
    prop->Value.lpszW = Make<WCHAR>(std::strlen(text) + 1);
    for (std::size_t i = 0; text[i] != 0; ++i) {
        prop->Value.lpszW[i] = static_cast<WCHAR>(text[i]);
    }
    return prop;
}

LPENTRYID Samples::EntryId(const char* bytes) {
    char* const block = Make<char>(std::strlen(bytes) + 1);
    std::strcpy(block, bytes);
    return reinterpret_cast<LPENTRYID>(block);
}

LPSRestriction Samples::Array(std::vector<SRestriction> nodes) {
    LPSRestriction const block = Make<SRestriction>(nodes.size());
    std::copy(nodes.begin(), nodes.end(), block);
    return block;
}

LPSRestriction Samples::EveryRestriction() {
    const auto node = [](ULONG kind, auto member, const auto& value) {
        SRestriction made = {};
        made.rt = kind;
        made.res.*member = value;
        return made;
    };
    using Res = decltype(SRestriction::res);
    const auto exist = [&](ULONG tag) { return node(RES_EXIST, &Res::resExist, SExistRestriction{0, tag, 0}); };
    LPSPropValue const comments = Make<SPropValue>(2);
    comments[0] = *Text("remark");
    comments[1] = *Long(5);

    const LPSRestriction all = Array({
        node(RES_CONTENT, &Res::resContent, SContentRestriction{FL_PREFIX, PR_SUBJECT_W, Text("content")}),
        node(RES_PROPERTY, &Res::resProperty, SPropertyRestriction{RELOP_GE, PR_IMPORTANCE, Long(-2)}),
        node(RES_COMPAREPROPS, &Res::resCompareProps, SComparePropsRestriction{RELOP_LT, PR_START_DATE, PR_END_DATE}),
        node(RES_BITMASK, &Res::resBitMask, SBitMaskRestriction{BMR_NEZ, PR_MESSAGE_FLAGS, 3}),
        node(RES_SIZE, &Res::resSize, SSizeRestriction{RELOP_GT, PR_BODY_W, 4096}),
        exist(PR_ENTRYID),
        node(RES_SUBRESTRICTION, &Res::resSub, SSubRestriction{PR_MESSAGE_RECIPIENTS, Array({exist(PR_ADDRTYPE)})}),
        node(RES_COMMENT, &Res::resComment, SCommentRestriction{2, Array({exist(PR_BODY)}), comments}),
        node(RES_COMMENT, &Res::resComment, SCommentRestriction{1, nullptr, Text("alone")}),
        node(RES_ANNOTATION, &Res::resAnnotation, SAnnotationRestriction{1, Array({exist(PR_HTML)}), Long(6)}),
        node(RES_COUNT, &Res::resCount, SCountRestriction{7, Array({exist(PR_ROWID)})}),
        node(RES_AND, &Res::resAnd, SAndRestriction{0, nullptr}),
    });
    const LPSRestriction either = Array({node(RES_AND, &Res::resAnd, SAndRestriction{12, all}),
                                         node(RES_NOT, &Res::resNot, SNotRestriction{0, Array({exist(PR_DEPTH)})})});
    return Array({node(RES_OR, &Res::resOr, SOrRestriction{2, either})});
}

LPACTIONS Samples::EveryAction() {
    const auto action = [](ACTTYPE type) {
        ACTION made = {};
        made.acttype = type;
        made.ulActionFlavor = 10U + type;
        made.ulFlags = 20U + type;
        return made;
    };
    std::vector<ACTION> all;
    all.push_back(action(OP_MOVE));
    all.back().actMoveCopy = {5, EntryId("store"), 6, EntryId("folder")};
    all.back().lpRes = EveryRestriction();
    auto* const tags = reinterpret_cast<LPSPropTagArray>(Make<ULONG>(3));
    tags->cValues = 2;
    tags->aulPropTag[0] = PR_SUBJECT_W;
    reinterpret_cast<ULONG*>(tags)[2] = PR_BODY_W;
    all.back().lpPropTagArray = tags;
    all.push_back(action(OP_COPY));
    all.back().actMoveCopy = {0, nullptr, 1, EntryId("f")};
    for (const ACTTYPE reply : {OP_REPLY, OP_OOF_REPLY}) {
        all.push_back(action(reply));
        all.back().actReply = {8, EntryId("template"), {77, 0, 0, {}}};
    }
    all.push_back(action(OP_DEFER_ACTION));
    all.back().actDeferAction = {4, reinterpret_cast<BYTE*>(EntryId("data"))};
    all.push_back(action(OP_BOUNCE));
    all.back().scBounceCode = 0x26;
    for (const ACTTYPE sending : {OP_FORWARD, OP_DELEGATE}) {
        auto* const list = reinterpret_cast<LPADRLIST>(Make<std::max_align_t>(4));
        list->cEntries = 2;
        ADRENTRY* const entries = list->aEntries;
        entries[0] = {0, 1, Text("first")};
        entries[1] = {0, 1, Text("second")};
        all.push_back(action(sending));
        all.back().lpadrlist = list;
    }
    all.push_back(action(OP_TAG));
    all.back().propTag = *Text("tagged");
    all.push_back(action(OP_TAG));
    all.back().propTag.ulPropTag = PROP_TAG(PT_RESTRICTION, 0x6679);
    all.back().propTag.Value.lpszA = reinterpret_cast<LPSTR>(EveryRestriction());
    all.push_back(action(OP_DELETE));
    all.push_back(action(OP_MARK_AS_READ));

    auto* const actions = Make<ACTIONS>();
    actions->ulVersion = EDK_RULES_VERSION;
    actions->cActions = static_cast<UINT>(all.size());
    actions->lpAction = Make<ACTION>(all.size());
    std::copy(all.begin(), all.end(), actions->lpAction);
    return actions;
}

LPSRestriction Samples::Nested(std::size_t depth) {
    LPSRestriction const nodes = Make<SRestriction>(depth + 1);
    for (std::size_t i = 0; i < depth; ++i) {
        nodes[i].rt = RES_NOT;
        nodes[i].res.resNot.lpRes = nodes + i + 1;
    }
    nodes[depth].rt = RES_EXIST;
    return nodes;
}

void Samples::Scribble() {
    for (Block& block : m_blocks) {
        std::memset(static_cast<void*>(block.memory.get()), 0xCC, block.units * sizeof(std::max_align_t));
    }
}
