#include "shot_runner.h"

#include "scene_compare.h"

#include "hold.h"
#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "maxscript/string_literal.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

namespace roundtrip {
namespace {

using hostrt::test::SceneSnapshot;

// Data as a MAXScript string literal (the host's one quoting), so a name never runs as code.
std::string Lit(const std::string& text) {
    const MSTR wide = MSTR::FromUTF8(text);
    return MSTR(MaxScriptStringLiteral(std::wstring_view(wide.data())).c_str()).ToUTF8();
}

std::string Num(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.3f", v);
    return buf;
}

std::string Colour(std::uint32_t rgb) {
    return "(color " + std::to_string(rgb & 0xFF) + " " + std::to_string((rgb >> 8) & 0xFF) + " " +
           std::to_string((rgb >> 16) & 0xFF) + ")";
}

std::string NodeExpr(const std::string& name) { return "(getNodeByName " + Lit(name) + ")"; }

float Unit(std::uint32_t draw) { return static_cast<float>(draw % 100000) / 100000.0f; }

// Runs a script; answers false (with the script kept in `failed`) when it throws.
bool RunScript(const std::string& text, FPValue* value = nullptr) {
    FPValue scratch;
    const MSTR wide = MSTR::FromUTF8(text);
    return ExecuteMAXScriptScript(wide.data(), MAXScript::ScriptSource::Embedded, TRUE, value ? value : &scratch,
                                  TRUE) != FALSE;
}

bool IsGeometry(Kind kind) { return kind == Kind::Box || kind == Kind::Sphere || kind == Kind::Cylinder; }

const char* SizeProperty(Kind kind) {
    switch (kind) {
    case Kind::Box: return "length";
    case Kind::Sphere: return "radius";
    case Kind::Cylinder: return "height";
    case Kind::Omni: return "multiplier";
    case Kind::Camera: return "fov";
    case Kind::Dummy: return nullptr;
    }
    return nullptr;
}

float DrawSize(Kind kind, std::uint32_t draw) {
    const float u = Unit(draw);
    switch (kind) {
    case Kind::Omni: return 0.2f + 2.8f * u;
    case Kind::Camera: return 30.0f + 60.0f * u;
    default: return 5.0f + 55.0f * u;
    }
}

// Layers are compared by name: the order in which the host lists them after a reopen follows the order the
// file and the merges brought them in, which no user edit asked for. Materials are compared when a node uses
// them: a load keeps only the library's materials that some node uses (one the artist replaced leaves the
// library), so an unused one says nothing about a lost edit.
SceneSnapshot Normalised(SceneSnapshot s) {
    std::stable_sort(s.layers.begin(), s.layers.end(),
                     [](const auto& a, const auto& b) { return a.name < b.name; });
    std::set<std::string> used;
    for (const auto& [place, node] : s.nodes)
        for (const auto& [name, value] : node.properties)
            if (name == "material") used.insert("material " + value);
    std::erase_if(s.materials, [&used](const auto& m) { return !used.count(m.label); });
    return s;
}

std::vector<std::string> Differences(const SceneSnapshot& expected, const SceneSnapshot& actual) {
    return hostrt::test::CompareSnapshots(Normalised(expected), Normalised(actual), {.byName = true});
}

}  // namespace

// A node the runner knows: a referenced node (reference index, node index in that reference's file) or a local
// node (reference -1, index into the scenario's locals).
struct NodeId {
    int ref = -1;
    int index = 0;
    auto operator<=>(const NodeId&) const = default;
};

// One local edit as it was made: replayed word for word on a fresh shot.
struct Edit {
    NodeId target;
    StepKind kind;
    std::string property;  // what it changes ("wire", "size", "hidden", "pos" ...)
    std::string script;
    std::string newName;   // renames only
};

struct ShotRunner::State {
    const Scenario& scenario;
    std::filesystem::path folder;
    Options options;
    std::vector<FileDesc> files;            // the reference files as they are now
    std::vector<std::string> helperNames;   // per reference
    std::map<NodeId, std::string> renamed;  // nodes renamed by an edit in force
    std::vector<Edit> edits;                // the edits in force, in order
    SceneSnapshot expected;
    // The last edit, while it can still be undone: the scene before it.
    std::optional<SceneSnapshot> beforeLastEdit;
    std::vector<std::string>* log = nullptr;
    std::optional<Failure> failure;
    int step = -1;

