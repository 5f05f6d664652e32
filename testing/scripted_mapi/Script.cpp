#include "testing/scripted_mapi/Script.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <utility>

namespace scripted_mapi {

namespace {

struct Blocks {
    std::map<void*, std::vector<void*>> roots;  // with what goes with each
    int misuses = 0;
};

Blocks& AllBlocks() {
    static Blocks blocks;
    return blocks;
}

}  // namespace

void Script::Fail(std::string_view prefix, HRESULT result) {
    On(prefix, [result] { return std::optional<HRESULT>(result); });
}

void Script::FailNth(int n, std::string_view prefix, HRESULT result) {
    On(prefix, [n, result]() mutable { return --n == 0 ? std::optional<HRESULT>(result) : std::nullopt; });
}

void Script::FailFirst(int count, std::string_view prefix, HRESULT result) {
    On(prefix, [count, result]() mutable { return count-- > 0 ? std::optional<HRESULT>(result) : std::nullopt; });
}

void Script::On(std::string_view prefix, Answer answer) {
    m_orders.push_back(std::make_shared<Order>(Order{std::string(prefix), std::move(answer)}));
}

std::vector<std::string> Script::TakeCalls() {
    return std::exchange(m_calls, {});
}

std::vector<std::string> Script::TakeCalls(std::initializer_list<std::string_view> prefixes) {
    std::vector<std::string> wanted;
    for (std::string& call : TakeCalls()) {
        if (std::any_of(prefixes.begin(), prefixes.end(), [&](auto prefix) { return call.starts_with(prefix); })) {
            wanted.push_back(std::move(call));
        }
    }
    return wanted;
}

int Script::Count(std::string_view prefix) const {
    return static_cast<int>(std::count_if(m_calls.begin(), m_calls.end(),
                                          [&](const std::string& call) { return call.starts_with(prefix); }));
}

std::optional<HRESULT> Script::Enter(std::string call) {
    if (m_quiet != 0) {
        return std::nullopt;
    }
    m_calls.push_back(call);
    const auto orders = m_orders;  // an answer may give new orders
    std::optional<HRESULT> first;
    for (const auto& order : orders) {
        if (call.starts_with(order->prefix)) {
            const std::optional<HRESULT> answer = order->answer();  // all are asked, since some count
            first = first ? first : answer;
        }
    }
    return first;
}

void* memory::Allocate(std::size_t bytes) {
    void* block = std::calloc(1, bytes == 0 ? 1 : bytes);
    AllBlocks().roots[block];
    return block;
}

void* memory::AllocateMore(std::size_t bytes, void* root) {
    const auto found = AllBlocks().roots.find(root);
    if (found == AllBlocks().roots.end()) {
        ++AllBlocks().misuses;
        return nullptr;
    }
    return found->second.emplace_back(std::calloc(1, bytes == 0 ? 1 : bytes));
}

void memory::Free(void* root) {
    const auto found = AllBlocks().roots.find(root);
    if (found == AllBlocks().roots.end()) {
        ++AllBlocks().misuses;
        return;
    }
    for (void* block : found->second) {
        std::free(block);
    }
    AllBlocks().roots.erase(found);
    std::free(root);
}

int memory::LiveBlocks() {
    return static_cast<int>(AllBlocks().roots.size());
}

int memory::Misuses() {
    return AllBlocks().misuses;
}

}  // namespace scripted_mapi
