// The index of node names and the unique names made from it.
#include "scene/node_names.h"

#include "scene/node.h"
#include "scene/node_operations.h"

#include <algorithm>
#include <cwctype>

namespace hostrt {

namespace {

// A name split as unique naming counts: the stem before the trailing digits and the digits themselves.
struct NumberedName {
    std::wstring stem;
    std::size_t digits = 0;
    unsigned long long number = 0;  // 0 when there are no digits or too many to count
};

NumberedName splitNumber(const std::wstring& name) {
    NumberedName out;
    while (out.digits < name.size() && std::iswdigit(name[name.size() - 1 - out.digits])) ++out.digits;
    out.stem = name.substr(0, name.size() - out.digits);
    if (out.digits > 0 && out.digits < 10) out.number = std::stoull(name.substr(name.size() - out.digits));
    return out;
}

std::wstring numbered(const std::wstring& stem, unsigned long long number, std::size_t width) {
    std::wstring n = std::to_wstring(number);
    if (n.size() < width) n.insert(0, width - n.size(), L'0');
    return stem + n;
}

// Whether n hangs below root and stands for the scene (not deleted, no root itself).
bool below(Node* n, Node* root) {
    return n != root && !n->IsRootNode() && !n->IsDeleted() && n->IsSelfOrAncestor(root);
}

Node* walk(Node* root, const std::wstring& name) {
    for (Node* n : NodesBelow(root))
        if (n->GetName() == name) return n;
    return nullptr;
}

}  // namespace

NodeNameIndex& NodeNameIndex::Instance() {
    static auto* index = new NodeNameIndex();  // nodes may outlive static destruction at exit
    return *index;
}

void NodeNameIndex::Renamed(Node* node, const std::wstring& oldName, const std::wstring& newName) {
    if (oldName == newName) return;
    Removed(node, oldName);
    if (!newName.empty()) carriers_[newName].push_back(node);
}

void NodeNameIndex::Removed(Node* node, const std::wstring& name) {
    auto it = carriers_.find(name);
    if (it != carriers_.end()) {
        auto& nodes = it->second;
        // The newest carrier is the likeliest to go; the order of carriers does not matter.
        if (auto at = std::find(nodes.rbegin(), nodes.rend(), node); at != nodes.rend()) {
            *at = nodes.back();
            nodes.pop_back();
        }
        if (nodes.empty()) carriers_.erase(it);
    }
    // A numbered name that is free again may be below a hint of its stem.
    const NumberedName split = splitNumber(name);
    if (split.digits == 0) return;
    for (auto h = hints_.lower_bound({split.stem, 0}); h != hints_.end() && h->first.first == split.stem;)
        h = hints_.erase(h);
}

Node* NodeNameIndex::Find(Node* root, const std::wstring& name) const {
    if (name.empty()) return walk(root, name);
    auto it = carriers_.find(name);
    if (it == carriers_.end() || !root) return nullptr;
    Node* found = nullptr;
    for (Node* n : it->second) {
        if (!below(n, root)) continue;
        if (found) return walk(root, name);  // several nodes carry the name: the first in the walk wins
        found = n;
    }
    return found;
}

bool NodeNameIndex::Taken(Node* root, const std::wstring& name) const {
    if (name.empty()) return walk(root, name) != nullptr;
    auto it = carriers_.find(name);
    if (it == carriers_.end()) return false;
    return std::any_of(it->second.begin(), it->second.end(), [&](Node* n) { return below(n, root); });
}

MSTR NodeNameIndex::Unique(Node* root, const MSTR& base) {
    if (!Taken(root, base.str())) return base;
    if (root != hintRoot_) {
        hints_.clear();
        hintRoot_ = root;
    }
    const NumberedName split = splitNumber(base.str());
    const std::size_t width = std::max<std::size_t>(split.digits, 3);
    const unsigned long long start = split.number + 1;
    Hint& hint = hints_[{split.stem, width}];
    const bool resume = hint.to != 0 && hint.from <= start && start <= hint.to;
    unsigned long long number = resume ? hint.to : start;
    std::wstring name = numbered(split.stem, number, width);
    while (Taken(root, name)) name = numbered(split.stem, ++number, width);
    hint.from = resume ? hint.from : start;
    hint.to = number;
    return MSTR(name);
}

}  // namespace hostrt