    std::string FilePath(int ref) const { return (folder / (files[ref].stem + ".max")).string(); }
    std::string ShotPath() const {
        return (folder / ("rt" + std::to_string(scenario.seed) + "_shot.max")).string();
    }

    std::string Prefix(int ref) const {
        return scenario.prefixed[ref] && ref < static_cast<int>(helperNames.size()) ? helperNames[ref] + "_" : "";
    }
    std::string NameOf(NodeId id) const {
        if (auto it = renamed.find(id); it != renamed.end()) return it->second;
        if (id.ref < 0) return scenario.locals[id.index].name;
        return Prefix(id.ref) + files[id.ref].nodes[id.index].name;
    }
    INode* Live(NodeId id) const {
        const MSTR name = MSTR::FromUTF8(NameOf(id));
        return GetCOREInterface()->GetINodeByName(name.data());
    }
    Kind KindOf(NodeId id) const {
        return id.ref < 0 ? (scenario.locals[id.index].box ? Kind::Box : Kind::Dummy)
                          : files[id.ref].nodes[id.index].kind;
    }

    void Log(const std::string& line) {
        if (log) log->push_back(line);
    }
    bool Fail(const std::string& what, std::vector<std::string> differences) {
        if (!failure) failure = Failure{step, what, std::move(differences)};
        return false;
    }
    bool Script(const std::string& text, const std::string& what, FPValue* value = nullptr) {
        return RunScript(text, value) || Fail(what + ": the script failed", {text});
    }
    bool Check(const SceneSnapshot& want, const std::string& what) {
        auto differences = Differences(want, hostrt::test::TakeSnapshot());
        if (differences.empty()) return true;
        if (differences.size() > 40) differences.resize(40), differences.push_back("...");
        return Fail(what + ": the scene differs from what it must be", std::move(differences));
    }

    // --- Files and the shot ----------------------------------------------------------------------------------

    std::string FileScript(const FileDesc& file, const std::string& path) const {
        std::string s = "resetMaxFile #noPrompt\n";
        for (std::size_t i = 0; i < file.layers.size(); ++i)
            s += "rtL" + std::to_string(i) + " = LayerManager.newLayerFromName " + Lit(file.layers[i]) + "\n";
        for (std::size_t i = 0; i < file.materials.size(); ++i)
            s += "rtM" + std::to_string(i) + " = standardMaterial name:" + Lit(file.materials[i].name) +
                 " diffuse:" + Colour(file.materials[i].diffuse) + "\n";
        for (std::size_t i = 0; i < file.nodes.size(); ++i) {
            const NodeDesc& n = file.nodes[i];
            const std::string v = "rtN" + std::to_string(i);
            const std::string common = " name:" + Lit(n.name) + " pos:[" + Num(n.x) + "," + Num(n.y) + "," + Num(n.z) +
                                       "] wirecolor:" + Colour(n.wire);
            switch (n.kind) {
            case Kind::Box: s += v + " = box" + common + " length:" + Num(n.size) + "\n"; break;
            case Kind::Sphere: s += v + " = sphere" + common + " radius:" + Num(n.size) + "\n"; break;
            case Kind::Cylinder: s += v + " = cylinder" + common + " height:" + Num(n.size) + "\n"; break;
            case Kind::Omni: s += v + " = omniLight" + common + " multiplier:" + Num(n.size) + "\n"; break;
            case Kind::Camera: s += v + " = freeCamera" + common + " fov:" + Num(n.size) + "\n"; break;
            case Kind::Dummy: s += v + " = dummy" + common + "\n"; break;
            }
            if (n.turn != 0) s += v + ".rotation = eulerAngles 0 0 " + Num(n.turn) + "\n";
            if (n.parent >= 0) s += v + ".parent = rtN" + std::to_string(n.parent) + "\n";
            if (n.material >= 0) s += v + ".material = rtM" + std::to_string(n.material) + "\n";
            if (n.layer >= 0) s += "rtL" + std::to_string(n.layer) + ".addNode " + v + "\n";
            if (n.hidden) s += v + ".isHidden = true\n";
            if (!n.renderable) s += v + ".renderable = false\n";
            if (n.bend) s += "addModifier " + v + " (bend angle:" + Num(n.bendAngle) + ")\n";
        }
        s += "saveMaxFile " + Lit(path) + " quiet:true\n";
        return s;
    }

