// The reference system: Animatable (sub-anims, flags, property lists, custom attributes, interfaces),
// ReferenceMaker (numbered references to targets) and ReferenceTarget (dependents, messages, cloning, deletion).
// References are kept both ways: the maker's slots and the target's list of dependents.
#pragma once

#include "bitarray.h"
#include "classids.h"
#include "geom.h"
#include "strclass.h"
#include "tab.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

class ReferenceMaker;
class ReferenceTarget;
class RemapDir;
class ISave;
class ILoad;
class IParamBlock2;
class BaseInterface;
class ICustAttribContainer;
class IObjParam;
class AssetEnumCallback;
using RefTargetHandle = ReferenceTarget*;
using RefMakerHandle = ReferenceMaker*;

// Reference messages the host itself sends.
#define REFMSG_TARGET_DELETED 0x00000020
#define REFMSG_CHANGE 0x00000050
#define REFMSG_SUBANIM_STRUCTURE_CHANGED 0x00000102
#define REFMSG_GET_NODE_HANDLE 0x00000220
#define REFMSG_USER 0x00010000

#define PART_ALL 0xFFFFFFFF
#define NOTIFY_ALL 0xFFFFFFF0

// Flag bits of Animatable's flag word. The work bits are left to plug-ins; the host never sets them.
#define A_WORK1 0x00001000
#define A_WORK2 0x00002000
#define A_WORK3 0x00004000
#define A_WORK4 0x00008000
#define A_PLUGIN1 0x00100000
#define A_PLUGIN2 0x00200000
#define A_PLUGIN3 0x00400000
#define A_PLUGIN4 0x00800000
#define A_LOCK_TARGET 0x08000000  // a locked target never deletes itself automatically
#define A_IS_DELETED 0x40000000   // set by the host while a target is being deleted

// An item of an animatable's property list. Items marked "do not delete" are only unlinked, never deleted,
// when they are removed or when their animatable dies.
class AnimProperty {
public:
    virtual ~AnimProperty() = default;
    virtual DWORD ID() = 0;
    virtual BOOL DontDelete() { return FALSE; }
};

class AnimPropertyList : public Tab<AnimProperty*> {
public:
    // Index of the first item with this id at or after start, -1 when none.
    int FindProperty(DWORD id, int start = 0);
};

