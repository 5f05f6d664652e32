// What a scripted MAPI does beside its work: it writes down each call that it gets, answers some of them as a test has
// ordered instead of doing them, and counts what it has given out.
//
// A call is one text, "Interface::Method(arguments)", or "Function(arguments)":
//
//     IMAPITable::QueryRows(30,00000000)        numbers decimal, flags as eight hexadecimal digits
//     IMsgStore::OpenEntry(0A0B,IMAPIFolder,00000010)    entry ids and other bytes as hexadecimal text
//     HrGetOneProp(35E00102)                    tags as eight hexadecimal digits
//
// One thread.
#pragma once

#include "platform/BaseTypes.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scripted_mapi {

class Script {
public:
    // What a call answers instead of being done; nothing lets it be done. Outputs of a call that is not done stay as
    // they are. May throw, as a foreign library may.
    using Answer = std::function<std::optional<HRESULT>()>;

    // ---- Orders. Each is about the calls whose text begins with `prefix`; the first order that answers counts. ----

    // Every such call from now on gives `result`.
    void Fail(std::string_view prefix, HRESULT result);

    // Only the n-th such call from now on, counted from 1.
    void FailNth(int n, std::string_view prefix, HRESULT result);

    // The first `count` such calls from now on, as a busy server does.
    void FailFirst(int count, std::string_view prefix, HRESULT result);

    // Asks `answer` at each such call.
    void On(std::string_view prefix, Answer answer);

    // Takes all orders back.
    void ForgetOrders() { m_orders.clear(); }

    // ---- What was called ----

    const std::vector<std::string>& Calls() const { return m_calls; }

    // The calls since the last time this was asked.
    std::vector<std::string> TakeCalls();

    // The same, only those that begin with one of the prefixes.
    std::vector<std::string> TakeCalls(std::initializer_list<std::string_view> prefixes);

    // How often such a call came, of those not taken yet.
    int Count(std::string_view prefix) const;

    // ---- For the scripted objects ----

    // Notes a call; what it is to answer, if it is not to be done.
    std::optional<HRESULT> Enter(std::string call);

    // Between these, calls are neither noted nor answered: they are steps of another call.
    void BeginQuiet() { ++m_quiet; }
    void EndQuiet() { --m_quiet; }

    // Objects that are not released yet.
    int LiveObjects() const { return m_liveObjects; }
    void ObjectBegins() { ++m_liveObjects; }
    void ObjectEnds() { --m_liveObjects; }

private:
    struct Order {
        std::string prefix;
        Answer answer;
    };

    std::vector<std::string> m_calls;
    std::vector<std::shared_ptr<Order>> m_orders;
    int m_liveObjects = 0;
    int m_quiet = 0;
};

class QuietScope {
public:
    explicit QuietScope(Script& script) : m_script(script) { m_script.BeginQuiet(); }
    ~QuietScope() { m_script.EndQuiet(); }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

private:
    Script& m_script;
};

// MAPI's memory, of the whole program: blocks, and blocks that go with another.
namespace memory {

void* Allocate(std::size_t bytes);
void* AllocateMore(std::size_t bytes, void* root);
void Free(void* root);

// Root blocks that are not freed.
int LiveBlocks();

// How often something was freed that is no root block, or no more.
int Misuses();

}  // namespace memory

}  // namespace scripted_mapi