    bool WriteFile(int ref) { return Script(FileScript(files[ref], FilePath(ref)), "writing " + files[ref].stem); }

    // The shot as the artist starts it: the shot's layers, the references, then the local nodes.
    bool BuildShot() {
        std::string s = "resetMaxFile #noPrompt\n";
        for (const auto& layer : scenario.localLayers) s += "LayerManager.newLayerFromName " + Lit(layer) + "\n";
        if (!Script(s, "starting the shot")) return false;
        helperNames.clear();
        for (std::size_t r = 0; r < files.size(); ++r) {
            FPValue name;
            std::string add = "rtH = Vandrels.AddVandrel " + Lit(FilePath(static_cast<int>(r))) + "\n";
            if (scenario.prefixed[r]) add += "rtH.baseObject.UseNamePrefix = true\n";
            add += "rtH.name\n";
            if (!Script(add, "adding reference " + std::to_string(r + 1), &name)) return false;
            if (name.type != TYPE_STRING || !name.s) return Fail("adding reference " + std::to_string(r + 1), {"no helper"});
            helperNames.push_back(MSTR(name.s).ToUTF8());
        }
        for (std::size_t i = 0; i < scenario.locals.size(); ++i) {
            const LocalDesc& l = scenario.locals[i];
            std::string make = std::string(l.box ? "rtX = box" : "rtX = dummy") + " name:" + Lit(l.name) + " pos:[" +
                               Num(l.x) + "," + Num(l.y) + "," + Num(l.z) + "]\n";
            if (l.parentRef >= 0) make += "rtX.parent = " + NodeExpr(NameOf({l.parentRef, l.parentNode})) + "\n";
            if (!Script(make, "making the local node " + l.name)) return false;
        }
        theHold.FlushUndoBuffer();
        return true;
    }

    // The shot made afresh from the files as they are now, with the edits in force made again.
    std::optional<SceneSnapshot> Replayed() {
        const auto names = renamed;
        renamed.clear();
        if (!BuildShot()) return std::nullopt;
        for (const Edit& e : edits) {
            if (!Script(e.script, "making an edit again")) return std::nullopt;
            if (e.kind == StepKind::Rename) renamed[e.target] = e.newName;
        }
        renamed = names;
        return hostrt::test::TakeSnapshot();
    }

    bool SaveShot() {
        FPValue ok;
        if (!Script("saveMaxFile " + Lit(ShotPath()) + " quiet:true", "saving the shot", &ok)) return false;
        return true;
    }
    bool Reopen() {
        return Script("resetMaxFile #noPrompt\nloadMaxFile " + Lit(ShotPath()) + " quiet:true\n", "reopening the shot");
    }
    std::string HelperExpr(int ref) const { return "(getNodeByName " + Lit(helperNames[ref]) + ").baseObject"; }

    // --- Local edits ------------------------------------------------------------------------------------------

    std::vector<NodeId> ReferencedNodes() const {
        std::vector<NodeId> ids;
        for (std::size_t r = 0; r < files.size(); ++r)
            for (std::size_t i = 0; i < files[r].nodes.size(); ++i) ids.push_back({static_cast<int>(r), static_cast<int>(i)});
        return ids;
    }

