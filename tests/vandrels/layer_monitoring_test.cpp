// The reference's layers on the host's layer manager: the monitoring after a merge (prefix and renamings, folding
// into layers of the final name, removing layers that received nothing, the stored entries and their
// references), recording the user's renamings and renaming a layer onto one the scene has. The helper's prefix
// switch is driven end to end by tests/scripts/vandrels_layers.ms.
#include "vandrels_library.h"

#include "helper/layer_monitoring.h"
#include "ilayer.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "object.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// Holds the layers of its entries as references, the way the helper does.
class LayerKeeper : public ReferenceTarget, public vandrels::LayerRecordOwner {
public:
    ~LayerKeeper() override {
        DeleteAllRefs();
        for (RefLayer* entry : refLayers) delete entry;
        for (RenamedLayer* renamed : renamedLayers) delete renamed;
    }
    Tab<RefLayer*>& RefLayers() override { return refLayers; }
    Tab<RenamedLayer*>& RenamedLayers() override { return renamedLayers; }
    void SetLayerReference(int k, ILayer* layer) override {
        if (layer)
            ReplaceReference(k, layer);
        else
            DeleteReference(k);
    }

    Class_ID ClassID() override { return Class_ID(0x7E570002, 0); }
    void GetClassName(MSTR& s, bool) const override { s = L"LayerKeeper"; }
    int NumRefs() override { return refLayers.Count(); }
    RefTargetHandle GetReference(int i) override {
        return i >= 0 && i < refLayers.Count() && refLayers[i] ? refLayers[i]->layer : nullptr;
    }
    void SetReference(int i, RefTargetHandle t) override {
        if (i < 0 || i >= refLayers.Count()) return;
        if (!refLayers[i]) refLayers[i] = new RefLayer;
        refLayers[i]->layer = static_cast<ILayer*>(t);
    }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_SUCCEED;
    }

    void Rename(const MCHAR* name, const MCHAR* newName, int noPrefix) {
        renamedLayers.Append(new RenamedLayer{name, newName, noPrefix});
    }
    void Keep(const MCHAR* name, ILayer* layer) {
        refLayers.Append(new RefLayer{nullptr, name});
        SetLayerReference(refLayers.Count() - 1, layer);
    }
    // The names of the entries and the names their layers carry, "name=layer name" each.
    std::vector<std::wstring> Entries() {
        std::vector<std::wstring> out;
        for (RefLayer* entry : refLayers)
            out.push_back(std::wstring(entry->name.data()) + L"=" + (entry->layer ? entry->layer->GetName().data() : L""));
        return out;
    }
    const RenamedLayer* Renaming(const MCHAR* name) {
        for (RenamedLayer* renamed : renamedLayers)
            if (renamed->name == name) return renamed;
        return nullptr;
    }

    Tab<RefLayer*> refLayers;
    Tab<RenamedLayer*> renamedLayers;
};

class LayerMonitoring : public vtest::SceneTest {
protected:
    LayerMonitoring() : SceneTest("vandrels_layers") {}
    void TearDown() override {
        for (MergedLayer* entry : merged_) delete entry;
        merged_.ZeroCount();
        keepers_.clear();
        SceneTest::TearDown();
    }