// An ordered multiset of pointers: the host's bookkeeping of the dependents of a target (one entry per
// reference) and of the targets a maker holds. Most lists hold one or two entries: those live inline and are
// searched linearly. A list that grows beyond kIndexFrom entries gets an index from item to its positions;
// removals then leave holes, closed up once they outnumber the entries, so every operation stays constant
// time (amortized). Adding entries while iterating is not allowed.
template <class T> class RefList {
public:
    static constexpr std::size_t kIndexFrom = 16;

    RefList() = default;
    RefList(const RefList&) = delete;
    RefList& operator=(const RefList&) = delete;
    ~RefList() {
        if (onHeap()) delete[] heap_;
    }

    // Walks the entries in order (holes are skipped).
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T*;
        using difference_type = std::ptrdiff_t;
        using pointer = T* const*;
        using reference = T* const&;
        const_iterator() = default;
        reference operator*() const { return *p_; }
        const_iterator& operator++() {
            ++p_;
            skip();
            return *this;
        }
        const_iterator operator++(int) {
            const_iterator old = *this;
            ++*this;
            return old;
        }
        bool operator==(const const_iterator& o) const { return p_ == o.p_; }
        bool operator!=(const const_iterator& o) const { return p_ != o.p_; }

    private:
        friend class RefList;
        const_iterator(T* const* p, T* const* end) : p_(p), end_(end) { skip(); }
        void skip() {
            while (p_ != end_ && !*p_) ++p_;
        }
        T* const* p_ = nullptr;
        T* const* end_ = nullptr;
    };
    const_iterator begin() const { return const_iterator(data() + (index_ ? index_->head : 0), data() + used_); }
    const_iterator end() const { return const_iterator(data() + used_, data() + used_); }

    std::size_t size() const { return used_ - holes(); }
    bool empty() const { return size() == 0; }
    bool Contains(T* item) const { return Count(item) != 0; }
    int Count(T* item) const {
        if (index_) {
            auto it = index_->at.find(item);
            return it == index_->at.end() ? 0 : 1 + int(it->second.later.size());
        }
        int n = 0;
        for (std::uint32_t i = 0; i < used_; ++i) n += data()[i] == item;
        return n;
    }
    // Each distinct item once, in the order it first entered.
    std::vector<T*> Unique() const {
        std::vector<T*> out;
        T* const* d = data();
        if (index_) {
            out.reserve(index_->at.size());
            for (std::uint32_t i = index_->head; i < used_; ++i)
                if (d[i] && index_->at.find(d[i])->second.first == i) out.push_back(d[i]);
            return out;
        }
        out.reserve(used_);
        for (std::uint32_t i = 0; i < used_; ++i)
            if (std::find(d, d + i, d[i]) == d + i) out.push_back(d[i]);
        return out;
    }
    void Add(T* item) {
        if (!item) return;
        if (used_ == capacity_) grow();
        data()[used_] = item;
        if (index_)
            note(item, used_);
        else if (used_ + 1 > kIndexFrom)
            buildIndex(used_ + 1);
        ++used_;
    }
    // Removes the latest entry of item; false when there is none.
    bool RemoveOne(T* item) {
        if (!item) return false;
        T** d = data();
        if (!index_) {
            for (std::uint32_t i = used_; i-- > 0;)
                if (d[i] == item) {
                    std::copy(d + i + 1, d + used_, d + i);
                    --used_;
                    return true;
                }
            return false;
        }
        auto it = index_->at.find(item);
        if (it == index_->at.end()) return false;
        Positions& p = it->second;
        std::uint32_t at;
        if (p.later.empty()) {
            at = p.first;
            index_->at.erase(it);
        } else {
            at = p.later.back();
            p.later.pop_back();
        }
        d[at] = nullptr;
        ++index_->holes;
        while (used_ > 0 && !d[used_ - 1]) {  // holes at the end go at once
            --used_;
            --index_->holes;
        }
        // Walks start at the first entry: removals in the order of entry do not make them skip ever more holes.
        while (index_->head < used_ && !d[index_->head]) ++index_->head;
        if (index_->head > used_) index_->head = used_;
        if (index_->holes > size() || size() <= kIndexFrom / 2) compact();
        return true;
    }
    void Clear() {
        if (onHeap()) delete[] heap_;
        capacity_ = kInline;
        used_ = 0;
        index_.reset();
    }

private:
    static constexpr std::uint32_t kInline = 2;
    // Positions of one item: the first, then the later ones in ascending order.
    struct Positions {
        std::uint32_t first = 0;
        std::vector<std::uint32_t> later;
    };
    struct Index {
        std::unordered_map<T*, Positions> at;
        std::uint32_t holes = 0;
        std::uint32_t head = 0;  // no entry before this slot
    };

    bool onHeap() const { return capacity_ > kInline; }
    T** data() { return onHeap() ? heap_ : inline_; }
    T* const* data() const { return onHeap() ? heap_ : inline_; }
    std::uint32_t holes() const { return index_ ? index_->holes : 0; }

    void grow() {
        const std::uint32_t cap = capacity_ < 4 ? 4 : capacity_ * 2;
        T** fresh = new T*[cap];
        std::copy(data(), data() + used_, fresh);
        if (onHeap()) delete[] heap_;
        heap_ = fresh;
        capacity_ = cap;
    }
    void note(T* item, std::uint32_t pos) {
        auto [it, added] = index_->at.try_emplace(item);
        if (added)
            it->second.first = pos;
        else
            it->second.later.push_back(pos);
    }
    void buildIndex(std::uint32_t count) {
        index_ = std::make_unique<Index>();
        index_->at.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) note(data()[i], i);
    }
    // Closes the holes; a list that has become small again drops its index.
    void compact() {
        T** d = data();
        std::uint32_t n = 0;
        for (std::uint32_t i = 0; i < used_; ++i)
            if (d[i]) d[n++] = d[i];
        used_ = n;
        index_.reset();
        if (n > kIndexFrom / 2) buildIndex(n);
    }

    union {
        T* inline_[kInline];
        T** heap_;
    };
    std::uint32_t used_ = 0;  // slots in use, holes included
    std::uint32_t capacity_ = kInline;
    std::unique_ptr<Index> index_;
};

