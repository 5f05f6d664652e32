// Conditions on rows, orders of rows, and the actions of rules: SRestriction, SSortOrderSet, ACTIONS.
//
// A restriction is a tree of nodes held together by pointers; whoever built it owns all of it, mostly as one chain of
// MAPI allocations under the root. A tree from elsewhere may be of any depth and must be walked with a limit.
#pragma once

#include "mapi/MapiTypes.h"

using LPSRestriction = SRestriction*;

// ---- Kinds and operators --------------------------------------------------------------------------------------------

inline constexpr ULONG RES_AND = 0x0;
inline constexpr ULONG RES_OR = 0x1;
inline constexpr ULONG RES_NOT = 0x2;
inline constexpr ULONG RES_CONTENT = 0x3;
inline constexpr ULONG RES_PROPERTY = 0x4;
inline constexpr ULONG RES_COMPAREPROPS = 0x5;
inline constexpr ULONG RES_BITMASK = 0x6;
inline constexpr ULONG RES_SIZE = 0x7;
inline constexpr ULONG RES_EXIST = 0x8;
inline constexpr ULONG RES_SUBRESTRICTION = 0x9;
inline constexpr ULONG RES_COMMENT = 0xA;
inline constexpr ULONG RES_COUNT = 0xB;
inline constexpr ULONG RES_ANNOTATION = 0xC;

// Comparison of a property with a value, or with another property.
inline constexpr ULONG RELOP_LT = 0;
inline constexpr ULONG RELOP_LE = 1;
inline constexpr ULONG RELOP_GT = 2;
inline constexpr ULONG RELOP_GE = 3;
inline constexpr ULONG RELOP_EQ = 4;
inline constexpr ULONG RELOP_NE = 5;
inline constexpr ULONG RELOP_RE = 6;               // like a pattern
inline constexpr ULONG RELOP_MEMBER_OF_DL = 0x64;  // sender or recipient is in a distribution list

// Bits all clear, or some set.
inline constexpr ULONG BMR_EQZ = 0;
inline constexpr ULONG BMR_NEZ = 1;

// How much of a text has to match (the low half), and what does not count (the high half).
inline constexpr ULONG FL_FULLSTRING = 0x00000;
inline constexpr ULONG FL_SUBSTRING = 0x00001;
inline constexpr ULONG FL_PREFIX = 0x00002;
inline constexpr ULONG FL_IGNORECASE = 0x10000;
inline constexpr ULONG FL_IGNORENONSPACE = 0x20000;
inline constexpr ULONG FL_LOOSE = 0x40000;

// ---- Nodes ----------------------------------------------------------------------------------------------------------

struct SAndRestriction {
    ULONG cRes;
    LPSRestriction lpRes;  // an array of cRes nodes
};
static_assert(sizeof(SAndRestriction) == 16 && offsetof(SAndRestriction, lpRes) == 8);

struct SOrRestriction {
    ULONG cRes;
    LPSRestriction lpRes;  // an array of cRes nodes
};
static_assert(sizeof(SOrRestriction) == 16 && offsetof(SOrRestriction, lpRes) == 8);

struct SNotRestriction {
    ULONG ulReserved;
    LPSRestriction lpRes;
};
static_assert(sizeof(SNotRestriction) == 16 && offsetof(SNotRestriction, lpRes) == 8);

struct SContentRestriction {
    ULONG ulFuzzyLevel;  // FL_*
    ULONG ulPropTag;
    LPSPropValue lpProp;
};
static_assert(sizeof(SContentRestriction) == 16 && offsetof(SContentRestriction, ulPropTag) == 4);
static_assert(offsetof(SContentRestriction, lpProp) == 8);

struct SPropertyRestriction {
    ULONG relop;
    ULONG ulPropTag;
    LPSPropValue lpProp;
};
static_assert(sizeof(SPropertyRestriction) == 16 && offsetof(SPropertyRestriction, ulPropTag) == 4);
static_assert(offsetof(SPropertyRestriction, lpProp) == 8);

struct SComparePropsRestriction {
    ULONG relop;
    ULONG ulPropTag1;
    ULONG ulPropTag2;
};
static_assert(sizeof(SComparePropsRestriction) == 12 && offsetof(SComparePropsRestriction, ulPropTag2) == 8);

struct SBitMaskRestriction {
    ULONG relBMR;
    ULONG ulPropTag;
    ULONG ulMask;
};
static_assert(sizeof(SBitMaskRestriction) == 12 && offsetof(SBitMaskRestriction, ulMask) == 8);

struct SSizeRestriction {
    ULONG relop;
    ULONG ulPropTag;
    ULONG cb;
};
static_assert(sizeof(SSizeRestriction) == 12 && offsetof(SSizeRestriction, cb) == 8);

struct SExistRestriction {
    ULONG ulReserved1;
    ULONG ulPropTag;
    ULONG ulReserved2;
};
static_assert(sizeof(SExistRestriction) == 12 && offsetof(SExistRestriction, ulPropTag) == 4);

// A condition on the recipients or attachments of a message: some row of them has to satisfy it.
struct SSubRestriction {
    ULONG ulSubObject;  // PR_MESSAGE_RECIPIENTS or PR_MESSAGE_ATTACHMENTS
    LPSRestriction lpRes;
};
static_assert(sizeof(SSubRestriction) == 16 && offsetof(SSubRestriction, lpRes) == 8);

// A condition with properties attached that do not take part in it.
struct SCommentRestriction {
    ULONG cValues;
    LPSRestriction lpRes;  // may be null
    LPSPropValue lpProp;   // an array of cValues
};
static_assert(sizeof(SCommentRestriction) == 24 && offsetof(SCommentRestriction, lpRes) == 8);
static_assert(offsetof(SCommentRestriction, lpProp) == 16);

