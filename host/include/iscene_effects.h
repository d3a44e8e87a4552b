// Scene effects that hold node lists, and their node-list extension interface. The scene's effects are a list
// reached through the core interface (Interface::NumSceneEffects, GetSceneEffect).
#pragma once

#include "baseinterface.h"
#include "ref.h"

class INode;

// Answered by effect items through GetInterface(Interface_ID).
#define SCENE_EFFECT_NODE_LISTS_INTERFACE Interface_ID(0x2F863572, 0x21482D22)

// Effect classes with node lists: one with three lists, two with one.
#define SCENE_EFFECT_THREE_LISTS_CLASS_ID Class_ID(0x963A9436, 0x30D57A4A)
#define SCENE_EFFECT_ONE_LIST_CLASS_ID Class_ID(0x6D5C764B, 0x084F18FD)
#define SCENE_EFFECT_ONE_LIST_B_CLASS_ID Class_ID(0x7E99293C, 0x0A9013C7)

// The node lists of an effect, addressed by list code: 1, 5 and 9 for lists 0, 1 and 2. Nodes are references of
// the effect: a deleted node leaves an empty entry (null) until it is removed.
class INodeListEffect : public BaseInterface {
public:
    Interface_ID GetID() override { return SCENE_EFFECT_NODE_LISTS_INTERFACE; }
    static constexpr int ListCode(int listIndex) { return 1 + 4 * listIndex; }

    virtual int NumNodeLists() = 0;
    // Adds node to the list; TRUE when it is in the list afterwards (a listed node is not added again), FALSE
    // for no node or an unknown list code.
    virtual BOOL AddNode(INode* node, int listCode) = 0;
    // Entries of the list, empty ones included (0 for an unknown list code).
    virtual int NumNodes(int listCode) = 0;
    // Null for an empty entry, an unknown list code or an index out of range.
    virtual INode* GetNode(int listCode, int i) = 0;
    virtual BOOL RemoveNode(int listCode, int i) = 0;
};
