// Parameter blocks 2: the descriptor of a class's block (ParamBlockDesc2, built with a typed fluent builder),
// the block itself (IParamBlock2, a reference target of superclass 0x82), accessors and the value they see.
#pragma once

#include "control.h"
#include "paramtype.h"
#include "plugapi.h"

#include <concepts>
#include <initializer_list>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

class INode;
class Mtl;
class Texmap;
class IParamBlock2;
class IParamMap2;
class ParamMap2UserDlgProc;
using ParamID = short;
using StringResID = int;

// Class id under which the host registers its parameter block 2 class (superclass PARAMETER_BLOCK2_CLASS_ID).
#define PARAMBLOCK2_HOST_CLASS_ID Class_ID(0x2B6D4C30, 0x1A7E5B91)

// Flags of a parameter. The host acts on P_ANIMATABLE, P_TRANSIENT, P_NO_INIT, P_RESET_DEFAULT and P_NO_REF;
// the others are kept for the user interface and scripts.
#define P_ANIMATABLE 0x00000001      // takes a controller (one per table entry); its sub-anim is the controller
#define P_TRANSIENT 0x00000002       // its value is not saved and reverts to the default on load
#define P_NO_INIT 0x00000004         // not given its default when a block is made (keeps zero / empty)
#define P_COMPUTED_NAME 0x00000008
#define P_INVISIBLE 0x00000010       // not shown in the track view
#define P_RESET_DEFAULT 0x00000020   // every new block gets the original default, never a changed class default
#define P_SUBANIM 0x00000040
#define P_TV_SHOW_ALL 0x00000080
#define P_NO_REF 0x00000100          // a reference-type value kept as a plain pointer, not as a reference
#define P_OWNERS_REF 0x00000200
#define P_CAN_CONVERT 0x00000400
#define P_SUBTEX 0x00000800
#define P_VARIABLE_SIZE 0x00001000   // a table whose count the user may change
#define P_NO_AUTO_LABELS 0x00002000
#define P_SHORT_LABELS 0x00004000
#define P_READ_ONLY 0x00008000       // read-only for scripts and the user interface (SetValue still works)

// Flags of a block descriptor. The host acts on P_AUTO_CONSTRUCT and P_AUTO_UI.
#define P_CLASS_PARAMS 0x0001
#define P_AUTO_CONSTRUCT 0x0002      // MakeAutoParamBlocks makes the block as reference RefNo() of the owner
#define P_AUTO_UI 0x0004             // ClassDesc2::BeginEditParams opens the block's rollout
#define P_USE_PARAMS 0x0008
#define P_INCLUDE_PARAMS 0x0010
#define P_SCRIPTED_CLASS 0x0020
#define P_TEMPLATE_UI 0x0040
#define P_HASCATEGORY 0x0080
#define P_VERSION 0x0200

namespace hostrt {

// The storage kind of a parameter type: what a block keeps for each value.
enum class ValueKind { None, Int, Float, Point2, Point3, Point4, Matrix3, String, Ref };
// Kind of a parameter type (the table flag is ignored); None for types a block cannot hold.
ValueKind KindOfType(int type);
// Whether a type's values are reference targets (material, texture map, node, reference target, block).
bool IsReferenceType(int type);

// A parameter value as a block stores it. Colours are kept as points (Color as Point3, AColor as Point4),
// every integer-like type (int, BOOL, time, radio index, index) as int, file names and strings as MSTR.
class ParamValue {
public:
    using Storage = std::variant<std::monostate, int, float, Point2, Point3, Point4, Matrix3, MSTR, ReferenceTarget*>;

    ParamValue() = default;
    ParamValue(int v) : v_(v) {}
    ParamValue(float v) : v_(v) {}
    ParamValue(double v) : v_(float(v)) {}
    ParamValue(const Point2& v) : v_(v) {}
    ParamValue(const Point3& v) : v_(v) {}
    ParamValue(const Color& v) : v_(Point3(v.r, v.g, v.b)) {}
    ParamValue(const Point4& v) : v_(v) {}
    ParamValue(const AColor& v) : v_(Point4(v.r, v.g, v.b, v.a)) {}
    ParamValue(const Matrix3& v) : v_(v) {}
    ParamValue(const MCHAR* v) : v_(MSTR(v)) {}
    ParamValue(const MSTR& v) : v_(v) {}
    ParamValue(ReferenceTarget* v) : v_(v) {}
    ParamValue(std::nullptr_t) : v_(static_cast<ReferenceTarget*>(nullptr)) {}