    static bool IsBelow(INode* node, INode* ancestor) {
        for (INode* n = node; n && !n->IsRootNode(); n = n->GetParentNode())
            if (n == ancestor) return true;
        return false;
    }

    bool LiveFlag(const std::string& expr) {
        FPValue v;
        if (!Script("if " + expr + " then 1 else 0", "reading " + expr, &v)) return false;
        return v.type == TYPE_INT && v.i == 1;
    }

    // Makes one edit; answers false on a failure, true otherwise (also when the drawn edit does not apply).
    bool EditStep(const Step& st) {
        const auto nodes = ReferencedNodes();
        const NodeId id = nodes[st.draw[0] % nodes.size()];
        INode* node = Live(id);
        if (!node) return Fail("finding " + NameOf(id), {"no node named '" + NameOf(id) + "' in the scene"});
        const std::string n = NodeExpr(NameOf(id));
        const Kind kind = KindOf(id);
        Edit e{id, st.kind, "", "", ""};
        const std::uint32_t a = st.draw[1], b = st.draw[2];
        switch (st.kind) {
        case StepKind::Move:
            e.property = "pos";
            e.script = n + ".pos = [" + Num(400 * Unit(a) - 200) + "," + Num(400 * Unit(b) - 200) + "," +
                       Num(100 * Unit(st.draw[3])) + "]";
            break;
        case StepKind::Turn:
            e.property = "turn";
            e.script = n + ".rotation = eulerAngles 0 0 " + Num(360 * Unit(a) - 180);
            break;
        case StepKind::ParentToLocal: {
            const int l = static_cast<int>(a % scenario.locals.size());
            INode* parent = Live({-1, l});
            if (!parent || IsBelow(parent, node) || node->GetParentNode() == parent) return Skip("parent to a local node");
            e.property = "parent";
            e.script = n + ".parent = " + NodeExpr(NameOf({-1, l}));
            break;
        }
        case StepKind::ParentToReferenced: {
            const NodeId p{id.ref, static_cast<int>(a % files[id.ref].nodes.size())};
            INode* parent = Live(p);
            if (!parent || IsBelow(parent, node) || node->GetParentNode() == parent) return Skip("parent to a referenced node");
            e.property = "parent";
            e.script = n + ".parent = " + NodeExpr(NameOf(p));
            break;
        }
        case StepKind::ParentToRoot:
            if (!node->GetParentNode() || node->GetParentNode()->IsRootNode()) return Skip("parent to the scene root");
            e.property = "parent";
            e.script = n + ".parent = undefined";
            break;
        case StepKind::Rename:
            e.property = "name";
            e.newName = "Renamed" + std::to_string(step) + (a % 4 == 0 ? " with \"quotes\"" : "");
            e.script = n + ".name = " + Lit(e.newName);
            break;
        case StepKind::Material: {
            if (!IsGeometry(kind)) return Skip("material of a node that is not geometry");
            e.property = "material";
            const NodeId other{id.ref, static_cast<int>(b % files[id.ref].nodes.size())};
            INode* donor = Live(other);
            if (a % 3 == 0 && donor && donor->GetMtl() && donor->GetMtl() != node->GetMtl())
                e.script = n + ".material = " + NodeExpr(NameOf(other)) + ".material";
            else
                e.script = n + ".material = standardMaterial name:" + Lit("Shot_Paint" + std::to_string(step)) +
                           " diffuse:" + Colour(b & 0xFFFFFF);
            break;
        }
        case StepKind::Layer: {
            std::vector<std::string> layers{"0"};
            for (const auto& l : scenario.localLayers) layers.push_back(l);
            // A file layer that holds no node never reaches the shot.
            ILayerManager* manager = GetCOREInterface()->GetLayerManager();
            for (const auto& l : files[id.ref].layers) {
                const MSTR name = MSTR::FromUTF8(Prefix(id.ref) + l);
                if (manager->GetLayer(name)) layers.push_back(Prefix(id.ref) + l);
            }
            const std::string layer = layers[a % layers.size()];
            ILayer* current = node->GetLayer();
            if (current && MSTR(current->GetName()).ToUTF8() == layer) return Skip("layer it is on");
            e.property = "layer";
            e.script = "(LayerManager.getLayerFromName " + Lit(layer) + ").addNode " + n;
            break;
        }
        case StepKind::Hide:
            e.property = "hidden";
            e.script = n + ".isHidden = " + (node->IsHidden() ? "false" : "true");
            break;
        case StepKind::Freeze:
            e.property = "frozen";
            e.script = n + ".isFrozen = " + (node->IsFrozen() ? "false" : "true");
            break;
        case StepKind::Display:
        case StepKind::Render: {
            static const char* const kDisplay[] = {"boxMode", "xray", "backfaceCull"};
            static const char* const kRender[] = {"renderable", "primaryVisibility", "castShadows"};
            const char* prop = st.kind == StepKind::Display ? kDisplay[a % 3] : kRender[a % 3];
            e.property = prop;
            e.script = n + "." + prop + " = " + (LiveFlag(n + "." + prop) ? "false" : "true");
            if (failure) return false;
            break;
        }
        case StepKind::WireColour:
            e.property = "wire";
            e.script = n + ".wirecolor = " + Colour(a & 0xFFFFFF);
            break;
        case StepKind::Parameter: {
            const char* prop = SizeProperty(kind);
            if (!prop) return Skip("parameter of a dummy");
            e.property = "size";
            e.script = n + "." + prop + " = " + Num(DrawSize(kind, a));
            break;
        }
        case StepKind::AddModifier:
            if (!IsGeometry(kind)) return Skip("modifier on a node that is not geometry");
            e.property = "modifiers";
            e.script = "addModifier " + n + " (taper amount:" + Num(2 * Unit(a) - 1) + ")";
            break;
        case StepKind::ModifierParameter:
            if (!files[id.ref].nodes[id.index].bend) return Skip("modifier parameter of a node without a bend");
            e.property = "modifiers";
            e.script = n + ".modifiers[#Bend].angle = " + Num(180 * Unit(a) - 90);
            break;
        default: return true;
        }
        const SceneSnapshot before = expected;
        if (!Script("undo \"Roundtrip Edit\" on (\n" + e.script + "\n)", StepName(st.kind))) return false;
        if (st.kind == StepKind::Rename) renamed[id] = e.newName;
        Log(std::string(StepName(st.kind)) + ": " + e.script);
        edits.push_back(e);
        expected = hostrt::test::TakeSnapshot();
        beforeLastEdit = before;
        return true;
    }

