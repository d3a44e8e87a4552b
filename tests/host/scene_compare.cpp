// Scene snapshots and their comparison: every property is recorded as text under a stable name, so comparing
// two snapshots is comparing texts and the differences read as the user would describe them. Nodes pair by
// place (child indices from the root) or, when asked, by name path.
#include "scene_compare.h"

#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "object.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <unordered_map>

namespace hostrt::test {
namespace {

using Properties = std::vector<std::pair<std::string, std::string>>;

// Controller values are sampled at these times (ticks): the start, frame 10 and frame 30.
constexpr TimeValue kSampleTimes[] = {0, 1600, 4800};

std::string utf8(const MSTR& s) { return s.ToUTF8(); }
std::string quoted(const MSTR& s) { return "'" + utf8(s) + "'"; }

std::string number(float v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.4f", double(v));
    std::string s = buf;
    return s == "-0.0000" ? "0.0000" : s;
}
std::string point(const Point3& p) { return "(" + number(p.x) + ", " + number(p.y) + ", " + number(p.z) + ")"; }
std::string quat(const Quat& q) {
    return "(" + number(q.x) + ", " + number(q.y) + ", " + number(q.z) + ", " + number(q.w) + ")";
}
std::string matrix(const Matrix3& m) {
    return "[" + point(m.GetRow(0)) + " " + point(m.GetRow(1)) + " " + point(m.GetRow(2)) + " " + point(m.GetRow(3)) + "]";
}
std::string hex(unsigned long v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08lX", v);
    return buf;
}
std::string yesNo(bool b) { return b ? "yes" : "no"; }

std::string className(Animatable* a) {
    MSTR name;
    a->GetClassName(name, false);
    Class_ID id = a->ClassID();
    return utf8(name) + " (" + hex(id.PartA()) + ", " + hex(id.PartB()) + ")";
}

// A reference-type parameter value: what it is, by name where it has one.
std::string describeTarget(ReferenceTarget* t) {
    if (!t) return "none";
    if (auto* node = dynamic_cast<INode*>(t)) return "node " + quoted(node->GetName());
    if (auto* mtl = dynamic_cast<MtlBase*>(t)) return className(t) + " " + quoted(mtl->GetName());
    return className(t);
}

class Recorder {
public:
    SceneSnapshot snapshot;

    void Nodes(INode* root) {
        for (int i = 0; i < root->NumberOfChildren(); ++i) Node(root->GetChildNode(i), std::to_string(i), "");
    }

    void Entries(INode* root) {
        for (int i = 0; i < root->GetXRefFileCount(); ++i) {
            INode* tree = root->GetXRefTree(i);
            SnapshotItem item{"external-scene entry " + quoted(root->GetXRefFile(i)), utf8(root->GetXRefFile(i)), {}};
            item.properties = {{"nodes", std::to_string(tree ? CountBelow(tree) : 0)}};
            snapshot.entries.push_back(std::move(item));
        }
    }

    void Library(MtlBaseLib* lib) {
        if (!lib) return;
        for (int i = 0; i < lib->Count(); ++i)
            if (auto* m = dynamic_cast<Mtl*>((*lib)[i])) MaterialKey(m);
    }

    void Layers(ILayerManager* manager) {
        if (!manager) return;
        ILayer* current = manager->GetCurrentLayer();
        for (int i = 0; i < manager->GetLayerCount(); ++i) {
            ILayer* layer = manager->GetLayer(i);
            SnapshotItem item{"layer " + quoted(layer->GetName()), utf8(layer->GetName()), {}};
            ILayer* parent = layer->GetParentLayer();
            item.properties = {{"parent", parent ? quoted(parent->GetName()) : "none"},
                               {"node count", std::to_string(layer->NumNodes())},
                               {"current", yesNo(layer == current)}};
            // The display switches only when on, so snapshots of scenes that never use them read as before.
            if (layer->IsHidden()) item.properties.emplace_back("hidden", "yes");
            if (layer->IsFrozen()) item.properties.emplace_back("frozen", "yes");
            snapshot.layers.push_back(std::move(item));
        }
    }

private:
    std::unordered_map<Mtl*, std::string> materialKey_;
    std::map<std::string, int> nameCount_;
    std::map<std::string, int> pathCount_;