using SAnnotationRestriction = SCommentRestriction;

// Satisfied by the first ulCount rows that satisfy lpRes.
struct SCountRestriction {
    ULONG ulCount;
    LPSRestriction lpRes;
};
static_assert(sizeof(SCountRestriction) == 16 && offsetof(SCountRestriction, lpRes) == 8);

struct SRestriction {
    ULONG rt;  // RES_*, which says which member of res holds
    union {
        SComparePropsRestriction resCompareProps;
        SAndRestriction resAnd;
        SOrRestriction resOr;
        SNotRestriction resNot;
        SContentRestriction resContent;
        SPropertyRestriction resProperty;
        SBitMaskRestriction resBitMask;
        SSizeRestriction resSize;
        SExistRestriction resExist;
        SSubRestriction resSub;
        SCommentRestriction resComment;
        SAnnotationRestriction resAnnotation;
        SCountRestriction resCount;
    } res;
};
static_assert(sizeof(SRestriction) == 32 && alignof(SRestriction) == 8 && offsetof(SRestriction, res) == 8);

// ---- Sort orders ----------------------------------------------------------------------------------------------------

inline constexpr ULONG TABLE_SORT_ASCEND = 0;
inline constexpr ULONG TABLE_SORT_DESCEND = 1;
inline constexpr ULONG TABLE_SORT_COMBINE = 2;
inline constexpr ULONG TABLE_SORT_CATEG_MAX = 4;
inline constexpr ULONG TABLE_SORT_CATEG_MIN = 8;

struct SSortOrder {
    ULONG ulPropTag;
    ULONG ulOrder;  // TABLE_SORT_*
};
using LPSSortOrder = SSortOrder*;
static_assert(sizeof(SSortOrder) == 8 && offsetof(SSortOrder, ulOrder) == 4);

// The first cCategories columns group the rows, cExpanded of them open; the others sort within a group.
struct SSortOrderSet {
    ULONG cSorts;
    ULONG cCategories;
    ULONG cExpanded;
    SSortOrder aSort[MAPI_DIM];
};
using LPSSortOrderSet = SSortOrderSet*;
static_assert(sizeof(SSortOrderSet) == 20 && alignof(SSortOrderSet) == 4 && offsetof(SSortOrderSet, aSort) == 12);

constexpr std::size_t CbNewSSortOrderSet(std::size_t sorts) noexcept {
    return offsetof(SSortOrderSet, aSort) + sorts * sizeof(SSortOrder);
}

// A sort order with room for N columns.
template <ULONG N>
struct SizedSSortOrderSet {
    ULONG cSorts = N;
    ULONG cCategories = 0;
    ULONG cExpanded = 0;
    SSortOrder aSort[N];

    // The form that MAPI's methods take. They never write through it, though they ask for a pointer to non-const.
    // NOLINTNEXTLINE(google-explicit-constructor): handed to a method as an array would be.
    operator LPSSortOrderSet() const noexcept {
        return reinterpret_cast<LPSSortOrderSet>(const_cast<SizedSSortOrderSet*>(this));
    }
};
static_assert(sizeof(SizedSSortOrderSet<2>) == CbNewSSortOrderSet(2));

// ---- Actions of rules: values of PT_ACTIONS -------------------------------------------------------------------------

// What a rule does with a message, [MS-OXORULE] 2.2.5.1.
enum ACTTYPE : ULONG {
    OP_MOVE = 1,
    OP_COPY,
    OP_REPLY,
    OP_OOF_REPLY,
    OP_DEFER_ACTION,
    OP_BOUNCE,
    OP_FORWARD,
    OP_DELEGATE,
    OP_TAG,
    OP_DELETE,
    OP_MARK_AS_READ,
};

inline constexpr ULONG EDK_RULES_VERSION = 1;

struct ACTION {
    struct MoveCopy {
        ULONG cbStoreEntryId;
        LPENTRYID lpStoreEntryId;
        ULONG cbFldEntryId;
        LPENTRYID lpFldEntryId;
    };
    struct Reply {
        ULONG cbEntryId;
        LPENTRYID lpEntryId;
        GUID guidReplyTemplate;
    };
    struct DeferAction {
        ULONG cbData;
        BYTE* pbData;
    };

    ACTTYPE acttype;  // which member below holds
    ULONG ulActionFlavor;
    LPSRestriction lpRes;            // unused by published clients, which leave it null
    LPSPropTagArray lpPropTagArray;  // likewise
    ULONG ulFlags;
    ULONG dwAlignPad;
    __extension__ union {
        MoveCopy actMoveCopy;        // OP_MOVE, OP_COPY
        Reply actReply;              // OP_REPLY, OP_OOF_REPLY
        DeferAction actDeferAction;  // OP_DEFER_ACTION
        SCODE scBounceCode;          // OP_BOUNCE
        LPADRLIST lpadrlist;         // OP_FORWARD, OP_DELEGATE
        SPropValue propTag;          // OP_TAG
    };
};
using LPACTION = ACTION*;
static_assert(sizeof(ACTION) == 64 && offsetof(ACTION, lpRes) == 8 && offsetof(ACTION, ulFlags) == 24);
static_assert(offsetof(ACTION, actMoveCopy) == 32 && offsetof(ACTION, propTag) == 32);

struct ACTIONS {
    ULONG ulVersion;  // EDK_RULES_VERSION
    UINT cActions;
    LPACTION lpAction;  // an array of cActions
};
using LPACTIONS = ACTIONS*;
static_assert(sizeof(ACTIONS) == 16 && offsetof(ACTIONS, lpAction) == 8);