    bool Skip(const std::string& what) {
        Log(what + ": does not apply, nothing done");
        return true;
    }

    bool UndoStep() {
        if (!beforeLastEdit || edits.empty()) return Skip("undo with no edit to undo");
        const Edit last = edits.back();
        // Undo of the edits whose values the node record reads from the node's change messages runs only with
        // --undo-all, so that seeds found before that kind of undo was drawn keep naming the same scenarios.
        const bool rereadValue = last.kind == StepKind::WireColour || last.kind == StepKind::Render ||
                                 last.kind == StepKind::Display || last.kind == StepKind::Hide ||
                                 last.kind == StepKind::Freeze;
        if (rereadValue && !options.undoAll)
            return Skip("undo of a wire colour, hide, freeze, display or render edit (--undo-all)");
        if (!Script("max undo", "undo")) return false;
        edits.pop_back();
        if (last.kind == StepKind::Rename) {
            renamed.erase(last.target);
            for (const Edit& e : edits)
                if (e.kind == StepKind::Rename && e.target == last.target) renamed[e.target] = e.newName;
        }
        expected = *beforeLastEdit;
        beforeLastEdit.reset();
        Log("undo: " + last.script);
        return Check(expected, "after undo");
    }

    // --- Changing a reference file ------------------------------------------------------------------------------

