// A MAPI of the tests' own, in memory. Linked into a test program it takes the place of the provider's loader: it
// defines the functions of provider/ImportProcs.h, and serves what a test has put into its model, with real reference
// counts and real allocations. Link the target vx_scripted_mapi to the program itself.
//
//     ScriptedMapi mapi;
//     auto profile = mapi.AddProfile("Work");
//     auto store = AddStore(*profile, "Mailbox", {0x01}, kPersonalFoldersStore);
//     AddFolder(*store->root, "Inbox", "IPF.Note", {0xF1});
//     mapi.script.FailNth(2, "IMAPITable::QueryRows", MAPI_E_CALL_FAILED);
//     ...
//     EXPECT_EQ(mapi.Leaks(), "");
#pragma once

#include "mapi/MapiFunctions.h"
#include "platform/Storage.h"
#include "testing/scripted_mapi/Model.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace scripted_mapi {

// One at a time. Without one the functions answer as a MAPI that is not there: E_FAIL.
class ScriptedMapi {
public:
    ScriptedMapi();
    ~ScriptedMapi();
    ScriptedMapi(const ScriptedMapi&) = delete;
    ScriptedMapi& operator=(const ScriptedMapi&) = delete;

private:
    std::shared_ptr<Context> m_context;

public:
    Script& script;
    Names& names;
    std::vector<std::shared_ptr<ProfileModel>>& profiles;

    // A profile; the first one is the default.
    std::shared_ptr<ProfileModel> AddProfile(std::string_view name);

    // An open message of the model, for tests that need no store. The caller releases it.
    IMessage* OpenMessage(const std::shared_ptr<MessageModel>& model);

    // What has been given out since the construction and not come back, in words; empty when there is none. Blocks
    // freed twice, or that were never given out, are told, too.
    std::string Leaks() const;

    // What the functions do that are no matter of profiles; E_NOTIMPL unless set.
    std::function<HRESULT(IStorage* storage, ULONG flags, IMessage** message)> openMessageOnStorage;
    std::function<Bytes(Bytes compressed)> uncompressRtf = [](Bytes bytes) { return bytes; };

    // MAPIInitialize calls that no MAPIUninitialize has answered yet.
    int initialized = 0;

    // For the functions.
    const std::shared_ptr<Context>& GetContext() const { return m_context; }

private:
    int m_blocksBefore;
    int m_misusesBefore;
};

}  // namespace scripted_mapi