    ValueKind Kind() const;
    bool Empty() const { return std::holds_alternative<std::monostate>(v_); }
    const Storage& Get() const { return v_; }

    // The value in another kind: numbers convert both ways (floats round to the nearest int), a kind converts
    // to itself; nothing for any other pair.
    std::optional<ParamValue> ConvertedTo(ValueKind kind) const;
    // The zero of a kind: 0, origin, identity matrix, empty string, null target.
    static ParamValue ZeroOf(ValueKind kind);

    int AsInt() const;
    float AsFloat() const;
    Point2 AsPoint2() const;
    Point3 AsPoint3() const;
    Point4 AsPoint4() const;
    Matrix3 AsMatrix3() const;
    const MSTR& AsString() const;
    ReferenceTarget* AsRef() const;

    bool operator==(const ParamValue& o) const { return v_ == o.v_; }

private:
    Storage v_;
};

// One entry of a parameter: its value, or its controller when one drives it.
struct PB2Entry {
    ParamValue value;
    Control* control = nullptr;
};

}  // namespace hostrt

// The value an accessor sees: the member that matches the parameter's kind is set (i for integer-like types,
// f for float types, p for Point3/colour, p4 for Point4/AColor, p2, m, s for strings, r for targets).
// Pointer members point at the block's working copy; an accessor may write through them or re-point them.
struct PB2Value {
    PB2Value() : r(nullptr) {}
    union {
        int i;
        float f;
        TimeValue t;
        Point2* p2;
        Point3* p;
        Point4* p4;
        Matrix3* m;
        const MCHAR* s;
        ReferenceTarget* r;
    };
    BYTE flags = 0;
};

// What changed in a table (PBAccessor::TabChanged).
enum tab_changes { tab_insert, tab_append, tab_delete, tab_ref_deleted, tab_setcount, tab_sort };

// Hooks of a class into its parameters' reads and writes.
class PBAccessor {
public:
    virtual ~PBAccessor() = default;
    // After every read; may change the value answered (and narrow valid).
    virtual void Get(PB2Value& v, ReferenceMaker* owner, ParamID id, int tabIndex, TimeValue t, Interval& valid) {}
    // After every SetValue: the block already holds the new value, which v also carries. Changing v here
    // replaces the stored value (unless the accessor set the parameter itself meanwhile). An accessor may call
    // SetValue on the block; guarding its own recursion is its job.
    virtual void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int tabIndex, TimeValue t) {}
    // After a table's count changed: count entries from tabIndex were inserted, appended or deleted; for
    // tab_setcount tabIndex is 0 and count the new count.
    virtual void TabChanged(tab_changes changeCode, ReferenceMaker* owner, ParamID id, int tabIndex, int count) {}
    virtual void DeleteThis() {}
};

// The control a parameter shows in its block's automatic rollout.
enum class PBControl { None, CheckBox, CustEdit, Spinner, RadioButtons, ComboBox };
// What a spinner edits.
enum EditSpinnerType { EDITTYPE_INT = 1, EDITTYPE_FLOAT = 2, EDITTYPE_UNIVERSE = 3, EDITTYPE_POS_INT = 4,
                       EDITTYPE_POS_FLOAT = 5, EDITTYPE_TIME = 6 };

struct ParamUIDesc2 {
    PBControl kind = PBControl::None;
    // Control ids: the check box, edit or combo box; for a spinner its edit then its spinner; for radio buttons
    // one per value, button k standing for value k.
    std::vector<int> ctrl_ids;
    EditSpinnerType spin_type = EDITTYPE_FLOAT;
    float spin_scale = 0.1f;
    // A combo box's items (string ids of the library), item k standing for value k.
    std::vector<StringResID> item_ids{};
};

// Definition of one parameter of a block.
struct ParamDef {
    ParamID ID = -1;
    MSTR int_name;                 // internal (script) name; may be empty
    ParamType2 type = TYPE_VOID;   // with TYPE_TAB (0x800) for tables
    DWORD flags = 0;
    StringResID local_name = 0;    // string id of the label
    hostrt::ParamValue def;        // the original default
    hostrt::ParamValue cur_def;    // the class default new blocks get (unless P_RESET_DEFAULT)
    bool has_range = false;
    hostrt::ParamValue range_low, range_high;
    PBAccessor* accessor = nullptr;
    int tab_size = 0;              // initial count of a table
    int asset_type_id = -1;        // asset type of a file name (-1 none)
    StringResID file_types = 0;    // string id of a file-name parameter's file-type filter
    StringResID caption = 0;       // string id of a file-name parameter's browse caption
    ParamUIDesc2 ui;