    static int CountBelow(INode* node) {
        int count = 0;
        for (int i = 0; i < node->NumberOfChildren(); ++i) count += 1 + CountBelow(node->GetChildNode(i));
        return count;
    }

    void Node(INode* node, const std::string& position, const std::string& parentPath) {
        SnapshotItem item{"node " + quoted(node->GetName()), utf8(node->GetName()), {}};
        const std::string namePath = (parentPath.empty() ? "" : parentPath + "/") + utf8(node->GetName());
        const int occurrence = ++pathCount_[namePath];
        item.path = occurrence > 1 ? namePath + " #" + std::to_string(occurrence) : namePath;
        Properties& p = item.properties;
        INode* parent = node->GetParentNode();
        p.emplace_back("parent", parent && !parent->IsRootNode() ? quoted(parent->GetName()) : "scene root");
        p.emplace_back("children", std::to_string(node->NumberOfChildren()));
        p.emplace_back("world transform", matrix(node->GetNodeTM(0)));
        p.emplace_back("wire colour", hex(node->GetWireColor()));
        p.emplace_back("hidden", yesNo(node->IsHidden()));
        p.emplace_back("frozen", yesNo(node->IsFrozen()));
        DisplayAndRender(node, p);
        MSTR user;
        node->GetUserPropBuffer(user);
        p.emplace_back("user properties", quoted(user));
        Bone(node, p);
        p.emplace_back("object offset", point(node->GetObjOffsetPos()) + " " + quat(node->GetObjOffsetRot()) + " " +
                                            point(node->GetObjOffsetScale().s));
        Locks(node, p);
        p.emplace_back("group", std::string("member ") + yesNo(node->IsGroupMember()) + ", head " +
                                    yesNo(node->IsGroupHead()) + ", open member " + yesNo(node->IsOpenGroupMember()) +
                                    ", open head " + yesNo(node->IsOpenGroupHead()));
        SkinPose(node, p);
        ILayer* layer = node->GetLayer();
        p.emplace_back("layer", layer ? quoted(layer->GetName()) : "none");
        Mtl* mtl = node->GetMtl();
        p.emplace_back("material", mtl ? MaterialKey(mtl) : "none");
        ObjectChain(node->GetObjOrWSMRef(), p);
        Controller(node->GetTMController(), "transform controller", p);
        Controller(node->GetVisController(), "visibility controller", p);
        const std::string childPath = namePath;
        snapshot.nodes.emplace_back(position, std::move(item));
        for (int i = 0; i < node->NumberOfChildren(); ++i)
            Node(node->GetChildNode(i), position + "." + std::to_string(i), childPath);
    }

    static std::string switches(int count, const std::function<bool(int)>& on) {
        std::string text;
        for (int i = 0; i < count; ++i) text += on(i) ? '1' : '0';
        return text;
    }

    static void Locks(INode* node, Properties& p) {
        p.emplace_back("transform locks", switches(9, [node](int i) { return node->GetTransformLock(i / 3, i % 3); }));
    }

    static void SkinPose(INode* node, Properties& p) {
        auto* skin = static_cast<INodeSkinPose*>(node->GetInterface(INODE_SKINPOSE_INTERFACE));
        if (!skin) return;
        p.emplace_back("skin pose", point(skin->GetSkinPos()) + " " + quat(skin->GetSkinRot()) + " " +
                                        point(skin->GetSkinScale()) + " " + quat(skin->GetSkinScaleOrient()));
    }

