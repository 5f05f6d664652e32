// The search and the functions on the system's own mapi32.dll, under Wine Wine's.
#include "mapi/MapiTypes.h"
#include "provider/ImportState.h"
#include "provider/MapiCopy.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

#include <cstring>

namespace {

class SystemMapi : public LoaderTest {};

TEST_F(SystemMapi, IsFoundInTheSystemFolderAndItsMemoryWorks) {
    LPVOID root = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(100, &root), S_OK);
    ASSERT_NE(root, nullptr);
    WCHAR path[MAX_PATH] = {};
    GetModuleFileNameW(hModMAPI, path, MAX_PATH);
    EXPECT_EQ(CStringW(path), Wide("C:\\windows\\system32\\mapi32.dll"));

    LPVOID more = nullptr;
    ASSERT_EQ(MAPIAllocateMore(5000, root, &more), S_OK);
    std::memset(root, 1, 100);
    std::memset(more, 2, 5000);
    EXPECT_EQ(static_cast<BYTE*>(root)[99], 1);
    EXPECT_EQ(MAPIFreeBuffer(root), 0U);
}

TEST_F(SystemMapi, PropertiesAndRestrictionsAreCopiedThroughIt) {
    WCHAR text[] = {'t', 'e', 'x', 't', 0};
    BYTE bytes[] = {1, 2, 3};
    SPropValue props[3] = {};
    props[0].ulPropTag = PROP_TAG(PT_LONG, 0x0017);
    props[0].Value.l = -7;
    props[1].ulPropTag = PROP_TAG(PT_UNICODE, 0x0037);
    props[1].Value.lpszW = text;
    props[2].ulPropTag = PROP_TAG(PT_BINARY, 0x0FFF);
    props[2].Value.bin = {3, bytes};

    LPSPropValue copy = nullptr;
    ASSERT_EQ(HrDupPropset(3, props, nullptr, &copy), S_OK);
    SRestriction condition = {};
    condition.rt = RES_CONTENT;
    condition.res.resContent = {FL_PREFIX, props[1].ulPropTag, &props[1]};
    LPSRestriction conditionCopy = nullptr;
    ASSERT_EQ(HrCopyRestriction(&condition, copy, &conditionCopy), S_OK);

    std::memset(text, 'x', sizeof(text) - sizeof(WCHAR));
    std::memset(bytes, 0, sizeof(bytes));
    EXPECT_EQ(copy[0].Value.l, -7);
    EXPECT_EQ(CStringW(copy[1].Value.lpszW), Wide("text"));
    ASSERT_EQ(copy[2].Value.bin.cb, 3U);
    EXPECT_EQ(copy[2].Value.bin.lpb[2], 3);
    EXPECT_EQ(CStringW(conditionCopy->res.resContent.lpProp->Value.lpszW), Wide("text"));
    EXPECT_EQ(MAPIFreeBuffer(copy), 0U);
}

}  // namespace
