// The node record's reference slots: the record's own slots (0 the node, then its animatable records), then the
// material override, the parent, the children, the layer, the world-space and the object-space modifier mirrors,
// the lights of the exclusion lists, the local dependent and the other exclusion-list items, each list in its
// order. The numbers are file format: a saved scene names the record's references by them.
#pragma once

#include "frame/slot_layout.h"

namespace vandrels {

enum class NodeRecordSlot {
    Base,                  // the node and the animatable records (RefBase's own)
    Material,
    Parent,
    Child,
    Layer,
    WorldSpaceModifier,
    ObjectSpaceModifier,
    ExclusionLight,
    LocalDependent,
    ExclusionOther
};

class NodeRecordSlots {
public:
    struct Sizes {
        int base = 1;
        int children = 0;
        int worldSpaceModifiers = 0;
        int objectSpaceModifiers = 0;
        int exclusionLights = 0;
        int exclusionOthers = 0;
    };

    constexpr explicit NodeRecordSlots(const Sizes& s)
        : layout_({{{NodeRecordSlot::Base, s.base},
                    {NodeRecordSlot::Material, 1},
                    {NodeRecordSlot::Parent, 1},
                    {NodeRecordSlot::Child, s.children},
                    {NodeRecordSlot::Layer, 1},
                    {NodeRecordSlot::WorldSpaceModifier, s.worldSpaceModifiers},
                    {NodeRecordSlot::ObjectSpaceModifier, s.objectSpaceModifiers},
                    {NodeRecordSlot::ExclusionLight, s.exclusionLights},
                    {NodeRecordSlot::LocalDependent, 1},
                    {NodeRecordSlot::ExclusionOther, s.exclusionOthers}}}) {}

    constexpr int Count() const { return layout_.Count(); }
    constexpr int Material() const { return layout_.SlotOf(NodeRecordSlot::Material); }
    constexpr int Parent() const { return layout_.SlotOf(NodeRecordSlot::Parent); }
    constexpr int Child(int k) const { return layout_.SlotOf(NodeRecordSlot::Child, k); }
    constexpr int Layer() const { return layout_.SlotOf(NodeRecordSlot::Layer); }
    constexpr int WorldSpaceModifier(int k) const { return layout_.SlotOf(NodeRecordSlot::WorldSpaceModifier, k); }
    constexpr int ObjectSpaceModifier(int k) const { return layout_.SlotOf(NodeRecordSlot::ObjectSpaceModifier, k); }
    constexpr int ExclusionLight(int k) const { return layout_.SlotOf(NodeRecordSlot::ExclusionLight, k); }
    constexpr int LocalDependent() const { return layout_.SlotOf(NodeRecordSlot::LocalDependent); }
    constexpr int ExclusionOther(int k) const { return layout_.SlotOf(NodeRecordSlot::ExclusionOther, k); }

    using Slot = SlotLayout<NodeRecordSlot, 10>::Slot;
    // What slot i is.
    constexpr Slot At(int i) const { return layout_.At(i); }

private:
    SlotLayout<NodeRecordSlot, 10> layout_;
};

}  // namespace vandrels