    bool IsTable() const { return is_tab(type); }
    hostrt::ValueKind Kind() const { return hostrt::KindOfType(type); }
    // A reference of its block: a reference-type value without P_NO_REF.
    bool IsReference() const { return hostrt::IsReferenceType(type) && !(flags & P_NO_REF); }
    // Takes controllers: animatable and of a float, integer, point3/colour or point4/colour kind.
    bool IsAnimatable() const;
};

class ParamBlockDesc2;

// Fills in one parameter definition: desc.AddParam(...).Default(...).Range(...).Accessor(...).CheckBox(...).
// Raises MAXException, naming the block and the parameter, for values that do not fit the parameter's type.
class ParamDefBuilder {
public:
    ParamDefBuilder(ParamBlockDesc2* desc, int index) : desc_(desc), index_(index) {}
    ParamDefBuilder& Default(const hostrt::ParamValue& v);
    ParamDefBuilder& Range(const hostrt::ParamValue& low, const hostrt::ParamValue& high);
    ParamDefBuilder& Accessor(PBAccessor* accessor);
    ParamDefBuilder& TableSize(int count);
    ParamDefBuilder& AssetType(int assetTypeId);
    ParamDefBuilder& FileTypes(StringResID id);
    ParamDefBuilder& Caption(StringResID id);
    ParamDefBuilder& CheckBox(int ctrlId);
    ParamDefBuilder& UI_CustEdit(int ctrlId);
    ParamDefBuilder& Spinner(int editId, int spinnerId, EditSpinnerType type = EDITTYPE_FLOAT, float scale = 0.1f);
    // Button k sets the parameter to k.
    ParamDefBuilder& RadioButtons(std::initializer_list<int> ctrlIds);
    // A drop-down list of the texts items (string ids); item k sets the parameter to k.
    ParamDefBuilder& ComboBox(int ctrlId, std::initializer_list<StringResID> items);
    ParamDef& Def();

private:
    hostrt::ParamValue fit(const hostrt::ParamValue& v, const char* what);
    ParamBlockDesc2* desc_;
    int index_;
};

// The descriptor of one parameter block of a class: its parameters and its rollout. It adds itself to its class
// descriptor. Typical use, as a static of the plug-in:
//   static ParamBlockDesc2 desc(0, L"Parameters", 0, &classDesc, P_AUTO_CONSTRUCT | P_AUTO_UI);
//   desc.AutoConstruct(0).AutoUI(101, 4, 0);
//   desc.AddParam(1, L"FileName", TYPE_FILENAME, 0, 5).Default(L"").UI_CustEdit(1301);
class ParamBlockDesc2 {
public:
    ParamBlockDesc2(BlockID id, const MCHAR* intName, StringResID localName, ClassDesc2* cd, DWORD flags);
    ParamBlockDesc2(const ParamBlockDesc2&) = delete;
    ParamBlockDesc2& operator=(const ParamBlockDesc2&) = delete;

    // Makes the block reference refNo of its owner in MakeAutoParamBlocks (sets P_AUTO_CONSTRUCT).
    ParamBlockDesc2& AutoConstruct(int refNo);
    // The automatic rollout: dialog template id, title string id, rollout flags (sets P_AUTO_UI).
    ParamBlockDesc2& AutoUI(int dialogId, StringResID titleId, int rolloutFlags);
    void SetUserDlgProc(ParamMap2UserDlgProc* proc) { user_dlg_proc = proc; }
    ParamMap2UserDlgProc* GetUserDlgProc() const { return user_dlg_proc; }

    // Adds a parameter; ids are unique within the block (a second one raises MAXException), and the type must
    // be one a block can hold.
    ParamDefBuilder AddParam(ParamID id, const MCHAR* intName, ParamType2 type, DWORD flags, StringResID localName);

