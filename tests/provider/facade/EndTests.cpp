// The end of an instance, which is the end of the process's log.
#include "mapi/MapiGuids.h"
#include "provider/Common/Log.h"
#include "provider/OutlookInstance.h"
#include "testing/scripted_mapi/ScriptedMapi.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using namespace scripted_mapi;

TEST(InstanceEnd, ReleasesEverythingAndSilencesTheLogUnlessThereIsNothingToRelease) {
    const LogCapture log;
    ScriptedMapi mapi;
    AddStore(*mapi.AddProfile("Work"), "Mail", {0x0A}, kPersonalFoldersStore);
    std::optional<COutlookInstance> instance(std::in_place);
    instance.reset();  // had no domain
    instance.emplace();
    ASSERT_EQ(instance->InitializeVxMapi(CStringW(), CStringW()), S_OK);
    ASSERT_EQ(instance->ReleaseVxMapi(), S_OK);
    EXPECT_FALSE(Vx::g_shuttingDown);
    ASSERT_EQ(instance->InitializeVxMapi(CStringW(), CStringW()), S_OK);
    VARIANT folders = {};
    CStringW profile = "Work"_w;
    ASSERT_EQ(instance->GetProfileFolders(profile.data(), &folders), S_OK);
    VariantClear(&folders);

    const std::size_t lines = log.Lines().size();
    EXPECT_GT(lines, 0U);
    instance.reset();
    EXPECT_EQ(mapi.Leaks(), "");
    EXPECT_EQ(mapi.initialized, 0);
    COutlookInstance another;
    EXPECT_EQ(another.GetSystemProfiles(&folders), E_FAIL);
    EXPECT_EQ(log.Lines().size(), lines);  // neither the end nor what comes after it
}

}  // namespace
