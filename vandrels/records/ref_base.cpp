#include "records/ref_base.h"

#include "anims/record_codes.h"
#include "frame/record_failure.h"
#include "anims/classifier.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_factory.h"
#include "frame/class_desc.h"
#include "frame/module.h"
#include "frame/module_state.h"
#include "records/record_owner.h"
#include "hold.h"
#include "ioapi.h"
#include "listener.h"
#include "maxexception.h"
#include "notify.h"
#include "plugapi.h"
#include "records/chunk_io.h"
#include "records/node_messages.h"
#include "records/ref_node.h"
#include "records/subanim_space.h"
#include "resource.h"

namespace {

constexpr USHORT kFormatChunk = 0x0000;
constexpr USHORT kRefAnimCountChunk = 0x0022;
// The format version every record writes first: the single-precision value 10701.0.
constexpr std::uint32_t kFormatVersion = 0x46273400;

// The helper's broadcast at the start of its post-processing after a load.
constexpr int kNotifyPostProcess = 0xDFA7;
// Messages from the target that say its sub-anim structure may have changed, and their special parts.
constexpr RefMessage kMsgStructure250 = 250;
constexpr RefMessage kMsgStructure258 = 258;
constexpr PartID kPartIgnored = 0x20000000;
constexpr PartID kPartDeferred = 214;
// A query from another target: the record answers with its target in the part slot.
constexpr RefMessage kMsgTargetQuery = 0x8663DFA8;
constexpr SClass_ID kCustAttribSuperClass = 0x1160;
constexpr std::uint32_t kKindListCtrl = 0x0008;
// Descent stops once a path holds this many names.
constexpr int kMaxPathNames = 100;

int gResetPass = 1;

// Sets an int flag for its lifetime.
class FlagScope {
public:
    explicit FlagScope(int& flag) : flag_(flag), saved_(flag) { flag_ = 1; }
    ~FlagScope() { flag_ = saved_; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    int& flag_;
    int saved_;
};

Tab<WStr*> CopyNames(const Tab<WStr*>& names) {
    Tab<WStr*> copy;
    for (WStr* name : names) copy.Append(new WStr(name ? *name : WStr()));
    return copy;
}

void FreeNames(Tab<WStr*>& names) {
    for (WStr* name : names) delete name;
    names.ZeroCount();
}

bool StartsWith(const Tab<int>& path, const Tab<int>& prefix) {
    if (path.Count() < prefix.Count()) return false;
    for (int i = 0; i < prefix.Count(); ++i)
        if (path[i] != prefix[i]) return false;
    return true;
}

// The failure of one animatable record, thrown on with the record's description.
[[noreturn]] void ThrowRecordFailure(const MCHAR* text, RefAnim* record, const MAXException* cause) {
    MSTR description;
    try {
        description = record->GetInfo();
    } catch (...) {
        description = record->GetTypeName();
    }
    vandrels::RecordFailure{text, description, std::nullopt, vandrels::RecordFailure::CauseOf(cause)}.Throw();
}

// Runs one operation of an animatable record; a failure becomes the owner's report with the given texts.
template <class Op> void RunRecordStep(RefAnim* record, const MCHAR* text, const MCHAR* unknownText, Op op) {
    vandrels::RunInErrorFrame(text, unknownText, op, [record](const MCHAR* words, const MAXException* cause) {
        ThrowRecordFailure(words, record, cause);
    });
}

}  // namespace

// The walks over the target's sub-anims: building the tree and comparing it with the live sub-anims.
struct RefBaseWalk {
    RefBase& record;
    Tab<WStr*> names;  // the path so far (owned)
    Tab<int> numbers;

    ~RefBaseWalk() { FreeNames(names); }

    void push(const MSTR& name, int number) {
        names.Append(new WStr(name));
        numbers.Append(number);
    }
    void pop() {
        delete names[names.Count() - 1];
        names.Delete(names.Count() - 1, 1);
        numbers.Delete(numbers.Count() - 1, 1);
    }
    Tab<int> numbersWith(int index) const {
        Tab<int> path = numbers;
        path.Append(index);
        return path;
    }