    int Count() const { return int(params_.size()); }
    ParamID IndextoID(int index) const;        // -1 when out of range
    int IDtoIndex(ParamID id) const;           // -1 for an unknown id
    // Index of the parameter with this internal name (case-insensitive), -1 when none.
    int NameToIndex(const MCHAR* name) const;
    // Raises MAXException for an unknown id or index.
    ParamDef& GetParamDef(ParamID id);
    ParamDef& GetParamDefByIndex(int index);
    // Changes the class default of a parameter (what new blocks get unless it is P_RESET_DEFAULT).
    void SetClassDefault(ParamID id, const hostrt::ParamValue& v);
    // Puts every class default back to the original default.
    void ResetClassDefaults();
    // "block 'Parameters' (id 0) of class Foo": how error messages name this block.
    MSTR Describe() const;

    BlockID ID;
    MSTR int_name;
    StringResID local_name;
    ClassDesc2* cd;
    DWORD flags;
    int ref_no = -1;          // reference index in the owner (P_AUTO_CONSTRUCT)
    int dlg_template = 0;     // rollout dialog id (P_AUTO_UI)
    StringResID title = 0;    // rollout title string id
    int rollup_flags = 0;
    ParamMap2UserDlgProc* user_dlg_proc = nullptr;

private:
    std::vector<ParamDef> params_;
};

// A parameter block: the values of one ParamBlockDesc2 for one owner.
//
// References: the block's references are laid out parameter by parameter in descriptor order. A reference
// parameter (material, texture map, node, reference target, block; not P_NO_REF) takes one slot per value (one
// per table entry); an animatable parameter takes one slot per value for its controller; other parameters take
// none. Table counts therefore decide NumRefs(), and Load sizes tables before references are restored.
//
// Sub-anims: one per parameter, sub-anim i standing for parameter index i and named by its internal name. It is
// the controller of a plain animatable parameter, the value of a plain material or texture-map parameter, and
// null for everything else (tables included).
//
// Changes (SetValue, controller and table edits) are undoable while theHold holds. After a change the block
// records LastNotifyParamID and sends REFMSG_CHANGE to its dependents (table count changes record tab index -1).
class IParamBlock2 : public ReferenceTarget {
public:
    // A block of pdesc with its defaults. A block made with no descriptor gets it from Load.
    IParamBlock2(ParamBlockDesc2* pdesc, ReferenceMaker* owner);
    ~IParamBlock2() override;

    Class_ID ClassID() override { return PARAMBLOCK2_HOST_CLASS_ID; }
    SClass_ID SuperClassID() override { return PARAMETER_BLOCK2_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"ParamBlock2"; }

    BlockID ID() const;
    ParamBlockDesc2* GetDesc() const { return desc_; }
    // The object whose block this is: the owner given at creation, else (after load or clone) the dependent
    // whose class is the descriptor's class.
    ReferenceMaker* GetOwner();
    int NumParams() const { return int(params_.size()); }
    ParamID IndextoID(int index) const { return desc_ ? desc_->IndextoID(index) : ParamID(-1); }
    int IDtoIndex(ParamID id) const { return desc_ ? desc_->IDtoIndex(id) : -1; }
    ParamDef& GetParamDef(ParamID id);
    // Type of a parameter with the table flag; TYPE_VOID for an unknown id.
    ParamType2 GetParameterType(ParamID id) const;

    // Reads a value at time t (through its controller when it has one, then the accessor's Get). Numbers
    // convert between int and float; FALSE for an unknown id, a table index out of range or another kind.
    BOOL GetValue(ParamID id, TimeValue t, float& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, int& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, Point2& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, Point3& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, Point4& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, Color& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, AColor& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, Matrix3& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, MSTR& v, Interval& valid, int tabIndex = 0);
    // The text stays valid until the parameter changes.
    BOOL GetValue(ParamID id, TimeValue t, const MCHAR*& v, Interval& valid, int tabIndex = 0);
    BOOL GetValue(ParamID id, TimeValue t, ReferenceTarget*& v, Interval& valid, int tabIndex = 0);
    template <class T>
        requires(std::is_base_of_v<ReferenceTarget, T> && !std::is_same_v<T, ReferenceTarget>)
    BOOL GetValue(ParamID id, TimeValue t, T*& v, Interval& valid, int tabIndex = 0) {
        ReferenceTarget* r = nullptr;
        BOOL ok = GetValue(id, t, r, valid, tabIndex);
        if (ok) v = static_cast<T*>(r);
        return ok;
    }