    // Whether changing `property` of the node in its file must show in the shot exactly as a fresh shot with the
    // edits made again shows it. It must when the node carries no edit but of that same property (the local value
    // stands, or the file's comes through). A move in the file also moves what hangs below the node: only when
    // nothing below it was moved, turned or re-linked, and nothing foreign hangs below it.
    bool Changeable(NodeId id, const std::string& property) const {
        for (const Edit& e : edits)
            if (e.target == id && e.property != property) return false;
        if (property != "pos") return true;
        std::set<int> below{id.index};
        const auto& nodes = files[id.ref].nodes;
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i].parent >= 0 && below.count(nodes[i].parent)) below.insert(static_cast<int>(i));
        for (const Edit& e : edits)
            if (e.target.ref == id.ref && below.count(e.target.index) && !(e.target == id) &&
                (e.property == "pos" || e.property == "turn" || e.property == "parent"))
                return false;
        std::set<std::string> want;
        for (int i : below) want.insert(NameOf({id.ref, i}));
        std::set<std::string> live;
        std::vector<INode*> todo{Live(id)};
        while (!todo.empty()) {
            INode* n = todo.back();
            todo.pop_back();
            if (!n) return false;
            live.insert(MSTR(n->GetName()).ToUTF8());
            for (int c = 0; c < n->NumberOfChildren(); ++c) todo.push_back(n->GetChildNode(c));
        }
        return live == want;
    }

    bool ChangeFileStep(const Step& st) {
        static const char* const kProperties[] = {"wire", "size", "hidden", "renderable", "pos"};
        const auto nodes = ReferencedNodes();
        std::optional<std::pair<NodeId, std::string>> pick;
        // Every other change goes, where it can, to a value that is also edited locally (the newest such edit).
        if (st.draw[1] % 2 == 0)
            for (auto e = edits.rbegin(); e != edits.rend() && !pick; ++e)
                if (e->target.ref >= 0 && std::count(std::begin(kProperties), std::end(kProperties), e->property) &&
                    Changeable(e->target, e->property))
                    pick = {e->target, e->property};
        for (std::size_t k = 0; k < nodes.size() * 5 && !pick; ++k) {
            const NodeId id = nodes[(st.draw[0] + k / 5) % nodes.size()];
            const std::string prop = kProperties[(st.draw[1] + k) % 5];
            if (prop == "size" && !SizeProperty(KindOf(id))) continue;
            if (Changeable(id, prop)) pick = {id, prop};
        }
        if (!pick) return Skip("change the reference file with no node free to change");
        const auto id = pick->first;
        const auto prop = pick->second;
        NodeDesc& n = files[id.ref].nodes[id.index];
        const std::uint32_t a = st.draw[2];
        if (prop == "wire") n.wire = a & 0xFFFFFF;
        if (prop == "size") n.size = DrawSize(n.kind, a);
        if (prop == "hidden") n.hidden = !n.hidden;
        if (prop == "renderable") n.renderable = !n.renderable;
        if (prop == "pos") n.x = 400 * Unit(a) - 200, n.y = 400 * Unit(st.draw[3]) - 200;
        const bool locally = std::any_of(edits.begin(), edits.end(), [&](const Edit& e) { return e.target == id; });
        const bool reload = st.draw[3] % 2 == 0;
        Log("change the reference file " + files[id.ref].stem + ": " + prop + " of " + n.name +
            (locally ? " (also edited locally)" : "") + (reload ? ", then reload" : ""));
        if (!SaveShot() || !WriteFile(id.ref)) return false;
        const auto want = Replayed();
        if (!want) return false;
        if (!Reopen()) return false;
        if (reload && !Script(HelperExpr(id.ref) + ".Reload()", "reloading")) return false;
        expected = *want;
        beforeLastEdit.reset();
        return Check(expected, "after the reference file changed and the shot was reopened");
    }

    // --- Operations -------------------------------------------------------------------------------------------

    bool OperationStep(const Step& st) {
        const int ref = static_cast<int>(st.draw[0] % files.size());
        switch (st.kind) {
        case StepKind::Save:
            Log("save");
            if (!SaveShot()) return false;
            return Check(expected, "after save");
        case StepKind::SaveAndReopen:
            Log("save and reopen");
            beforeLastEdit.reset();
            if (!SaveShot() || !Reopen()) return false;
            return Check(expected, "after save and reopen");
        case StepKind::Reload:
            Log("reload reference " + std::to_string(ref + 1));
            beforeLastEdit.reset();
            if (!Script(HelperExpr(ref) + ".Reload()", "reloading")) return false;
            return Check(expected, "after reload");
        case StepKind::UnloadAndLoad:
            Log("unload and load reference " + std::to_string(ref + 1));
            beforeLastEdit.reset();
            if (!Script(HelperExpr(ref) + ".Unload()", "unloading")) return false;
            if (!Script(HelperExpr(ref) + ".Reload()", "loading")) return false;
            return Check(expected, "after unload and load");
        case StepKind::UnloadSaveAndReopen:
            Log("unload reference " + std::to_string(ref + 1) + ", save and reopen");
            beforeLastEdit.reset();
            if (!Script(HelperExpr(ref) + ".Unload()", "unloading")) return false;
            if (!SaveShot() || !Reopen()) return false;
            return Check(expected, "after unload, save and reopen");
        case StepKind::ChangeFile: return ChangeFileStep(st);
        case StepKind::Undo: return UndoStep();
        default: return true;
        }
    }
};