class Animatable {
public:
    Animatable();
    Animatable(const Animatable&) = delete;
    Animatable& operator=(const Animatable&) = delete;
    virtual ~Animatable();
    virtual void DeleteThis() { delete this; }

    // Identity.
    virtual Class_ID ClassID() { return Class_ID(0, 0); }
    virtual SClass_ID SuperClassID() { return 0; }
    virtual void GetClassName(MSTR& s, bool localized = true) const;
    MSTR ClassName() const { MSTR s; GetClassName(s); return s; }
    virtual bool IsRefMaker() { return false; }
    virtual bool IsRefTarget() { return false; }

    // A number that identifies this object while the program runs; never reused.
    static AnimHandle GetHandleByAnim(const Animatable* anim);
    static Animatable* GetAnimByHandle(AnimHandle handle);

    // Sub-animatables.
    virtual int NumSubs() { return 0; }
    virtual Animatable* SubAnim(int i) { return nullptr; }
    virtual MSTR SubAnimName(int i, bool localized = true) { return MSTR(); }
    virtual int SubNumToRefNum(int subNum) { return -1; }
    virtual BOOL CanAssignController(int subAnim) { return FALSE; }
    virtual BOOL AssignController(Animatable* control, int subAnim) { return FALSE; }
    virtual BOOL CanDeleteSubAnim(int i) { return FALSE; }
    virtual void DeleteSubAnim(int i) {}
    virtual int NumParamBlocks() { return 0; }
    virtual IParamBlock2* GetParamBlock(int i) { return nullptr; }
    virtual IParamBlock2* GetParamBlockByID(short id) { return nullptr; }
    virtual BOOL CanCopyAnim() { return TRUE; }
    virtual BOOL IsAnimated() { return FALSE; }

    // Interfaces by number and by identifier.
    virtual void* GetInterface(ULONG id) { return nullptr; }
    virtual BaseInterface* GetInterface(Interface_ID id) { return nullptr; }

    // Host properties by id: the base takes none.
    virtual int SetProperty(ULONG id, void* data) { return 0; }
    virtual void* GetProperty(ULONG id) { return nullptr; }

    // Editing in the command panel.
    virtual void BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) {}
    virtual void EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) {}

    // Flag word.
    void SetAFlag(DWORD mask) { aflag |= mask; }
    void ClearAFlag(DWORD mask) { aflag &= ~mask; }
    BOOL TestAFlag(DWORD mask) const { return (aflag & mask) ? TRUE : FALSE; }

    // Property list.
    AnimPropertyList aprops;
    AnimProperty* GetAProp(DWORD id);
    int AddAProp(AnimProperty* ap);
    // Unlinks the item; deletes it unless it is marked "do not delete".
    BOOL RemoveAProp(AnimProperty* ap);
    BOOL DeleteAProp(DWORD id);

    // Custom attributes: every animatable can carry a container, made on demand.
    ICustAttribContainer* GetCustAttribContainer() { return cc; }
    void AllocCustAttribContainer();
    void DeleteCustAttribContainer();
    // Used by the scene reader to attach a loaded container.
    void SetCustAttribContainer(ICustAttribContainer* container);