    // Fills node's children slot by slot (only slot 0 when onlyFirst) and visits each animatable found.
    void build(RefSubAnim* node, Animatable* parent, bool onlyFirst) {
        Animatable* anim = node->anim;
        int count = CountSubAnims(anim, parent);
        if (onlyFirst && count > 1) count = 1;
        for (int i = 0; i < count; ++i) {
            MSTR name;
            Animatable* sub = GetSubAnimByIndex(anim, parent, i, nullptr, name);
            auto* child = new RefSubAnim(sub);
            node->children.Append(child);
            node->names.Append(new WStr(name));
            // An entry that names its own level holds no animatable of its own to descend into.
            if (!sub || sub == anim || names.Count() >= kMaxPathNames) continue;
            push(name, i);
            visit(child, anim);
            pop();
        }
    }

    // The classifier's decision for one animatable met at the current path.
    void visit(RefSubAnim* node, Animatable* parent) {
        const std::uint32_t code = ClassifyAnim(node->anim, parent);
        if (code == kCodeIgnore) return;
        if ((code & kCodeMakeRecord) && !record.FindRecordForPath(node->anim, numbers))
            record.CreateRefAnim(code, node->anim, CopyNames(names), numbers, 0);
        build(node, parent, code != kCodeNoRecord && !(code & kCodeWalkSubs));
    }

    // Records for an animatable that a rescan found in a new place: made Replaced, and so on below it.
    void remake(Animatable* anim, Animatable* parent) {
        const std::uint32_t code = ClassifyAnim(anim, parent);
        if (code == kCodeIgnore) return;
        const bool make = !(code & kCodeNoRescanRecord) &&
                          (code == kCodeNoRecord || (code & (kCodeMakeRecord | kCodeCountReplaced)));
        if (make) {
            const std::uint32_t kind = (code & kCodeKindOnReplace) ? code : kCodePlain;
            record.CreateRefAnim(kind, anim, CopyNames(names), numbers, kOverrideReplaced);
        }
        int count = CountSubAnims(anim, parent);
        if (code != kCodeNoRecord && !(code & kCodeWalkSubs) && count > 1) count = 1;
        for (int i = 0; i < count && names.Count() < kMaxPathNames; ++i) {
            MSTR name;
            Animatable* sub = GetSubAnimByIndex(anim, parent, i, nullptr, name);
            if (!sub || sub == anim) continue;
            push(name, i);
            remake(sub, anim);
            pop();
        }
    }

    // Moves the number paths of the records behind position at the current level by delta.
    void shiftBehind(int position, int delta) {
        const int level = numbers.Count();
        for (RefAnim* anim : record.refAnims_) {
            if (!anim) continue;
            Tab<int> path = anim->GetPathByNumber();
            if (path.Count() <= level || !StartsWith(path, numbers) || path[level] < position) continue;
            path[level] += delta;
            anim->SetPathByNumber(path);
        }
    }

    void dropUnder(int index) {
        push(L"", index);
        record.DropRecordsUnderPath(names, numbers, nullptr);
        pop();
    }

