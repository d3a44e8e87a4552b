// What ClassDesc2 does with its parameter block descriptors: descriptor lookup, automatic construction,
// automatic rollouts in the command panel and class defaults.
#include "paramblock_rollouts.h"

#include <algorithm>
#include <utility>

namespace hostrt {
namespace {

struct OpenRollout {
    IObjParam* ip;
    IParamBlock2* block;
};

struct RolloutState {
    ParamRolloutPresenter* presenter = nullptr;
    std::vector<OpenRollout> open;
};

RolloutState& rollouts() {
    static RolloutState state;
    return state;
}

bool isOpen(IParamBlock2* block) {
    const auto& open = rollouts().open;
    return std::any_of(open.begin(), open.end(), [&](const OpenRollout& r) { return r.block == block; });
}

bool isHostBlock(ReferenceTarget* t) {
    return t && t->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID && t->ClassID() == PARAMBLOCK2_HOST_CLASS_ID;
}

}  // namespace

ParamRolloutPresenter* SetParamRolloutPresenter(ParamRolloutPresenter* presenter) {
    return std::exchange(rollouts().presenter, presenter);
}

std::vector<IParamBlock2*> OpenParamRollouts() {
    std::vector<IParamBlock2*> blocks;
    for (const OpenRollout& r : rollouts().open) blocks.push_back(r.block);
    return blocks;
}

void ForgetParamRollout(IParamBlock2* block) {
    auto& open = rollouts().open;
    auto it = std::find_if(open.begin(), open.end(), [&](const OpenRollout& r) { return r.block == block; });
    if (it == open.end()) return;
    const OpenRollout r = *it;
    open.erase(it);
    if (rollouts().presenter) rollouts().presenter->Close(r.ip, r.block);
}

IParamBlock2* FindParamBlockOf(ReferenceMaker* obj, ParamBlockDesc2* desc) {
    if (!obj || !desc) return nullptr;
    if (IParamBlock2* pb = obj->GetParamBlockByID(desc->ID); pb && pb->GetDesc() == desc) return pb;
    for (int i = 0; i < obj->NumRefs(); ++i) {
        ReferenceTarget* t = obj->GetReference(i);
        if (isHostBlock(t) && static_cast<IParamBlock2*>(t)->GetDesc() == desc) return static_cast<IParamBlock2*>(t);
    }
    return nullptr;
}

}  // namespace hostrt

ParamBlockDesc2* ClassDesc2::GetParamBlockDescByID(BlockID id) {
    for (ParamBlockDesc2* d : pbDescs)
        if (d && d->ID == id) return d;
    return nullptr;
}

void ClassDesc2::MakeAutoParamBlocks(ReferenceMaker* owner) {
    if (!owner) return;
    for (ParamBlockDesc2* d : pbDescs) {
        if (!d || !(d->flags & P_AUTO_CONSTRUCT)) continue;
        if (d->ref_no < 0 || d->ref_no >= owner->NumRefs()) {
            MSTR msg;
            msg.printf(L"making %s: it is to be reference %d of its owner, which has %d references", d->Describe().data(),
                       d->ref_no, owner->NumRefs());
            throw MAXException(msg);
        }
        IParamBlock2* block = CreateParameterBlock2(d, owner);
        owner->ReplaceReference(d->ref_no, block);
    }
}

int ClassDesc2::BeginEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG, Animatable*) {
    auto& state = hostrt::rollouts();
    for (ParamBlockDesc2* d : pbDescs) {
        if (!d || !(d->flags & P_AUTO_UI)) continue;
        IParamBlock2* block = hostrt::FindParamBlockOf(obj, d);
        if (!block || hostrt::isOpen(block)) continue;
        state.open.push_back({ip, block});
        if (state.presenter) state.presenter->Open(ip, block);
    }
    return TRUE;
}

int ClassDesc2::EndEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG, Animatable*) {
    for (ParamBlockDesc2* d : pbDescs)
        if (d && (d->flags & P_AUTO_UI))
            if (IParamBlock2* block = hostrt::FindParamBlockOf(obj, d)) hostrt::ForgetParamRollout(block);
    return TRUE;
}

void ClassDesc2::ResetClassParams(BOOL) {
    for (ParamBlockDesc2* d : pbDescs)
        if (d) d->ResetClassDefaults();
}