    // The node's display and render switches and values, with those of its extension interfaces: display
    // properties (never degrade), layer properties (display, render, motion and illumination by layer) and the
    // render properties (global illumination).
    static void DisplayAndRender(INode* node, Properties& p) {
        p.emplace_back("display flags", switches(NODE_DISP_NUM_FLAGS, [node](int i) { return node->GetDisplayFlag(i); }));
        std::string values;
        for (int i = 0; i < NODE_DISP_NUM_VALUES; ++i) values += (i ? " " : "") + std::to_string(node->GetDisplayValue(i));
        p.emplace_back("display values", values);
        p.emplace_back("render flags", switches(NODE_REND_NUM_FLAGS, [node](int i) { return node->GetRenderFlag(i); }));
        values.clear();
        for (int i = 0; i < NODE_REND_NUM_VALUES; ++i) values += (i ? " " : "") + hex(node->GetRenderValue(i));
        p.emplace_back("render values", values);
        if (auto* display = static_cast<INodeExtension1*>(node->GetInterface(NODE_EXTENSION1_INTERFACE)))
            p.emplace_back("never degrade", yesNo(display->GetDisplaySwitch()));
        if (auto* byLayer = static_cast<INodeExtension2*>(node->GetInterface(NODE_EXTENSION2_INTERFACE))) {
            p.emplace_back("display by layer", yesNo(byLayer->GetDisplaySwitch()));
            p.emplace_back("render by layer switches", switches(NODE_EXTENSION2_NUM_RENDER_SWITCHES, [byLayer](int i) {
                               return byLayer->GetRenderSwitch(i) != FALSE;
                           }));
        }
        if (auto* gi = static_cast<INodeRenderProperties*>(node->GetInterface(NODE_RENDERPROPS_INTERFACE))) {
            p.emplace_back("render property switches",
                           switches(NODE_RENDERPROPS_NUM_SWITCHES, [gi](int i) { return gi->GetRenderSwitch(i) != FALSE; }));
            values.clear();
            for (int i = 0; i < NODE_RENDERPROPS_NUM_VALUES; ++i) values += (i ? " " : "") + hex(gi->GetRenderPropValue(i));
            p.emplace_back("render property values", values);
        }
    }

    static void Bone(INode* node, Properties& p) {
        std::string bone = node->GetBoneNodeOnOff() ? "on" : "off";
        bone += ", flags ";
        for (int i = 0; i < NODE_BONE_NUM_FLAGS; ++i) bone += node->GetBoneFlag(i) ? '1' : '0';
        bone += ", values";
        for (int i = 0; i < NODE_BONE_NUM_VALUES; ++i) bone += " " + std::to_string(node->GetBoneValue(i));
        p.emplace_back("bone", bone);
    }

    // The world-space and object-space derived objects from the top down, each modifier with its name, class,
    // toggles and parameters, then the base object.
    void ObjectChain(Object* obj, Properties& p) {
        int level = 0;
        while (auto* derived = dynamic_cast<IDerivedObject*>(obj)) {
            const std::string stack = derived->IsWorldSpace() ? "world-space stack" : "stack " + std::to_string(level++);
            p.emplace_back(stack + " modifiers", std::to_string(derived->NumModifiers()));
            for (int i = 0; i < derived->NumModifiers(); ++i) {
                Modifier* mod = derived->GetModifier(i);
                const std::string prefix = stack + " modifier " + std::to_string(i);
                if (!mod) {
                    p.emplace_back(prefix, "none");
                    continue;
                }
                p.emplace_back(prefix + " name", quoted(mod->GetName(false)));
                p.emplace_back(prefix + " class", className(mod));
                p.emplace_back(prefix + " toggles", std::string("on ") + yesNo(mod->IsEnabled()) + ", in viewports " +
                                                        yesNo(mod->IsEnabledInViews()) + ", in renders " +
                                                        yesNo(mod->IsEnabledInRender()));
                Blocks(mod, prefix, p);
            }
            obj = derived->GetObjRef();
        }
        if (!obj) {
            p.emplace_back("object", "none");
            return;
        }
        p.emplace_back("object class", className(obj));
        Blocks(obj, "object", p);
    }