    // Compares the stored level node (whose animatable is anim) with anim's live entries.
    void compare(RefSubAnim* node, Animatable* parent) {
        Animatable* anim = node->anim;
        const std::uint32_t code = ClassifyAnim(anim, parent);
        if (code == kCodeIgnore) return;
        const bool walksAll = code == kCodeNoRecord || (code & kCodeWalkSubs);
        const int stored = node->children.Count();
        const int live = walksAll ? CountSubAnims(anim, parent) : (stored > 0 ? 1 : 0);
        auto liveSub = [&](int i, MSTR& name) { return GetSubAnimByIndex(anim, parent, i, nullptr, name); };
        auto firstDifference = [&](int limit) {
            for (int i = 0; i < limit; ++i) {
                MSTR name;
                if (node->children[i] && node->children[i]->anim != liveSub(i, name)) return i;
            }
            return limit;
        };

        if (stored != live && walksAll && (code & 0xFFFF) == kKindListCtrl && (code & kCodeMakeRecord)) {
            for (int i = 0; i < stored; ++i) dropUnder(i);
            for (int i = 0; i < live && names.Count() < kMaxPathNames; ++i) {
                MSTR name;
                Animatable* sub = liveSub(i, name);
                if (!sub || sub == anim) continue;
                push(name, i);
                remake(sub, anim);
                pop();
            }
            return;
        }
        if (live == stored + 1) {
            const int at = firstDifference(stored);
            shiftBehind(at, 1);
            MSTR name;
            Animatable* sub = liveSub(at, name);
            if (sub && sub->SuperClassID() == kCustAttribSuperClass && names.Count() < kMaxPathNames) {
                push(name, at);
                record.CreateRefAnim(kCodeCA, sub, CopyNames(names), numbers, kOverrideAdded);
                pop();
            }
            return;
        }
        if (live == stored - 1) {
            const int at = firstDifference(live);
            dropUnder(at);
            shiftBehind(at + 1, -1);
            RefSubAnim* gone = node->children[at];
            if (gone && gone->superClass == kCustAttribSuperClass && names.Count() < kMaxPathNames) {
                push(node->names[at] ? *node->names[at] : MSTR(), at);
                record.CreateRefAnim(kCodeCA, nullptr, CopyNames(names), numbers, kOverrideRemoved);
                pop();
            }
            return;
        }
        if (live != stored) return;
        for (int i = 0; i < live; ++i) {
            RefSubAnim* child = node->children[i];
            MSTR name;
            Animatable* sub = liveSub(i, name);
            if (!child || sub == anim || names.Count() >= kMaxPathNames) continue;
            push(name, i);
            if (child->anim != sub) {
                record.DropRecordsUnderPath(names, numbers, nullptr);
                if (sub) remake(sub, anim);
            } else if (sub) {
                compare(child, anim);
            }
            pop();
        }
    }
};

RefBase::~RefBase() {
    unregisterPostProcess();
    // The target outlives the record: take the record off its property list. Animatable records that stay
    // alive (held by an undo step) no longer have an owner.
    if (target_) target_->RemoveAProp(this);
    for (RefAnim* record : refAnims_)
        if (record && record->GetOwner() == this) record->SetOwner(nullptr);
}

RefBase* FindRecordOf(Animatable* item) {
    return item ? static_cast<RefBase*>(item->GetAProp(REFBASE_PROPERTY_ID)) : nullptr;
}

// ------------------------------------------------------------------------------------------ references

RefTargetHandle RefBase::GetReference(int i) {
    if (i == 0) return target_;
    if (i >= 1 && i <= refAnims_.Count()) return refAnims_[i - 1];
    return nullptr;
}

void RefBase::SetReference(int i, RefTargetHandle target) {
    if (i == 0) {
        bindTarget(target);
        // While a scene file opens the host restores the animatable records after the target: no tree yet.
        if (vandrels::GetOperationMode() == vandrels::kModeIdle && !IsFileOpening()) BuildSubAnimTree();
        return;
    }
    if (i < 1 || i > refAnims_.Count()) return;
    // Only animatable records belong in these slots; anything else leaves the entry empty.
    auto* record = dynamic_cast<RefAnim*>(target);
    RefAnim* old = refAnims_[i - 1];
    if (old && old != record && old->GetOwner() == this) old->SetOwner(nullptr);
    refAnims_[i - 1] = record;
    if (record) record->SetOwner(this);
}

void RefBase::bindTarget(ReferenceTarget* target) {
    if (target_ == target) return;
    if (target_) target_->RemoveAProp(this);
    target_ = target;
    if (target_ && target_->aprops.IndexOf(this) < 0) target_->AddAProp(this);
}

void RefBase::AppendRefAnim(RefAnim* record) {
    refAnims_.Append(nullptr);
    ReplaceReference(refAnims_.Count(), record);
}

bool RefBase::HasOverrides() {
    for (RefAnim* record : refAnims_)
        if (record && record->HasOverride()) return true;
    return false;
}

// ------------------------------------------------------------------------------------------ protocol

void RefBase::Collect() {
    if (!target_) return;
    if (structureDirty_) Rescan();
    Animatable* root = GetAnimRoot();
    for (int i = 0; i < refAnims_.Count(); ++i) {
        RefAnim* record = refAnims_[i];
        if (!record) continue;
        RunRecordStep(record, L"Error Collecting RefAnim", L"Unknown Error Collecting RefAnim",
                      [&] { record->Collect(root); });
    }
    if (structureDirty_) Rescan();
}

void RefBase::Override() {
    Animatable* root = GetAnimRoot();
    if (!root) return;
    FlagScope busy(busy_);
    for (int i = 0; i < refAnims_.Count(); ++i) {
        RefAnim* record = refAnims_[i];
        if (!record) continue;
        RunRecordStep(record, L"Error Overriding RefAnim", L"Unknown Error Overriding RefAnim",
                      [&] { record->Override(root); });
    }
}

void RefBase::Update(ReferenceTarget* newTarget) {
    FlagScope busy(busy_);
    ReplaceReference(0, newTarget);
    if (!target_) return;
    prune();
    Override();
    CaptureBaseline();
    BuildSubAnimTree();
}

void RefBase::CollectIfBound() {
    if (target_) Collect();
}

int RefBase::CurrentResetPass() { return gResetPass; }
int RefBase::BeginResetPass() { return ++gResetPass; }

void RefBase::ResetOverrides(DWORD mask) {
    const int pass = CurrentResetPass();
    for (int i = 0; i < refAnims_.Count(); ++i) {
        RefAnim* record = refAnims_[i];
        if (!record || record->GetResetStamp() == pass || !AcceptsReset(record, mask)) continue;
        const int answer = record->ResetOverrides(mask);
        // Every record holding the same animatable counts as handled in this pass.
        record->SetResetStamp(pass);
        if (auto* anim = dynamic_cast<ReferenceTarget*>(record->GetAnim())) {
            DependentIterator it(anim);
            while (ReferenceMaker* dep = it.Next())
                if (dep->SuperClassID() == REFANIM_SUPER_CLASS_ID && static_cast<RefAnim*>(dep)->GetAnim() == anim)
                    static_cast<RefAnim*>(dep)->SetResetStamp(pass);
        }
        if (answer == 1) {
            DeleteReference(1 + i);
        } else if (answer == 2) {
            // The record stays with only its local-dependents state: the reload that follows the reset binds it
            // to the reference's original and moves every local user of the live animatable over to it
            // (OverrideLocDep), instead of putting the local animatable back.
            record->SetOverrideBits(std::uint8_t(~kOverrideLocDep), false, true);
            record->SetOverrideBits(kOverrideLocDep, true, true);
        }
    }
}

MSTR RefBase::GetNamePrefix() { return helper_ ? helper_->GetNamePrefix() : MSTR(); }

bool RefBase::IsHelperNested() { return helper_ && helper_->IsNested(); }

void RefBase::PrintData(int mode) {
    mputs(L"RefAnims: ");
    if (mode != 1) {
        mprintf(L"%d", refAnims_.Count());
    } else {
        for (int i = 0; i < refAnims_.Count(); ++i) {
            mprintf(L"\n\nRefAnim: %d", i);
            mflush();
            if (refAnims_[i])
                refAnims_[i]->PrintData();
            else
                mputs(L"\nNULL\n");
        }
    }
    mputs(L"\n");
    mflush();
}

MSTR RefBase::GetInfo() {
    MSTR info = L"RefAnims: ";
    info.append_printf(L"%d", refAnims_.Count());
    return info;
}

void RefBase::OnRefAnimsChanged(int keep) {
    if (keep == 0) prune();
}

MSTR RefBase::GetTypeName() {
    ClassDesc* desc = FindClassDesc(SuperClassID(), ClassID());
    return desc ? MSTR(desc->ClassName()) : MSTR();
}

void RefBase::prune() {
    for (int i = refAnims_.Count() - 1; i >= 0; --i) {
        RefAnim* record = refAnims_[i];
        if (record && record->HasOverride()) continue;
        if (record) DeleteReference(1 + i);
        refAnims_.Delete(i, 1);
    }
}

// ------------------------------------------------------------------------------------------ animatable records

RefAnim* RefBase::CreateRefAnim(std::uint32_t code, Animatable* anim, const Tab<WStr*>& names,
                                const Tab<int>& numbers, std::uint8_t initialState) {
    RefAnim* record = MakeRefAnim(code);
    if (!record) {
        Tab<WStr*> unused = names;
        FreeNames(unused);
        return nullptr;
    }
    record->SetOwner(this);
    record->SetOverrideState(initialState);
    record->SetPath(names);
    record->SetPathByNumber(numbers);
    record->SetOption((code & kCodeOption) ? 1 : 0);
    try {
        RunRecordStep(record, L"Error setting anim while creating RefAnim",
                      L"Unknown Error setting anim while creating RefAnim", [&] { record->SetAnim(anim); });
    } catch (...) {
        record->DeleteAllRefs();
        record->DeleteThis();
        throw;
    }
    if (record->GetType() != code) {
        record->DeleteAllRefs();
        record->DeleteThis();
        return nullptr;
    }
    AppendRefAnim(record);
    return record;
}

RefAnim* RefBase::FindRecordForPath(Animatable* anim, const Tab<int>& numbers) {
    auto* target = dynamic_cast<ReferenceTarget*>(anim);
    if (!target) return nullptr;
    DependentIterator it(target);
    while (ReferenceMaker* dep = it.Next()) {
        if (dep->SuperClassID() != REFANIM_SUPER_CLASS_ID) continue;
        auto* record = static_cast<RefAnim*>(dep);
        if (record->GetOwner() != this || record->GetAnim() != anim) continue;
        const Tab<int> path = record->GetPathByNumber();
        if (path.Count() == numbers.Count() && StartsWith(path, numbers)) return record;
    }
    return nullptr;
}

void RefBase::DropRecordsUnderPath(const Tab<WStr*>&, const Tab<int>& numbers, RefAnim* except) {
    for (int i = 0; i < refAnims_.Count(); ++i) {
        RefAnim* record = refAnims_[i];
        if (record && record != except && StartsWith(record->GetPathByNumber(), numbers)) DeleteReference(1 + i);
    }
}

void RefBase::BuildSubAnimTree() {
    FlagScope busy(busy_);
    tree_.reset();
    Animatable* root = GetAnimRoot();
    if (!root) return;
    tree_ = std::make_unique<RefSubAnim>(root);
    RefBaseWalk walk{*this, {}, {}};
    walk.build(tree_.get(), nullptr, false);
}

void RefBase::Rescan() {
    FlagScope busy(busy_);
    vandrels::OperationModeScope mode(vandrels::kModeRescanning);
    structureDirty_ = 0;
    if (tree_ && tree_->anim == GetAnimRoot()) {
        RefBaseWalk walk{*this, {}, {}};
        walk.compare(tree_.get(), nullptr);
    }
    BuildSubAnimTree();
}

// ------------------------------------------------------------------------------------------ messages

RefResult RefBase::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                                    BOOL) {
    const int mode = vandrels::GetOperationMode();
    const bool fromTarget = hTarget && hTarget == target_;
    if (mode == vandrels::kModeLoading) {
        if (fromTarget && message == kMsgStructure258 && !rescanQueued_ && !busy_) {
            rescanQueued_ = 1;
            RegisterNotification(&RefBase::postProcessProc, this, kNotifyPostProcess);
        }
        return REF_STOP;
    }
    if (mode != vandrels::kModeIdle) return REF_STOP;
    if (theHold.RestoreOrRedoing()) {
        if (fromTarget && message == kMsgStructure258) {
            BuildSubAnimTree();
            structureDirty_ = 1;
        }
        return REF_STOP;
    }
    if (message == kMsgTargetQuery && !fromTarget) {
        partID = reinterpret_cast<PartID>(target_);
        return REF_STOP;
    }
    if (!fromTarget || busy_) return REF_STOP;
    if (message != kMsgStructure250 && message != kMsgStructure258 && message != nodemsg::kNodeChanged) return REF_STOP;
    if (partID == kPartIgnored) return REF_STOP;
    if (partID == kPartDeferred)
        structureDirty_ = 1;
    else
        Rescan();
    return REF_STOP;
}