ShotRunner::ShotRunner(const Scenario& scenario, std::filesystem::path folder, Options options)
    : scenario_(scenario), folder_(std::move(folder)), options_(options) {}

std::string ShotRunner::SetUpScript() const {
    State s{scenario_, folder_, options_, scenario_.files, {}, {}, {}, {}, {}, nullptr, {}, -1};
    std::string text;
    for (std::size_t r = 0; r < s.files.size(); ++r)
        text += "-- " + s.files[r].stem + "\n" + s.FileScript(s.files[r], s.FilePath(static_cast<int>(r)));
    text += "-- the shot: the layers " ;
    for (const auto& l : scenario_.localLayers) text += Lit(l) + " ";
    text += "first, then the references (name prefix:";
    for (bool p : scenario_.prefixed) text += p ? " on" : " off";
    text += "), then the local nodes:\n";
    for (const LocalDesc& l : scenario_.locals)
        text += "--   " + l.name + (l.box ? " (box)" : " (dummy)") +
                (l.parentRef >= 0 ? " under " + s.files[l.parentRef].nodes[l.parentNode].name : " at the root") + "\n";
    return text;
}

std::optional<Failure> ShotRunner::Run(const std::vector<int>& steps, std::vector<std::string>* log) {
    State s{scenario_, folder_, options_, scenario_.files, {}, {}, {}, {}, {}, log, {}, -1};
    auto finish = [&s] {
        for (std::size_t r = 0; r < s.files.size(); ++r) std::filesystem::remove(s.FilePath(static_cast<int>(r)));
        std::filesystem::remove(s.ShotPath());
        return s.failure;
    };
    for (std::size_t r = 0; r < s.files.size(); ++r)
        if (!s.WriteFile(static_cast<int>(r))) return finish();
    if (!s.BuildShot()) return finish();
    s.expected = hostrt::test::TakeSnapshot();
    for (int index : steps) {
        s.step = index;
        const Step& st = scenario_.steps[index];
        const bool ok = IsEdit(st.kind) ? s.EditStep(st) : s.OperationStep(st);
        if (!ok) return finish();
    }
    // Last, the whole promise at once: the shot saved and reopened is the fresh shot with every edit made again.
    s.step = -1;
    if (s.SaveShot()) {
        if (const auto want = s.Replayed()) {
            if (s.Reopen()) s.Check(*want, "at the end, against a fresh shot with the edits made again");
        }
    }
    return finish();
}

}  // namespace roundtrip