    ILayerManager* lm() { return GetCOREInterface()->GetLayerManager(); }
    ILayer* NewLayer(const MCHAR* name, ILayer* parent = nullptr) {
        ILayer* layer = lm()->CreateLayer(name);
        EXPECT_NE(layer, nullptr) << name;
        if (layer && parent) layer->SetParentLayer(parent);
        return layer;
    }
    INode* NodeOn(ILayer* layer, const MCHAR* name) {
        auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
        INode* node = GetCOREInterface()->CreateObjectNode(box);
        node->SetName(name);
        layer->AddToLayer(node);
        return node;
    }
    // A merged layer as the loading pipeline lists it: the layer, its name, whether it existed, its merged nodes.
    MergedLayer* Merged(ILayer* layer, std::vector<INode*> nodes = {}, int existed = 0) {
        auto* entry = new MergedLayer;
        entry->layer = layer;
        entry->name = layer->GetName();
        entry->existed = existed;
        for (INode* node : nodes) entry->nodes.Append(node);
        merged_.Append(entry);
        return entry;
    }
    LayerKeeper& Keeper() { return *keepers_.emplace_back(std::make_unique<LayerKeeper>()); }
    void Monitor(LayerKeeper& keeper, const MCHAR* prefix) {
        vandrels::LayerStepProgress progress;
        vandrels::MonitorMergedLayers(keeper, prefix, merged_, progress);
        for (MergedLayer* entry : merged_) delete entry;
        merged_.ZeroCount();
    }
    std::vector<std::wstring> SceneLayers() {
        std::vector<std::wstring> names;
        for (int i = 0; i < lm()->GetLayerCount(); ++i) names.push_back(lm()->GetLayer(i)->GetName().data());
        return names;
    }
    // Every entry's reference is its layer, and no layer keeps the monitoring's work bit.
    void ExpectConsistent(LayerKeeper& keeper) {
        ASSERT_EQ(keeper.NumRefs(), keeper.refLayers.Count());
        for (int k = 0; k < keeper.refLayers.Count(); ++k) {
            ASSERT_NE(keeper.refLayers[k], nullptr);
            EXPECT_NE(keeper.refLayers[k]->layer, nullptr);
            bool held = false;
            for (ReferenceMaker* dep : keeper.refLayers[k]->layer->Dependents()) held = held || dep == &keeper;
            EXPECT_TRUE(held) << k;
        }
        for (int i = 0; i < lm()->GetLayerCount(); ++i) EXPECT_FALSE(lm()->GetLayer(i)->TestAFlag(0x00400000));
    }

    Tab<MergedLayer*> merged_;
    std::vector<std::unique_ptr<LayerKeeper>> keepers_;
};

using Names = std::vector<std::wstring>;

TEST_F(LayerMonitoring, PrefixNamesTheLayerAndLaterMergesJoinIt) {
    LayerKeeper& first = Keeper();
    INode* a = NodeOn(NewLayer(L"Walls"), L"WallA");
    INode* trimA = NodeOn(NewLayer(L"Inner", a->GetLayer()), L"TrimA");
    Merged(a->GetLayer(), {a});
    Merged(trimA->GetLayer(), {trimA});
    Monitor(first, L"A");
    EXPECT_EQ(SceneLayers(), (Names{L"0", L"A_Walls", L"A_Inner"}));
    EXPECT_EQ(a->GetLayer()->GetName(), MSTR(L"A_Walls"));
    EXPECT_EQ(trimA->GetLayer()->GetParentLayer(), a->GetLayer());
    // The entries keep the layers' names in the reference file.
    EXPECT_EQ(first.Entries(), (Names{L"Walls=A_Walls", L"Inner=A_Inner"}));
    ExpectConsistent(first);

    // A second reference with the same prefix brings its own Walls and Inner layers: they fold into the first
    // reference's layers (Walls can go only once its child layer went along).
    LayerKeeper& second = Keeper();
    INode* b = NodeOn(NewLayer(L"Walls"), L"WallB");
    INode* trimB = NodeOn(NewLayer(L"Inner", b->GetLayer()), L"TrimB");
    Merged(b->GetLayer(), {b});
    Merged(trimB->GetLayer(), {trimB});
    Monitor(second, L"A");
    EXPECT_EQ(SceneLayers(), (Names{L"0", L"A_Walls", L"A_Inner"}));
    EXPECT_EQ(b->GetLayer(), a->GetLayer());
    EXPECT_EQ(trimB->GetLayer(), trimA->GetLayer());
    EXPECT_EQ(trimA->GetLayer()->GetParentLayer(), a->GetLayer());
    EXPECT_EQ(second.Entries(), (Names{L"Walls=A_Walls", L"Inner=A_Inner"}));
    ExpectConsistent(second);

    // Reloading the first reference gives no second entry for the same layer.
    INode* c = NodeOn(NewLayer(L"Walls"), L"WallC");
    Merged(c->GetLayer(), {c});
    Monitor(first, L"A");
    EXPECT_EQ(c->GetLayer(), a->GetLayer());
    EXPECT_EQ(first.Entries(), (Names{L"Walls=A_Walls", L"Inner=A_Inner"}));
    ExpectConsistent(first);
}