void RefBase::postProcessProc(void* param, NotifyInfo*) { static_cast<RefBase*>(param)->onPostProcess(); }

void RefBase::onPostProcess() {
    unregisterPostProcess();
    BuildSubAnimTree();
}

void RefBase::unregisterPostProcess() {
    if (!rescanQueued_) return;
    UnRegisterNotification(&RefBase::postProcessProc, this, kNotifyPostProcess);
    rescanQueued_ = 0;
}

BOOL RefBase::IsRealDependency(ReferenceTarget* target) {
    if (helper_ && helper_->GetPersistRef()) return TRUE;
    if (!vandrels::AreRecordsInessential()) return TRUE;
    if (target && target == target_) return FALSE;
    if (target && target->SuperClassID() == REFANIM_SUPER_CLASS_ID)
        return static_cast<RefAnim*>(target)->HasOverride() ? TRUE : FALSE;
    return TRUE;
}

// ------------------------------------------------------------------------------------------ scripting

BaseInterface* RefBase::GetInterface(Interface_ID id) {
    if (id == REFBASE_INTERFACE_ID) return static_cast<RefBaseInterface*>(this);
    return ReferenceTarget::GetInterface(id);
}

ReferenceTarget* RefBase::ScriptGetRefAnim(int index) {
    return index >= 0 && index < refAnims_.Count() ? refAnims_[index] : nullptr;
}