    // Convenience reads (zero / empty / null when the value cannot be read).
    int GetInt(ParamID id, TimeValue t = 0, int tabIndex = 0);
    float GetFloat(ParamID id, TimeValue t = 0, int tabIndex = 0);
    const MCHAR* GetStr(ParamID id, TimeValue t = 0, int tabIndex = 0);
    Point2 GetPoint2(ParamID id, TimeValue t = 0, int tabIndex = 0);
    Point3 GetPoint3(ParamID id, TimeValue t = 0, int tabIndex = 0);
    Point4 GetPoint4(ParamID id, TimeValue t = 0, int tabIndex = 0);
    Color GetColor(ParamID id, TimeValue t = 0, int tabIndex = 0);
    AColor GetAColor(ParamID id, TimeValue t = 0, int tabIndex = 0);
    Matrix3 GetMatrix3(ParamID id, TimeValue t = 0, int tabIndex = 0);
    ReferenceTarget* GetReferenceTarget(ParamID id, TimeValue t = 0, int tabIndex = 0);
    // Node, material and texture-map values (the types must be complete where these are called).
    template <class T = INode> T* GetINode(ParamID id, TimeValue t = 0, int tabIndex = 0) {
        return static_cast<T*>(GetReferenceTarget(id, t, tabIndex));
    }
    template <class T = Mtl> T* GetMtl(ParamID id, TimeValue t = 0, int tabIndex = 0) {
        return static_cast<T*>(GetReferenceTarget(id, t, tabIndex));
    }
    template <class T = Texmap> T* GetTexmap(ParamID id, TimeValue t = 0, int tabIndex = 0) {
        return static_cast<T*>(GetReferenceTarget(id, t, tabIndex));
    }