TEST_F(LayerMonitoring, RenamingsGiveTheFinalName) {
    LayerKeeper& keeper = Keeper();
    keeper.Rename(L"Walls", L"Custom", 1);
    keeper.Rename(L"Floors", L"Ground", 0);
    INode* wall = NodeOn(NewLayer(L"Walls"), L"Wall");
    INode* floor = NodeOn(NewLayer(L"Floors"), L"Floor");
    INode* roof = NodeOn(NewLayer(L"Roof"), L"Roof");
    Merged(wall->GetLayer(), {wall});
    Merged(floor->GetLayer(), {floor});
    Merged(roof->GetLayer(), {roof});
    Monitor(keeper, L"A");
    EXPECT_EQ(wall->GetLayer()->GetName(), MSTR(L"Custom"));
    EXPECT_EQ(floor->GetLayer()->GetName(), MSTR(L"A_Ground"));
    EXPECT_EQ(roof->GetLayer()->GetName(), MSTR(L"A_Roof"));

    // Without a prefix a plain renaming applies as well, and a layer without one keeps its name.
    // A renaming to nothing (recorded from a layer the user named "A_") leaves the layer as it came.
    LayerKeeper& plain = Keeper();
    plain.Rename(L"Doors", L"Gates", 0);
    plain.Rename(L"Stairs", L"", 0);
    INode* door = NodeOn(NewLayer(L"Doors"), L"Door");
    INode* pane = NodeOn(NewLayer(L"Windows"), L"Pane");
    INode* step = NodeOn(NewLayer(L"Stairs"), L"Step");
    Merged(door->GetLayer(), {door});
    Merged(pane->GetLayer(), {pane});
    Merged(step->GetLayer(), {step});
    Monitor(plain, L"");
    EXPECT_EQ(door->GetLayer()->GetName(), MSTR(L"Gates"));
    EXPECT_EQ(pane->GetLayer()->GetName(), MSTR(L"Windows"));
    EXPECT_EQ(step->GetLayer()->GetName(), MSTR(L"Stairs"));
    EXPECT_EQ(plain.Entries(), (Names{L"Doors=Gates", L"Windows=Windows", L"Stairs=Stairs"}));
    ExpectConsistent(plain);
}

TEST_F(LayerMonitoring, LayersThatReceivedNothingAreRemoved) {
    LayerKeeper& keeper = Keeper();
    ILayer* user = NewLayer(L"Old");
    ILayer* parent = NewLayer(L"Building");
    INode* wall = NodeOn(NewLayer(L"Walls", parent), L"Wall");
    ILayer* empty = NewLayer(L"Trash");
    ILayer* emptyChild = NewLayer(L"Scraps", empty);
    Merged(wall->GetLayer(), {wall});
    Merged(empty);       // listed before its empty child: the child goes first
    Merged(emptyChild);  // its merged node was deleted again
    Merged(parent);      // holds no node itself, but its child does
    Merged(user, {}, 1);
    Monitor(keeper, L"A");
    EXPECT_EQ(SceneLayers(), (Names{L"0", L"Old", L"A_Building", L"A_Walls"}));
    EXPECT_EQ(wall->GetLayer()->GetParentLayer(), lm()->GetLayer(MSTR(L"A_Building")));
    // The user's layer stays, but is none of the reference's.
    EXPECT_EQ(keeper.Entries(), (Names{L"Walls=A_Walls", L"Building=A_Building"}));
    ExpectConsistent(keeper);
}

TEST_F(LayerMonitoring, ALayerOfTheFinalNameReceivesTheNodes) {
    LayerKeeper& keeper = Keeper();
    ILayer* existing = NewLayer(L"A_Walls");
    INode* local = NodeOn(existing, L"Local");
    ILayer* user = NewLayer(L"Floors");
    INode* mine = NodeOn(user, L"Mine");
    INode* wall = NodeOn(NewLayer(L"Walls"), L"Wall");
    // The merge put this node on the user's Floors layer, which the scene had before.
    INode* floor = NodeOn(user, L"Floor");
    Merged(wall->GetLayer(), {wall});
    Merged(user, {floor}, 1);
    const std::size_t before = SceneLayers().size();
    Monitor(keeper, L"A");
    EXPECT_EQ(wall->GetLayer(), existing);
    EXPECT_EQ(local->GetLayer(), existing);
    EXPECT_EQ(floor->GetLayer()->GetName(), MSTR(L"A_Floors"));
    EXPECT_EQ(mine->GetLayer(), user);
    EXPECT_EQ(SceneLayers(), (Names{L"0", L"A_Walls", L"Floors", L"A_Floors"}));
    EXPECT_EQ(SceneLayers().size(), before);
    EXPECT_EQ(keeper.Entries(), (Names{L"Walls=A_Walls", L"Floors=A_Floors"}));
    ExpectConsistent(keeper);
}

