// Small reference makers and targets the host's tests are built from.
#pragma once

#include "max.h"

#include <string>
#include <vector>

namespace testobj {

// A target with a growable list of references that records the messages it hears and can answer REF_STOP.
class Item : public ReferenceTarget {
public:
    explicit Item(std::string name = {}, int refs = 2) : name(std::move(name)), refs_(refs, nullptr) { ++live; }
    ~Item() override { --live; }

    Class_ID ClassID() override { return Class_ID(0x7E570001, 0); }
    SClass_ID SuperClassID() override { return sclass; }
    void GetClassName(MSTR& s, bool) const override { s = L"Item"; }
    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < NumRefs() ? refs_[std::size_t(i)] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override { if (i >= 0 && i < NumRefs()) refs_[std::size_t(i)] = t; }
    void AddSlot() { refs_.push_back(nullptr); }

    RefResult NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL) override {
        heard.push_back({message, hTarget, partID});
        if (writeAnswer) partID = writeAnswer;
        return answer;
    }
    BOOL IsRealDependency(ReferenceTarget* t) override { return weak ? FALSE : TRUE; }
    BOOL CanTransferReference(int i) override { return i != pinnedSlot; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new Item(name + "'", NumRefs());
        for (int i = 0; i < NumRefs(); ++i) c->ReplaceReference(i, remap.CloneRef(refs_[std::size_t(i)]));
        BaseClone(this, c, remap);
        return c;
    }

    struct Heard {
        RefMessage message;
        RefTargetHandle from;
        PartID part;
    };
    std::string name;
    std::vector<Heard> heard;
    RefResult answer = REF_SUCCEED;
    PartID writeAnswer = 0;
    bool weak = false;
    int pinnedSlot = -1;
    SClass_ID sclass = REF_TARGET_CLASS_ID;
    static inline int live = 0;

private:
    std::vector<RefTargetHandle> refs_;
};

}  // namespace testobj