    // Every parameter of every parameter block 2 the owner references, with the keys of animated parameters.
    void Blocks(ReferenceMaker* owner, const std::string& prefix, Properties& p) {
        for (int r = 0; r < owner->NumRefs(); ++r) {
            auto* block = dynamic_cast<IParamBlock2*>(owner->GetReference(r));
            if (!block) continue;
            for (int i = 0; i < block->NumParams(); ++i) {
                ParamID id = block->IndextoID(i);
                ParamDef& def = block->GetParamDef(id);
                const std::string name = prefix + " parameter " + (def.int_name.Length() ? utf8(def.int_name) : std::to_string(id));
                const int count = block->Count(id);
                for (int k = 0; k < count; ++k) {
                    const std::string entry = def.IsTable() ? name + "[" + std::to_string(k) + "]" : name;
                    p.emplace_back(entry, ParamText(block, id, def, k));
                    if (Control* c = block->GetController(id, k); c && c->NumKeys() > 0) p.emplace_back(entry + " keys", Keys(c));
                }
            }
        }
    }

    static std::string ParamText(IParamBlock2* block, ParamID id, const ParamDef& def, int k) {
        switch (def.Kind()) {
        case ValueKind::Int: return std::to_string(block->GetInt(id, 0, k));
        case ValueKind::Float: return number(block->GetFloat(id, 0, k));
        case ValueKind::Point2: {
            Point2 v = block->GetPoint2(id, 0, k);
            return "(" + number(v.x) + ", " + number(v.y) + ")";
        }
        case ValueKind::Point3: return point(block->GetPoint3(id, 0, k));
        case ValueKind::Point4: {
            Point4 v = block->GetPoint4(id, 0, k);
            return "(" + number(v.x) + ", " + number(v.y) + ", " + number(v.z) + ", " + number(v.w) + ")";
        }
        case ValueKind::Matrix3: return matrix(block->GetMatrix3(id, 0, k));
        case ValueKind::String: {
            const MCHAR* s = block->GetStr(id, 0, k);
            return quoted(s ? MSTR(s) : MSTR());
        }
        case ValueKind::Ref: return describeTarget(block->GetReferenceTarget(id, 0, k));
        case ValueKind::None: break;
        }
        return "?";
    }

    static std::string Keys(Control* c) {
        std::string keys;
        for (int i = 0; i < c->NumKeys(); ++i) keys += (i ? " " : "") + std::to_string(c->GetKeyTime(i));
        return keys;
    }

    // Class, keys, sampled values (for value controllers) and look-at target of a controller, then its
    // sub-controllers under their sub-anim names.
    void Controller(Control* c, const std::string& prefix, Properties& p) {
        if (!c) {
            p.emplace_back(prefix, "none");
            return;
        }
        p.emplace_back(prefix + " class", className(c));
        if (c->NumKeys() > 0) p.emplace_back(prefix + " keys", Keys(c));
        std::string values;
        for (TimeValue t : kSampleTimes) {
            std::string v = Sample(c, t);
            if (v.empty()) break;
            values += (values.empty() ? "" : " ") + v;
        }
        if (!values.empty()) p.emplace_back(prefix + " values", values);
        if (INode* target = c->GetTarget()) p.emplace_back(prefix + " target", quoted(target->GetName()));
        for (int i = 0; i < c->NumSubs(); ++i) {
            Animatable* sub = c->SubAnim(i);
            auto* subControl = sub ? static_cast<Control*>(sub->GetInterface(I_CONTROL)) : nullptr;
            if (subControl) Controller(subControl, prefix + " " + utf8(c->SubAnimName(i, false)), p);
        }
    }

    // The value at t as text; empty for controllers whose value is not sampled (transform controllers are seen
    // through the node's world transform and their sub-controllers).
    static std::string Sample(Control* c, TimeValue t) {
        Interval valid = FOREVER;
        switch (c->SuperClassID()) {
        case CTRL_FLOAT_CLASS_ID: {
            float v = 0;
            c->GetValue(t, &v, valid);
            return number(v);
        }
        case CTRL_POINT3_CLASS_ID:
        case CTRL_POSITION_CLASS_ID: {
            Point3 v;
            c->GetValue(t, &v, valid);
            return point(v);
        }
        case CTRL_ROTATION_CLASS_ID: {
            Quat v;
            c->GetValue(t, &v, valid);
            return quat(v);
        }
        case CTRL_SCALE_CLASS_ID: {
            ScaleValue v;
            c->GetValue(t, &v, valid);
            return point(v.s) + quat(v.q);
        }
        default: return {};
        }
    }

