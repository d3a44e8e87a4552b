// The reference helper's reference slots: 0 the parameter block, 1 the scene material library while a merge runs,
// then the node records, the material records and the layers, each group in its list's order. The numbers are
// file format: a saved scene names the helper's references by them.
#pragma once

#include "frame/slot_layout.h"

namespace vandrels {

enum class HelperSlot { ParamBlock, SceneMaterials, NodeRecord, MaterialRecord, Layer };

class HelperSlots {
public:
    static constexpr int kParamBlock = 0;
    static constexpr int kSceneMaterials = 1;
    static constexpr int kFirstRecord = 2;

    constexpr HelperSlots(int nodeRecords, int materialRecords, int layers)
        : layout_({{{HelperSlot::ParamBlock, 1},
                    {HelperSlot::SceneMaterials, 1},
                    {HelperSlot::NodeRecord, nodeRecords},
                    {HelperSlot::MaterialRecord, materialRecords},
                    {HelperSlot::Layer, layers}}}) {}

    constexpr int Count() const { return layout_.Count(); }
    constexpr int SlotOf(HelperSlot kind, int k = 0) const { return layout_.SlotOf(kind, k); }
    constexpr int NodeRecord(int k) const { return layout_.SlotOf(HelperSlot::NodeRecord, k); }
    constexpr int MaterialRecord(int k) const { return layout_.SlotOf(HelperSlot::MaterialRecord, k); }
    constexpr int Layer(int k) const { return layout_.SlotOf(HelperSlot::Layer, k); }

    using Slot = SlotLayout<HelperSlot, 5>::Slot;
    // What slot i is.
    constexpr Slot At(int i) const { return layout_.At(i); }

private:
    SlotLayout<HelperSlot, 5> layout_;
};

}  // namespace vandrels