TEST_F(LayerMonitoring, StoringDropsEntriesWhoseLayerIsGoneAndRestoresParents) {
    LayerKeeper& keeper = Keeper();
    ILayer* gone = NewLayer(L"Gone");
    keeper.Keep(L"Kept", NewLayer(L"Kept"));
    keeper.Keep(L"Gone", gone);
    keeper.Keep(L"Kept2", NewLayer(L"Kept2"));
    keeper.SetLayerReference(1, nullptr);  // the layer left the scene
    lm()->DeleteLayer(MSTR(L"Gone"));

    ILayer* parent = NewLayer(L"Building");
    INode* wall = NodeOn(NewLayer(L"Walls"), L"Wall");  // the merge hung it at the top
    MergedLayer* child = Merged(wall->GetLayer(), {wall});
    child->parent = Merged(parent);
    Monitor(keeper, L"");
    EXPECT_EQ(wall->GetLayer()->GetParentLayer(), parent);
    EXPECT_EQ(keeper.Entries(), (Names{L"Kept=Kept", L"Kept2=Kept2", L"Walls=Walls", L"Building=Building"}));
    ExpectConsistent(keeper);
}

TEST_F(LayerMonitoring, RecordingRenamingsStripsThePrefixOrTakesTheNameAsItStands) {
    LayerKeeper& keeper = Keeper();
    keeper.Keep(L"Walls", NewLayer(L"A_Walls"));    // as merged: nothing to record
    keeper.Keep(L"Floors", NewLayer(L"A_Ground"));  // renamed within the prefix
    keeper.Keep(L"Roof", NewLayer(L"Attic"));       // renamed out of it
    keeper.Keep(L"Doors", NewLayer(L"A_Portal"));   // renamed again after a full renaming
    keeper.Rename(L"Doors", L"Gates", 1);
    vandrels::RecordLayerRenamings(keeper, L"A");
    ASSERT_EQ(keeper.renamedLayers.Count(), 3);
    EXPECT_EQ(keeper.Renaming(L"Walls"), nullptr);
    EXPECT_EQ(keeper.Renaming(L"Floors")->newName, MSTR(L"Ground"));
    EXPECT_EQ(keeper.Renaming(L"Floors")->noPrefix, 0);
    EXPECT_EQ(keeper.Renaming(L"Roof")->newName, MSTR(L"Attic"));
    EXPECT_EQ(keeper.Renaming(L"Roof")->noPrefix, 1);
    EXPECT_EQ(keeper.Renaming(L"Doors")->newName, MSTR(L"A_Portal"));
    EXPECT_EQ(keeper.Renaming(L"Doors")->noPrefix, 1);

    // Without a prefix every name is taken as a plain renaming.
    LayerKeeper& plain = Keeper();
    plain.Keep(L"Stairs", NewLayer(L"A_Steps"));
    vandrels::RecordLayerRenamings(plain, L"");
    ASSERT_EQ(plain.renamedLayers.Count(), 1);
    EXPECT_EQ(plain.Renaming(L"Stairs")->newName, MSTR(L"A_Steps"));
    EXPECT_EQ(plain.Renaming(L"Stairs")->noPrefix, 0);
}

TEST_F(LayerMonitoring, RenamingOntoAnExistingLayerJoinsIt) {
    LayerKeeper& keeper = Keeper();
    ILayer* mine = NewLayer(L"Walls");
    INode* local = NodeOn(mine, L"Local");
    ILayer* ours = NewLayer(L"A_Walls");
    INode* wall = NodeOn(ours, L"Wall");
    ILayer* below = NewLayer(L"Trim", ours);
    keeper.Keep(L"Walls", ours);
    EXPECT_FALSE(vandrels::RenameReferenceLayer(keeper, 0, L"A_Walls"));
    EXPECT_TRUE(vandrels::RenameReferenceLayer(keeper, 0, L"Walls"));
    EXPECT_EQ(keeper.refLayers[0]->layer, mine);
    EXPECT_EQ(wall->GetLayer(), mine);
    EXPECT_EQ(local->GetLayer(), mine);
    EXPECT_EQ(below->GetParentLayer(), mine);
    EXPECT_EQ(SceneLayers(), (Names{L"0", L"Walls", L"Trim"}));
    ExpectConsistent(keeper);
}

}  // namespace
