// Value snapshots of parameter-block-2 parameters: which parameter (internal name, identifier, table index) and
// the value it had, one kind per value type a block holds, plus the table-size kind. A parameter record keeps
// them for the parameters the user changed locally and writes them into the freshly merged block after a reload.
#pragma once

#include "geom.h"
#include "hold.h"
#include "ioapi.h"
#include "iparamb2.h"
#include "strclass.h"
#include "tab.h"

#include <cstdint>
#include <vector>

// Kind numbers: file format (a snapshot list saves each snapshot's kind ahead of it).
enum Pblock2ParamKind : int {
    kParamKindBase = 0,
    kParamKindPoint3 = 1,
    kParamKindPoint4 = 2,
    kParamKindInt = 3,
    kParamKindFloat = 4,
    kParamKindMatrix3 = 5,
    kParamKindString = 6,
    kParamKindBitmap = 7,
    kParamKindTab = 8,
    kParamKindPoint2 = 9,
};

class Pblock2Param {
public:
    Pblock2Param() = default;
    Pblock2Param(const MSTR& name, int paramID, int tabIndex) : name(name), paramID(paramID), tabIndex(tabIndex) {}
    virtual ~Pblock2Param() = default;

    virtual int GetKind() const { return kParamKindBase; }
    // Chunks 0x0000 name, 0x0001 paramID and tabIndex, 0x0002 the value.
    IOResult Load(ILoad* iload);
    IOResult Save(ISave* isave);
    virtual IOResult LoadValue(ILoad*) { return IO_OK; }
    virtual IOResult SaveValue(ISave*) { return IO_OK; }
    // Reads the block's value at (paramID, time 0, tabIndex).
    virtual void Capture(IParamBlock2*) {}
    // Writes the stored value into block; answers whether the parameter was found and served. A parameter
    // that is gone or no longer of a fitting type leaves paramID at -1 and the block unchanged.
    virtual bool Apply(IParamBlock2* block) { return Find(block); }
    virtual Pblock2Param* Clone() const { return CopyBase(new Pblock2Param()); }

    // The snapshot's parameter in block: by identifier when it still carries the stored name, else by name
    // (paramID is updated); read-only parameters and table indices beyond the table fail.
    bool Find(IParamBlock2* block);

    MSTR name;
    int paramID = -1;
    int tabIndex = 0;

protected:
    Pblock2Param* CopyBase(Pblock2Param* to) const;
    // Find, then whether the parameter's value type (without the table flag) is one of types.
    bool FindServed(IParamBlock2* block, std::vector<int> types);
    // Whether a controller that reports itself animated drives the parameter.
    bool IsAnimatedParam(IParamBlock2* block);
};

// A snapshot of a fixed-size value; T is the stored type and Kind its kind number.
template <class T, int Kind> class Pblock2ValueParam : public Pblock2Param {
public:
    using Pblock2Param::Pblock2Param;
    int GetKind() const override { return Kind; }
    IOResult LoadValue(ILoad* iload) override;
    IOResult SaveValue(ISave* isave) override;
    void Capture(IParamBlock2* block) override;
    bool Apply(IParamBlock2* block) override;
    Pblock2Param* Clone() const override {
        auto* copy = new Pblock2ValueParam();
        copy->value = value;
        return CopyBase(copy);
    }
    T value{};
};

// A Matrix3 saved as its four rows and its flags word.
struct MatrixValue {
    float rows[4][3]{};
    std::uint32_t flags = 0;
    bool operator==(const MatrixValue&) const = default;
};

using FloatParam = Pblock2ValueParam<float, kParamKindFloat>;
using IntParam = Pblock2ValueParam<std::int32_t, kParamKindInt>;
using Point2Param = Pblock2ValueParam<Point2, kParamKindPoint2>;
using Point3Param = Pblock2ValueParam<Point3, kParamKindPoint3>;
using Point4Param = Pblock2ValueParam<Point4, kParamKindPoint4>;
using Matrix3Param = Pblock2ValueParam<MatrixValue, kParamKindMatrix3>;

class StringParam : public Pblock2Param {
public:
    using Pblock2Param::Pblock2Param;
    int GetKind() const override { return kParamKindString; }
    IOResult LoadValue(ILoad* iload) override { return iload->ReadWStringChunk(value); }
    IOResult SaveValue(ISave* isave) override { return isave->WriteWString(value); }
    void Capture(IParamBlock2* block) override;
    bool Apply(IParamBlock2* block) override;
    Pblock2Param* Clone() const override {
        auto* copy = new StringParam();
        copy->value = value;
        return CopyBase(copy);
    }
    MSTR value;
};

// The host's blocks hold no bitmap values: the kind keeps its place in the file format, stores nothing and
// never applies.
class BitmapParam : public Pblock2Param {
public:
    using Pblock2Param::Pblock2Param;
    int GetKind() const override { return kParamKindBitmap; }
    bool Apply(IParamBlock2* block) override;
    Pblock2Param* Clone() const override { return CopyBase(new BitmapParam()); }
};

// The size of a table parameter (tabIndex -1): its count and its value type without the table flag.
class TabParam : public Pblock2Param {
public:
    using Pblock2Param::Pblock2Param;
    int GetKind() const override { return kParamKindTab; }
    IOResult LoadValue(ILoad* iload) override;
    IOResult SaveValue(ISave* isave) override;
    void Capture(IParamBlock2* block) override;
    bool Apply(IParamBlock2* block) override;
    Pblock2Param* Clone() const override {
        auto* copy = new TabParam();
        copy->count = count;
        copy->type = type;
        return CopyBase(copy);
    }
    std::int32_t count = 0;
    std::int32_t type = 0;
};

// A new snapshot of kind (the base kind for a number outside the family).
Pblock2Param* MakePblock2Param(int kind);
// A snapshot of the kind that serves the value type of block's parameter paramID, named after it and holding
// its current value at tabIndex; null when the block has no such parameter.
Pblock2Param* SnapshotParam(IParamBlock2* block, int paramID, int tabIndex);

// Snapshot lists: chunk 0x0000 the count, then per snapshot 0x0001 its kind and 0x0002 its chunks.
IOResult SaveParamList(ISave* isave, const Tab<Pblock2Param*>& list);
// Appends the snapshots read to list.
IOResult LoadParamList(ILoad* iload, Tab<Pblock2Param*>& list);
void DeleteParamList(Tab<Pblock2Param*>& list);

// Undo of a change to a snapshot list: the list's pointers before and after. The snapshot the change appended
// lives only in the redo copy while the change is undone, and is deleted with the restore then; a snapshot the
// change replaced is deleted with the restore while the change stands.
class Param2ArrayRestore : public RestoreObj {
public:
    Param2ArrayRestore(Tab<Pblock2Param*>* list, Pblock2Param* param, bool added)
        : undo_(*list), param_(param), added_(added ? 1 : 0), list_(list) {}
    ~Param2ArrayRestore() override;
    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"Param2ArrayRestore"); }

private:
    Tab<Pblock2Param*> undo_;
    Tab<Pblock2Param*> redo_;
    Pblock2Param* param_;
    int added_;
    int undone_ = 0;
    Tab<Pblock2Param*>* list_;
};