    // How the snapshot names a material: its name, with the number of its occurrence among materials of the
    // same name from the second on ("'Red' (2)"), so a copy in place of a shared material shows. Records the
    // material (and its sub-materials) when first met.
    std::string MaterialKey(Mtl* mtl) {
        if (auto it = materialKey_.find(mtl); it != materialKey_.end()) return it->second;
        const int occurrence = ++nameCount_[utf8(mtl->GetName())];
        std::string key = quoted(mtl->GetName());
        if (occurrence > 1) key += " (" + std::to_string(occurrence) + ")";
        materialKey_.emplace(mtl, key);
        const std::size_t index = snapshot.materials.size();
        snapshot.materials.push_back({"material " + key, utf8(mtl->GetName()), {}});
        Properties p;
        p.emplace_back("class", className(mtl));
        Blocks(mtl, "material", p);
        for (int i = 0; i < mtl->NumSubMtls(); ++i) {
            Mtl* sub = mtl->GetSubMtl(i);
            p.emplace_back("sub-material " + std::to_string(i), sub ? MaterialKey(sub) : "none");
        }
        for (int i = 0; i < mtl->NumSubTexmaps(); ++i) Map(mtl->GetSubTexmap(i), "map " + std::to_string(i), p);
        snapshot.materials[index].properties = std::move(p);
        return key;
    }

    void Map(Texmap* map, const std::string& prefix, Properties& p) {
        if (!map) {
            p.emplace_back(prefix, "none");
            return;
        }
        p.emplace_back(prefix, className(map) + " " + quoted(map->GetName()));
        Blocks(map, prefix, p);
        for (int i = 0; i < map->NumSubTexmaps(); ++i) Map(map->GetSubTexmap(i), prefix + "." + std::to_string(i), p);
    }
};

std::string pairLabel(const SnapshotItem& a, const SnapshotItem& b) {
    if (a.name == b.name) return a.label;
    return a.label + "/'" + b.name + "'";
}

void compareItems(const SnapshotItem& a, const SnapshotItem& b, std::vector<std::string>& out) {
    const std::string label = pairLabel(a, b);
    if (a.name != b.name) out.push_back(label + ": name '" + a.name + "' vs '" + b.name + "'");
    std::map<std::string, const std::string*> second;
    for (auto& [name, value] : b.properties) second.emplace(name, &value);
    std::map<std::string, bool> seen;
    for (auto& [name, value] : a.properties) {
        seen[name] = true;
        auto it = second.find(name);
        if (it == second.end())
            out.push_back(label + ": " + name + " " + value + " vs none");
        else if (*it->second != value)
            out.push_back(label + ": " + name + " " + value + " vs " + *it->second);
    }
    for (auto& [name, value] : b.properties)
        if (!seen.count(name)) out.push_back(label + ": " + name + " none vs " + value);
}

// Pairs items by label (materials: name and occurrence), in the first list's order.
void compareByLabel(const std::vector<SnapshotItem>& a, const std::vector<SnapshotItem>& b, std::vector<std::string>& out) {
    std::map<std::string, const SnapshotItem*> second;
    for (auto& item : b) second.emplace(item.label, &item);
    std::map<std::string, bool> paired;
    for (auto& item : a) {
        auto it = second.find(item.label);
        if (it == second.end()) {
            out.push_back(item.label + " only in the first scene");
            continue;
        }
        paired[item.label] = true;
        compareItems(item, *it->second, out);
    }
    for (auto& item : b)
        if (!paired.count(item.label)) out.push_back(item.label + " only in the second scene");
}

// Pairs items by index (layers: a renamed layer is still the same layer).
void compareByIndex(const std::vector<SnapshotItem>& a, const std::vector<SnapshotItem>& b, std::vector<std::string>& out) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) compareItems(a[i], b[i], out);
    for (std::size_t i = common; i < a.size(); ++i) out.push_back(a[i].label + " (#" + std::to_string(i) + ") only in the first scene");
    for (std::size_t i = common; i < b.size(); ++i) out.push_back(b[i].label + " (#" + std::to_string(i) + ") only in the second scene");
}

}  // namespace