protected:
    DWORD aflag = 0;
    ICustAttribContainer* cc = nullptr;

private:
    AnimHandle handle_;
};

class ReferenceMaker : public Animatable {
public:
    ~ReferenceMaker() override;
    bool IsRefMaker() override { return true; }

    // The numbered references; subclasses keep the slots.
    virtual int NumRefs() { return 0; }
    virtual RefTargetHandle GetReference(int i) { return nullptr; }
    virtual void SetReference(int i, RefTargetHandle rtarg) {}

    // Sets reference i with the dependency bookkeeping; undoable while the hold is holding.
    // A replaced target that nothing needs any more deletes itself when delOld is set.
    RefResult ReplaceReference(int which, RefTargetHandle newtarg, BOOL delOld = TRUE);
    RefResult DeleteReference(int which, BOOL delOld = TRUE);
    RefResult DeleteAllRefsFromMe();
    virtual RefResult DeleteAllRefs() { return DeleteAllRefsFromMe(); }
    // Index of the first reference to rtarg, -1 when none.
    int FindRef(RefTargetHandle rtarg);

    // Receives a message sent by (or passed on through) the target hTarget. Answer REF_STOP to keep the
    // message from travelling on to this maker's own dependents.
    virtual RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                                       RefMessage message, BOOL propagate) {
        return REF_SUCCEED;
    }

    // A reference that is no real dependency is weak: it keeps nothing alive and a scene save writes it
    // only when its target is written through a real reference anyway.
    virtual BOOL IsRealDependency(ReferenceTarget* rtarg) { return TRUE; }
    // Whether reference i may be moved to another target by a reference transfer.
    virtual BOOL CanTransferReference(int i) { return TRUE; }

    // Asset enumeration (assetmanagement.h): a maker reports its own file assets, then calls this base, which
    // enumerates the targets of its references.
    virtual void EnumAuxFiles(AssetEnumCallback& assetEnum, DWORD flags);

    virtual IOResult Save(ISave* isave) { return IO_OK; }
    virtual IOResult Load(ILoad* iload) { return IO_OK; }

private:
    friend class ReferenceTarget;
    friend struct RefBookkeeping;
    RefList<ReferenceTarget> held_;  // the targets held, one entry per reference
};

class DependentEnumProc {
public:
    enum { DEP_ENUM_CONTINUE = 0, DEP_ENUM_HALT = 1, DEP_ENUM_SKIP = 2 };
    virtual ~DependentEnumProc() = default;
    // Called for each dependent: continue (also visit its dependents), skip (not its dependents) or halt.
    virtual int proc(ReferenceMaker* rmaker) = 0;
    // True when rmaker was visited before in this enumeration (and marks it visited).
    bool Visited(ReferenceMaker* rmaker);

private:
    std::vector<ReferenceMaker*> visited_;
};
#define DEP_ENUM_CONTINUE 0
#define DEP_ENUM_HALT 1
#define DEP_ENUM_SKIP 2

class ReferenceTarget : public ReferenceMaker {
public:
    ~ReferenceTarget() override;
    bool IsRefTarget() override { return true; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }

    // Cloning: make the new object, then call BaseClone(this, clone, remap).
    virtual RefTargetHandle Clone(RemapDir& remap) { return nullptr; }
    virtual void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap);

    // Sends a message to every dependent (of superclass sclass unless NOTIFY_ALL). A dependent that does
    // not answer REF_STOP passes it on to its own dependents, with itself as the changed target. The same
    // part identifier travels by reference, so a receiver can write an answer into it.
    RefResult NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message,
                               SClass_ID sclass = NOTIFY_ALL, BOOL propagate = TRUE, RefTargetHandle hTarg = nullptr);
    // Walks the dependents, and their dependents unless the procedure answers skip; 1 when halted.
    int DoEnumDependents(DependentEnumProc* dep);

    // Moves every transferable reference to oldTarget over to this target.
    RefResult TransferReferences(RefTargetHandle oldTarget, BOOL delOld = FALSE);
    // Tells the dependents that this target is deleted, clears their references to it, drops its own
    // references and deletes it.
    RefResult DeleteMe();
    // Deletes this target when no dependent really depends on it, it is not locked and no undo record pins it.
    virtual RefResult MaybeAutoDelete();
    RefResult DeleteAllRefsToMe();

    // Direct dependents, one entry per reference (a maker holding two references appears twice), in the order
    // they became dependents.
    const RefList<ReferenceMaker>& Dependents() const { return deps_; }
    bool HasDependents() const { return !deps_.empty(); }
    bool HasRealDependents();

    // Host use: undo records pin the targets they may restore so that they outlive their last reference.
    void PinForUndo() { ++pins_; }
    void UnpinForUndo();

