#include "platform/linux/storage/Node.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vx_storage {
namespace {

struct NoOrder {
    bool operator()(const CStringW&, const CStringW&) const noexcept { return false; }
};

}  // namespace

bool Scope::Ended() const noexcept {
    for (const Scope* scope = this; scope != nullptr; scope = scope->m_parent.get()) {
        if (scope->m_ended) {
            return true;
        }
    }
    return false;
}

bool Scope::IsUnder(const Scope* other) const noexcept {
    for (const Scope* scope = this; scope != nullptr; scope = scope->m_parent.get()) {
        if (scope == other) {
            return true;
        }
    }
    return false;
}

// One node after the other instead of by the members' own destruction, whose stack would grow with the depth of the
// tree. The map takes the others' entries over as they are, so nothing is allocated.
Node::~Node() {
    std::multimap<CStringW, std::shared_ptr<Node>, NoOrder> doomed;
    doomed.merge(children);
    while (!doomed.empty()) {
        const auto first = doomed.extract(doomed.begin());
        if (first.mapped().use_count() == 1) {
            doomed.merge(first.mapped()->children);
        }
    }
}

bool Node::IsOpen() const noexcept {
    const std::shared_ptr<Scope> scope = opened.lock();
    return scope != nullptr && !scope->Ended();
}

void Node::EndOpened() noexcept {
    if (const std::shared_ptr<Scope> scope = opened.lock(); scope != nullptr) {
        scope->End();
    }
}

std::shared_ptr<Node> Node::Find(WideView wanted) const {
    const auto found = children.find(wanted);
    return found == children.end() ? nullptr : found->second;
}

std::shared_ptr<Node> CopyTree(const Node& root) {
    auto copy = std::make_shared<Node>();
    std::vector<std::pair<const Node*, Node*>> left = {{&root, copy.get()}};
    while (!left.empty()) {
        const auto [from, to] = left.back();
        left.pop_back();
        to->kind = from->kind;
        to->name = from->name;
        to->clsid = from->clsid;
        to->stateBits = from->stateBits;
        to->created = from->created;
        to->modified = from->modified;
        to->content = from->content;
        for (const auto& [name, child] : from->children) {
            auto childCopy = std::make_shared<Node>();
            left.emplace_back(child.get(), childCopy.get());
            to->children.emplace_hint(to->children.end(), name, std::move(childCopy));
        }
    }
    return copy;
}

void ForEachNode(Node& root, const std::function<void(Node&)>& visit) {
    std::vector<Node*> left = {&root};
    while (!left.empty()) {
        Node* const node = left.back();
        left.pop_back();
        visit(*node);
        for (const auto& [name, child] : node->children) {
            left.push_back(child.get());
        }
    }
}

}  // namespace vx_storage
