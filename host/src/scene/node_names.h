// The names the nodes carry, indexed: finding a scene node by name and making a name unique cost the same
// however many nodes the scene holds. Every live node that is no root is listed under its name; a node
// answers for the scene only while it hangs below the scene root and is not deleted.
#pragma once

#include "strclass.h"

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hostrt {

class Node;

class NodeNameIndex {
public:
    static NodeNameIndex& Instance();

    // A node took newName in place of oldName. Unnamed nodes are not listed (a file being read makes all its
    // nodes before it names them); a search for the empty name walks the tree.
    void Renamed(Node* node, const std::wstring& oldName, const std::wstring& newName);
    // A node is destroyed: it carries its name no longer.
    void Removed(Node* node, const std::wstring& name);
    // A node left its tree (unlinked or destroyed): the names below it may have left the scene.
    void LeftTree() { hints_.clear(); }

    // The first node of that name below root in a depth-first walk (root itself excluded); null when none.
    Node* Find(Node* root, const std::wstring& name) const;
    // Whether a node of that name hangs below root.
    bool Taken(Node* root, const std::wstring& name) const;
    // A name like base that no node below root carries: base itself when it is free, else base's trailing
    // digits counted on ("Box001" -> "Box002"), three digits appended when it has none ("Box" -> "Box001").
    // The lowest free number is answered.
    MSTR Unique(Node* root, const MSTR& base);

private:
    NodeNameIndex() = default;

    // Numbered names already handed out for one stem and width: every number from `from` up to (not
    // including) `to` was taken when `to` was answered. A hint stays as long as none of those names has left
    // the scene since, so the next request goes on from `to` instead of counting from the start again.
    struct Hint {
        unsigned long long from = 0;
        unsigned long long to = 0;
    };
    using HintKey = std::pair<std::wstring, std::size_t>;  // stem, number width

    std::unordered_map<std::wstring, std::vector<Node*>> carriers_;
    std::map<HintKey, Hint> hints_;
    Node* hintRoot_ = nullptr;
};

}  // namespace hostrt