// ------------------------------------------------------------------------------------------ cloning

RefTargetHandle RefBase::Clone(RemapDir& remap) {
    auto* made = static_cast<Animatable*>(CreateInstance(SuperClassID(), ClassID()));
    auto* clone = dynamic_cast<RefBase*>(made);
    if (!clone) {
        if (made) made->DeleteThis();
        return nullptr;
    }
    BaseClone(this, clone, remap);
    return clone;
}

void RefBase::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    ReferenceTarget::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefBase*>(from);
    auto* dst = dynamic_cast<RefBase*>(to);
    if (!src || !dst) return;
    // The clone starts unbound; it keeps the positions of the list, filled only where a record carries overrides.
    const int first = dst->refAnims_.Count();
    dst->refAnims_.SetCount(first + src->refAnims_.Count());
    for (int i = 0; i < src->refAnims_.Count(); ++i) {
        RefAnim* record = src->refAnims_[i];
        if (record && record->HasOverride()) dst->ReplaceReference(1 + first + i, remap.CloneRef(record));
    }
}

// ------------------------------------------------------------------------------------------ save and load

IOResult RefBase::SaveFormatChunk(ISave* isave) { return chunkio::SaveValueChunk(isave, kFormatChunk, kFormatVersion); }

IOResult RefBase::SaveRefAnimCountChunk(ISave* isave) {
    return chunkio::SaveValueChunk(isave, kRefAnimCountChunk, std::int32_t(refAnims_.Count()));
}

