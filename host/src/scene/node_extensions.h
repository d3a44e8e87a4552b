// The extension interfaces a node answers by Interface_ID: skin pose, render properties and the two node
// extensions. They read and write the node's own state through the node's setters.
#pragma once

#include "inode.h"

namespace hostrt {

class Node;

class NodeExtensions {
public:
    explicit NodeExtensions(Node* node);
    ~NodeExtensions();
    // The interface of that id; null for any other id.
    BaseInterface* Find(Interface_ID id);

private:
    class SkinPose;
    class RenderProps;
    class Ext1;
    class Ext2;
    SkinPose* skin_;
    RenderProps* render_;
    Ext1* ext1_;
    Ext2* ext2_;
};

}  // namespace hostrt
