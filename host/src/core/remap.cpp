// Remap directories: one clone per original within one clone operation, pointer patches and post-patch
// procedures run when the operation ends.
#include "ref.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace {

class HostRemapDir : public RemapDir {
public:
    RefTargetHandle FindMapping(RefTargetHandle from) override {
        auto it = map_.find(from);
        return it == map_.end() ? nullptr : it->second;
    }
    RefTargetHandle CloneRef(RefTargetHandle oldTarg) override {
        if (!oldTarg) return nullptr;
        if (RefTargetHandle done = FindMapping(oldTarg)) return done;
        RefTargetHandle clone = oldTarg->Clone(*this);
        if (clone) map_[oldTarg] = clone;
        return clone;
    }
    void AddEntry(RefTargetHandle hfrom, RefTargetHandle hto) override {
        if (hfrom) map_[hfrom] = hto;
    }
    void PatchPointer(RefTargetHandle* patchThis, RefTargetHandle oldTarg) override {
        patches_.push_back({patchThis, oldTarg});
    }
    void AddPostPatchProc(PostPatchProc* proc, bool toDelete) override {
        procs_.push_back({proc, toDelete});
    }
    void Backpatch() override {
        done_ = true;
        for (auto& [where, old] : patches_) {
            RefTargetHandle c = FindMapping(old);
            *where = c ? c : old;
        }
        patches_.clear();
        auto procs = std::move(procs_);
        procs_.clear();
        for (auto& [proc, del] : procs) {
            proc->Proc(*this);
            if (del) delete proc;
        }
    }
    void Clear() override {
        map_.clear();
        patches_.clear();
    }
    void DeleteThis() override {
        if (!done_ || !patches_.empty() || !procs_.empty()) Backpatch();
        delete this;
    }

private:
    std::unordered_map<RefTargetHandle, RefTargetHandle> map_;
    std::vector<std::pair<RefTargetHandle*, RefTargetHandle>> patches_;
    std::vector<std::pair<PostPatchProc*, bool>> procs_;
    bool done_ = false;
};

}  // namespace

RemapDir& NewRemapDir(BOOL) { return *new HostRemapDir(); }

RefTargetHandle CloneRefHierarchy(RefTargetHandle target) {
    RemapDir& remap = NewRemapDir();
    RefTargetHandle clone = remap.CloneRef(target);
    remap.DeleteThis();
    return clone;
}