IOResult RefBase::Save(ISave* isave) {
    if (SaveFormatChunk(isave) != IO_OK) return IO_ERROR;
    return SaveRefAnimCountChunk(isave);
}

IOResult RefBase::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        res = LoadChunk(iload);
        iload->CloseChunk();
        if (res != IO_OK) return res;
    }
    return res == IO_END ? IO_OK : res;
}

IOResult RefBase::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kFormatChunk: {
        std::uint32_t version = 0;
        return chunkio::ReadValue(iload, version);
    }
    case kRefAnimCountChunk: {
        std::int32_t count = 0;
        const IOResult res = chunkio::ReadCount(iload, count);
        if (res == IO_OK) chunkio::SizeWithNulls(refAnims_, count);
        return res;
    }
    default: return IO_OK;
    }
}

// ------------------------------------------------------------------------------------------ descriptors

namespace {

// The record classes' descriptors with the interface descriptions they list: "RefBase" on every record class,
// "RefNode" on node records. The material record's descriptor lists "RefBase" through RefBaseInterfaceDesc().
struct RecordClasses {
    SimpleClassDesc<RefBase> base{IDS_CLASS_REFBASE, L"RefBase", REFBASE_SUPER_CLASS_ID, REFBASE_CLASS_ID};
    SimpleClassDesc<RefNode> node{IDS_CLASS_REFNODE, L"RefNode", REFBASE_SUPER_CLASS_ID, REFNODE_CLASS_ID};
    FPInterfaceDesc baseFp{REFBASE_INTERFACE_ID,
                           L"RefBase",
                           0,
                           &base,
                           FP_MIXIN,
                           {FPFunctionDef(RefBaseInterface::kNumRefAnims, L"NumRefAnims", TYPE_INT),
                            FPFunctionDef(RefBaseInterface::kGetRefAnim, L"GetRefAnim", TYPE_REFTARG,
                                          {FPParamDef(L"index", TYPE_INT)})}};
    FPInterfaceDesc nodeFp{REFNODE_INTERFACE_ID,
                           L"RefNode",
                           0,
                           &node,
                           FP_MIXIN,
                           {FPFunctionDef(RefNodeInterface::kNumRefAnims, L"NumRefAnims", TYPE_INT),
                            FPFunctionDef(RefNodeInterface::kGetRefAnim, L"GetRefAnim", TYPE_REFTARG,
                                          {FPParamDef(L"Index", TYPE_INDEX)}),
                            FPFunctionDef(RefNodeInterface::kGetName, L"GetName", TYPE_STRING),
                            FPFunctionDef(RefNodeInterface::kSetName, L"SetName", TYPE_VOID,
                                          {FPParamDef(L"Name", TYPE_STRING)})}};

    RecordClasses() {
        node.AddInterface(&baseFp);
    }
};

RecordClasses& recordClasses() {
    static RecordClasses c;
    return c;
}

}  // namespace

FPInterfaceDesc* RefBaseInterfaceDesc() { return &recordClasses().baseFp; }
FPInterfaceDesc* RefNodeInterfaceDesc() { return &recordClasses().nodeFp; }

ClassDesc2* GetRefBaseDesc() { return &recordClasses().base; }
ClassDesc2* GetRefNodeDesc() { return &recordClasses().node; }