private:
    friend struct RefBookkeeping;
    RefList<ReferenceMaker> deps_;
    int pins_ = 0;
};

// Walks the direct dependents of a target over a snapshot taken at construction; makers that stop being
// dependents during the walk are skipped.
class DependentIterator {
public:
    explicit DependentIterator(ReferenceTarget* target);
    ReferenceMaker* Next();
    void Reset() { pos_ = 0; }

private:
    ReferenceTarget* target_;
    std::vector<ReferenceMaker*> snapshot_;
    std::size_t pos_ = 0;
};

// Switches reference messages off and on for the whole host (nested).
void DisableRefMsgs();
void EnableRefMsgs();
bool RefMsgsEnabled();

class PostPatchProc {
public:
    virtual ~PostPatchProc() = default;
    virtual int Proc(RemapDir& remap) = 0;
};

// Remembers, within one clone operation, the clone of every original, so each is cloned once.
class RemapDir {
public:
    virtual ~RemapDir() = default;
    virtual RefTargetHandle FindMapping(RefTargetHandle from) = 0;
    // The clone of oldTarg in this operation, made on first request.
    virtual RefTargetHandle CloneRef(RefTargetHandle oldTarg) = 0;
    template <class T> T* CloneRef(T* oldTarg) {
        return static_cast<T*>(CloneRef(static_cast<RefTargetHandle>(oldTarg)));
    }
    virtual void AddEntry(RefTargetHandle hfrom, RefTargetHandle hto) = 0;
    // Sets *patchThis to the clone of oldTarg once the operation ends (or to oldTarg when it was not cloned).
    virtual void PatchPointer(RefTargetHandle* patchThis, RefTargetHandle oldTarg) = 0;
    virtual void AddPostPatchProc(PostPatchProc* proc, bool toDelete) = 0;
    // Runs the pointer patches and the post-patch procedures; DeleteThis does it when not done yet.
    virtual void Backpatch() = 0;
    virtual void Clear() = 0;
    virtual void DeleteThis() = 0;
};
RemapDir& NewRemapDir(BOOL use_A_WORK2_flag = FALSE);
// Clones a target and everything it references in one operation.
RefTargetHandle CloneRefHierarchy(RefTargetHandle target);

// A custom attribute: a reference target carried in an animatable's container.
class CustAttrib : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return CUST_ATTRIB_CLASS_ID; }
    virtual const MCHAR* GetName(bool localized = true) { return L""; }
};

// The custom-attribute container of an animatable: its references and sub-anims are its attributes.
// Adding or removing an attribute makes the owner tell its dependents that its structure changed (258).
class ICustAttribContainer : public ReferenceTarget {
public:
    virtual int GetNumCustAttribs() = 0;
    virtual CustAttrib* GetCustAttrib(int i) = 0;
    virtual void AppendCustAttrib(CustAttrib* attribute) = 0;
    virtual void InsertCustAttrib(int i, CustAttrib* attribute) = 0;
    virtual void RemoveCustAttrib(int i) = 0;
    virtual Animatable* GetOwner() = 0;
    virtual void SetOwner(Animatable* owner) = 0;
};