SceneSnapshot TakeSnapshot() {
    Interface* ip = GetCOREInterface();
    Recorder recorder;
    recorder.Nodes(ip->GetRootNode());
    recorder.Library(ip->GetSceneMtls());
    recorder.Layers(ip->GetLayerManager());
    recorder.Entries(ip->GetRootNode());
    return std::move(recorder.snapshot);
}

std::vector<std::string> CompareSnapshots(const SceneSnapshot& first, const SceneSnapshot& second,
                                          const CompareOptions& options) {
    std::vector<std::string> out;
    auto key = [&options](const std::pair<std::string, SnapshotItem>& node) {
        return options.byName ? node.second.path : node.first;
    };
    std::map<std::string, const SnapshotItem*> secondNodes;
    for (auto& node : second.nodes) secondNodes.emplace(key(node), &node.second);
    std::map<std::string, bool> paired;
    for (auto& node : first.nodes) {
        const std::string k = key(node);
        auto it = secondNodes.find(k);
        if (it == secondNodes.end()) {
            out.push_back(node.second.label + " (at " + k + ") only in the first scene");
            continue;
        }
        paired[k] = true;
        compareItems(node.second, *it->second, out);
    }
    for (auto& node : second.nodes)
        if (!paired.count(key(node))) out.push_back(node.second.label + " (at " + key(node) + ") only in the second scene");
    compareByLabel(first.materials, second.materials, out);
    compareByIndex(first.layers, second.layers, out);
    compareByIndex(first.entries, second.entries, out);
    return out;
}

std::vector<std::string> DescribeSnapshot(const SceneSnapshot& snapshot) {
    std::vector<std::string> lines;
    auto describe = [&lines](const SnapshotItem& item) {
        for (auto& [name, value] : item.properties) lines.push_back(item.label + ": " + name + " " + value);
    };
    for (auto& node : snapshot.nodes) describe(node.second);
    for (auto& item : snapshot.materials) describe(item);
    for (auto& item : snapshot.layers) describe(item);
    for (auto& item : snapshot.entries) describe(item);
    return lines;
}

std::string SnapshotText(const SceneSnapshot& snapshot) {
    std::string text;
    auto add = [&text](const std::string& label, const SnapshotItem& item) {
        for (auto& [name, value] : item.properties) text += label + ": " + name + " " + value + "\n";
    };
    std::vector<const SnapshotItem*> nodes;
    for (auto& node : snapshot.nodes) nodes.push_back(&node.second);
    std::stable_sort(nodes.begin(), nodes.end(), [](const SnapshotItem* a, const SnapshotItem* b) { return a->path < b->path; });
    for (const SnapshotItem* node : nodes) add("node '" + node->path + "'", *node);
    auto byLabel = [](const std::vector<SnapshotItem>& items) {
        std::vector<const SnapshotItem*> sorted;
        for (auto& item : items) sorted.push_back(&item);
        std::stable_sort(sorted.begin(), sorted.end(), [](const SnapshotItem* a, const SnapshotItem* b) { return a->label < b->label; });
        return sorted;
    };
    for (const SnapshotItem* item : byLabel(snapshot.materials)) add(item->label, *item);
    for (const SnapshotItem* item : byLabel(snapshot.layers)) add(item->label, *item);
    for (auto& item : snapshot.entries) add(item.label, item);
    return text;
}

std::string JoinDifferences(const std::vector<std::string>& differences) {
    std::string text;
    for (auto& d : differences) text += d + "\n";
    return text;
}

}  // namespace hostrt::test