    // Sets a value: stores it (in the controller when one drives the parameter), runs the accessor's Set,
    // records LastNotifyParamID and sends REFMSG_CHANGE. FALSE (and nothing changes) for an unknown id, a table
    // index out of range or a value of another kind.
    BOOL SetValue(ParamID id, TimeValue t, float v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, double v, int tabIndex = 0) { return set(id, t, float(v), tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, int v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const Point2& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const Point3& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const Point4& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const Color& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const AColor& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const Matrix3& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const MCHAR* v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, const MSTR& v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    BOOL SetValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex = 0) { return set(id, t, v, tabIndex); }
    template <class T>
        requires(std::is_base_of_v<ReferenceTarget, T> && !std::is_same_v<T, ReferenceTarget>)
    BOOL SetValue(ParamID id, TimeValue t, T* v, int tabIndex = 0) {
        return set(id, t, static_cast<ReferenceTarget*>(v), tabIndex);
    }

    // Tables. Count is 0 for an unknown id and 1 for a plain parameter. New entries get the default.
    int Count(ParamID id) const;
    BOOL SetCount(ParamID id, int n);
    // Reserves room for n entries without changing the count.
    int Resize(ParamID id, int n);
    // Appends n entries (their values from values, defaults when values is null); answers the first new index,
    // -1 when the id is no table or the values do not fit its type.
    template <class T> int Append(ParamID id, int n, const T* values) { return insertTyped(id, -1, n, values); }
    template <class T> int Insert(ParamID id, int at, int n, const T* values) { return insertTyped(id, at, n, values); }
    int Append(ParamID id, int n) { return insert(id, -1, std::vector<hostrt::ParamValue>(std::size_t(n < 0 ? 0 : n))); }
    // Deletes n entries from start; answers the new count, -1 when the range is not in the table.
    int Delete(ParamID id, int start, int n);

    // Controllers of animatable parameters. SetController answers FALSE for a parameter that takes none;
    // preserveValue gives the controller the current value first. RemoveController keeps the controller's value
    // at time 0 as the plain value.
    Control* GetController(ParamID id, int tabIndex = 0);
    BOOL SetController(ParamID id, int tabIndex, Control* c, BOOL preserveValue = TRUE);
    BOOL RemoveController(ParamID id, int tabIndex = 0);

    // The parameter (and table index) of the most recent change the block announced; -1 before any.
    ParamID LastNotifyParamID() const { return lastId_; }
    ParamID LastNotifyParamID(int& tabIndex) const { tabIndex = lastTab_; return lastId_; }

    // The rollout's parameter map while the block is edited (set by the user interface); every change of the
    // block invalidates it.
    IParamMap2* GetMap() const { return map_; }
    void SetMap(IParamMap2* map) { map_ = map; }

    // References and sub-anims (see the class comment).
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    int NumSubs() override { return NumParams(); }
    Animatable* SubAnim(int i) override;
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override;
    BOOL CanAssignController(int subAnim) override;
    BOOL AssignController(Animatable* control, int subAnim) override;
    BOOL IsAnimated() override;

    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

    // Host internals (undo records, save/load, clone).
    struct Param {
        std::vector<hostrt::PB2Entry> entries;
    };
    const Param& ParamAt(int index) const { return params_[std::size_t(index)]; }
    // Replaces a parameter's entries, keeping references consistent; no undo, no messages.
    void AssignEntries(int index, std::vector<hostrt::PB2Entry> entries);
    // AssignEntries, then announces the change of (parameter index, tab index) (undo and redo).
    void RestoreParam(int index, int tabIndex, const std::vector<hostrt::PB2Entry>& entries);
    // Records the change as the last one and sends REFMSG_CHANGE.
    void NotifyParamChanged(ParamID id, int tabIndex);

private:
    void init(ParamBlockDesc2* pdesc);
    BOOL set(ParamID id, TimeValue t, const hostrt::ParamValue& v, int tabIndex);
    // Reads (id, tabIndex) as kind want; for strings text receives the text itself (valid until it changes).
    BOOL read(ParamID id, TimeValue t, hostrt::ValueKind want, hostrt::ParamValue& out, Interval& valid, int tabIndex,
              const MCHAR** text = nullptr);
    hostrt::ParamValue readOr(ParamID id, TimeValue t, hostrt::ValueKind want, int tabIndex);
    int insert(ParamID id, int at, std::vector<hostrt::ParamValue> values);
    template <class T> int insertTyped(ParamID id, int at, int n, const T* values) {
        std::vector<hostrt::ParamValue> v;
        v.resize(std::size_t(n < 0 ? 0 : n));
        for (int k = 0; values && k < n; ++k) {
            if constexpr (std::is_pointer_v<T> && std::is_class_v<std::remove_pointer_t<T>>)
                v[std::size_t(k)] = hostrt::ParamValue(static_cast<ReferenceTarget*>(values[k]));
            else
                v[std::size_t(k)] = hostrt::ParamValue(values[k]);
        }
        return insert(id, at, std::move(v));
    }
    // (parameter index, entry) of reference i; {-1, -1} when out of range.
    std::pair<int, int> refSlot(int i);
    int firstRefOf(int index);
    bool hasSlots(int index) const;
    // Assigns entries to parameter index, putting an undo record (announced as tabIndex) while holding.
    void recordAndAssign(int index, std::vector<hostrt::PB2Entry> entries, int tabIndex);

    ParamBlockDesc2* desc_ = nullptr;
    ReferenceMaker* owner_ = nullptr;
    AnimHandle ownerHandle_ = 0;
    std::vector<Param> params_;
    ParamID lastId_ = -1;
    int lastTab_ = -1;
    IParamMap2* map_ = nullptr;
    Control* settingControl_ = nullptr;  // while SetValue writes into it: its own message is not passed on
};

// Makes a block of pdesc for owner, with its defaults.
IParamBlock2* CreateParameterBlock2(ParamBlockDesc2* pdesc, ReferenceMaker* owner);

// The rollout of a parameter block as the command panel shows it: controls bound to the block's parameters.
class IParamMap2 {
public:
    virtual IParamBlock2* GetParamBlock() = 0;
    // The rollout's window; null while it is shown by a presenter that has no native window.
    virtual HWND GetHWnd() = 0;
    // The block changed (parameter id, or -1 for all): the rollout shows the new values once the change is over.
    virtual void Invalidate(ParamID id = -1, int tabIndex = -1) {}

protected:
    ~IParamMap2() = default;
};

// A plug-in's own handling of its automatic rollout (ParamBlockDesc2::SetUserDlgProc): the host passes it the
// messages of controls that no parameter is bound to (WM_INITDIALOG when the rollout opens, WM_COMMAND with
// BN_CLICKED for a pressed button). Answers TRUE for a message it handled.
class ParamMap2UserDlgProc {
public:
    virtual ~ParamMap2UserDlgProc() = default;
    virtual INT_PTR DlgProc(TimeValue t, IParamMap2* map, HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) = 0;
    virtual void DeleteThis() {}
};
