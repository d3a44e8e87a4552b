// The scene comparison: a scene saved and opened again compares equal to itself, a change of each kind (node
// properties, hierarchy, objects, modifier stacks, controllers, materials, layers, external-scene entries) is
// reported, and nodes pair by name path when asked.
#include "core/class_directory.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "scene/materials/std_material.h"
#include "scene/materials/texmaps.h"
#include "scene/scene.h"
#include "scene_compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <unistd.h>

using hostrt::test::CompareSnapshots;
using hostrt::test::JoinDifferences;
using hostrt::test::TakeSnapshot;

namespace {

Interface* ip() { return GetCOREInterface(); }

template <class T> T* create(SClass_ID superId, Class_ID id) {
    return dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(superId, id)));
}

IParamBlock2* block(ReferenceMaker* owner) { return dynamic_cast<IParamBlock2*>(owner->GetReference(0)); }

// A scene with a bit of everything: a box under bend and taper with a keyed position, its child sphere, a
// camera aiming at the box, a shared material with a checker map over a bitmap, a multi/sub-object material,
// nested layers.
struct SampleScene {
    INode* box;
    INode* sphere;
    INode* camera;
    Mtl* shared;
    ILayer* walls;
    ILayer* building;

    SampleScene() {
        ILayerManager* layers = ip()->GetLayerManager();
        building = layers->CreateLayer(L"building");
        walls = layers->CreateLayer(L"walls");
        walls->SetParentLayer(building);

        shared = NewDefaultStdMat();
        shared->SetName(L"Red");
        auto* checker = create<Texmap>(TEXMAP_CLASS_ID, hostrt::CheckerTexmap::kClassID);
        checker->SetName(L"Checks");
        auto* bitmap = create<Texmap>(TEXMAP_CLASS_ID, hostrt::BitmapTexmap::kClassID);
        bitmap->SetName(L"Bricks");
        checker->SetSubTexmap(0, bitmap);
        shared->SetSubTexmap(hostrt::StdMaterial::kDiffuseMap, checker);
        auto* multi = create<Mtl>(MATERIAL_CLASS_ID, MULTI_MATERIAL_CLASS_ID);
        multi->SetName(L"Multi");
        Mtl* blue = NewDefaultStdMat();
        blue->SetName(L"Blue");
        multi->SetSubMtl(0, shared);
        multi->SetSubMtl(1, blue);

        auto* boxObj = create<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID);
        block(boxObj)->SetValue(box_length, 0, 12.5f);
        IDerivedObject* stack = CreateDerivedObject(boxObj);
        stack->AddModifier(create<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID));
        stack->AddModifier(create<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID));
        box = ip()->CreateObjectNode(stack);
        box->SetName(L"Box01");
        box->SetMtl(shared);
        walls->AddToLayer(box);
        Matrix3 tm;
        tm.SetTrans(Point3(10, 0, 0));
        AnimateOn();
        box->SetNodeTM(1600, tm);
        AnimateOff();

        sphere = ip()->CreateObjectNode(create<Object>(GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID));
        sphere->SetName(L"Sphere01");
        sphere->SetMtl(multi);
        box->AttachChild(sphere, FALSE);
        sphere->SetUserPropBuffer(L"kind = ball");

        camera = ip()->CreateObjectNode(create<Object>(CAMERA_CLASS_ID, HOST_FREE_CAMERA_CLASS_ID));
        camera->SetName(L"Camera01");
        camera->SetTMController(CreateLookatControl(box));
        camera->SetWireColor(0x00FF0000);
    }
};

class SceneCompare : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        hostrt::Scene::Instance().ResetScene();
        dir_ = std::filesystem::temp_directory_path() /
               ("scene_compare_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override {
        hostrt::Scene::Instance().ResetScene();
        std::filesystem::remove_all(dir_);
    }
    MSTR path(const char* name) const { return MSTR((dir_ / name).wstring()); }
    std::filesystem::path dir_;
};

bool contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool anyContains(const std::vector<std::string>& lines, const std::string& part) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.find(part) != std::string::npos; });
}

// A change made to a fresh sample scene, and a part of one line the comparison must answer for it.
struct Change {
    const char* what;
    std::function<void(SampleScene&)> apply;
    std::string expected;
};

void expectReported(const std::vector<Change>& changes) {
    for (const Change& c : changes) {
        hostrt::Scene::Instance().ResetScene();
        SampleScene scene;
        const auto before = TakeSnapshot();
        c.apply(scene);
        const auto differences = CompareSnapshots(before, TakeSnapshot());
        EXPECT_TRUE(anyContains(differences, c.expected)) << c.what << ":\n" << JoinDifferences(differences);
    }
}

}  // namespace

TEST_F(SceneCompare, SceneSavedAndOpenedAgainHasNoDifferences) {
    SampleScene scene;
    const auto before = TakeSnapshot();
    ASSERT_EQ(before.nodes.size(), 3u);
    ASSERT_GE(before.materials.size(), 3u);
    const MSTR file = path("round_trip.max");
    ASSERT_EQ(ip()->SaveToFile(file.data()), 1);
    ip()->FileReset();
    // An empty scene differs in every node, material and layer the sample made.
    const auto empty = CompareSnapshots(before, TakeSnapshot());
    EXPECT_TRUE(contains(empty, "node 'Camera01' (at 1) only in the first scene")) << JoinDifferences(empty);
    EXPECT_TRUE(anyContains(empty, "layer 'walls' (#")) << JoinDifferences(empty);

    ASSERT_EQ(ip()->LoadFromFile(file.data(), FALSE), 1);
    const auto differences = CompareSnapshots(before, TakeSnapshot());
    EXPECT_TRUE(differences.empty()) << JoinDifferences(differences);
}

TEST_F(SceneCompare, ReportsNodePropertiesAndHierarchy) {
    expectReported({
        {"wire colour", [](SampleScene& s) { s.camera->SetWireColor(0x0000FF00); },
         "node 'Camera01': wire colour 0x00FF0000 vs 0x0000FF00"},
        {"rename", [](SampleScene& s) { s.camera->SetName(L"Camera02"); },
         "node 'Camera01'/'Camera02': name 'Camera01' vs 'Camera02'"},
        {"hidden", [](SampleScene& s) { s.camera->Hide(TRUE); }, "node 'Camera01': hidden no vs yes"},
        {"frozen", [](SampleScene& s) { s.sphere->Freeze(TRUE); }, "node 'Sphere01': frozen no vs yes"},
        {"user properties", [](SampleScene& s) { s.sphere->SetUserPropBuffer(L"kind = cube"); },
         "node 'Sphere01': user properties 'kind = ball' vs 'kind = cube'"},
        {"layer", [](SampleScene& s) { s.building->AddToLayer(s.sphere); },
         "node 'Sphere01': layer '0' vs 'building'"},
        {"render flag", [](SampleScene& s) { s.camera->SetRenderFlag(NODE_REND_CAST_SHADOWS, !s.camera->GetRenderFlag(NODE_REND_CAST_SHADOWS)); },
         "node 'Camera01': render flags "},
        {"bone", [](SampleScene& s) { s.sphere->SetBoneNodeOnOff(TRUE, 0); }, "node 'Sphere01': bone off, "},
        {"transform lock", [](SampleScene& s) { s.sphere->SetTransformLock(INODE_LOCKROT, INODE_LOCK_X, TRUE); },
         "node 'Sphere01': transform locks 000000000 vs 000100000"},
        {"group state", [](SampleScene& s) { s.box->SetGroupHeadOpen(TRUE); },
         "node 'Box01': group member no, head no, open member no, open head no vs member no, head no, open member no, "
         "open head yes"},
        {"skin pose", [](SampleScene& s) {
             static_cast<INodeSkinPose*>(s.sphere->GetInterface(INODE_SKINPOSE_INTERFACE))->SetSkinPos(Point3(0, 0, 2));
         },
         "node 'Sphere01': skin pose (0.0000, 0.0000, 0.0000) (0.0000, 0.0000, 0.0000, 1.0000) (1.0000, 1.0000, 1.0000) "
         "(0.0000, 0.0000, 0.0000, 1.0000) vs (0.0000, 0.0000, 2.0000) "},
        {"object offset", [](SampleScene& s) { s.box->SetObjOffsetPos(Point3(0, 1, 0)); },
         "node 'Box01': object offset (0.0000, 0.0000, 0.0000) "},
        {"never degrade", [](SampleScene& s) {
             static_cast<INodeExtension1*>(s.camera->GetInterface(NODE_EXTENSION1_INTERFACE))->SetDisplaySwitch(TRUE);
         },
         "node 'Camera01': never degrade no vs yes"},
        {"display by layer", [](SampleScene& s) {
             static_cast<INodeExtension2*>(s.camera->GetInterface(NODE_EXTENSION2_INTERFACE))->SetDisplaySwitch(TRUE);
         },
         "node 'Camera01': display by layer no vs yes"},
        {"render by layer", [](SampleScene& s) {
             static_cast<INodeExtension2*>(s.camera->GetInterface(NODE_EXTENSION2_INTERFACE))->SetRenderSwitch(2, TRUE);
         },
         "node 'Camera01': render by layer switches 000 vs 001"},
        {"render property switch", [](SampleScene& s) {
             static_cast<INodeRenderProperties*>(s.box->GetInterface(NODE_RENDERPROPS_INTERFACE))->SetRenderSwitch(9, TRUE);
         },
         "node 'Box01': render property switches 0000000000 vs 0000000001"},
        {"render property value", [](SampleScene& s) {
             static_cast<INodeRenderProperties*>(s.box->GetInterface(NODE_RENDERPROPS_INTERFACE))->SetRenderPropValue(0, 6);
         },
         "node 'Box01': render property values 0x00000000 "},
        {"external-scene entry", [](SampleScene&) { ip()->GetRootNode()->AddNewXRefFile(L"VDTXR"); },
         "external-scene entry 'VDTXR' (#0) only in the second scene"},
        {"deleted child", [](SampleScene& s) { ip()->DeleteNode(s.sphere); },
         "node 'Sphere01' (at 0.0) only in the first scene"},
    });

    // Unlinking the sphere moves it to the end of the root's children: the pairing by position shows it gone
    // from under the box and a new top-level node, and the box's child count changed.
    hostrt::Scene::Instance().ResetScene();
    SampleScene scene;
    const auto before = TakeSnapshot();
    scene.sphere->Detach(0, TRUE);
    const auto differences = CompareSnapshots(before, TakeSnapshot());
    EXPECT_TRUE(contains(differences, "node 'Box01': children 1 vs 0")) << JoinDifferences(differences);
    EXPECT_TRUE(contains(differences, "node 'Sphere01' (at 2) only in the second scene")) << JoinDifferences(differences);
}

TEST_F(SceneCompare, ReportsObjectsStacksAndControllers) {
    auto stackOf = [](INode* n) { return dynamic_cast<IDerivedObject*>(n->GetObjectRef()); };
    expectReported({
        {"object parameter", [](SampleScene& s) { block(s.box->GetBaseObject())->SetValue(box_length, 0, 3.0f); },
         "node 'Box01': object parameter"},
        {"modifier toggle", [&](SampleScene& s) { stackOf(s.box)->GetModifier(1)->DisableModInRender(); },
         "node 'Box01': stack 0 modifier 1 toggles on yes, in viewports yes, in renders yes vs on yes, in viewports yes, "
         "in renders no"},
        {"modifier name", [&](SampleScene& s) { stackOf(s.box)->GetModifier(0)->SetName(L"Narrow"); },
         "stack 0 modifier 0 name 'Taper' vs 'Narrow'"},
        {"modifier order", [&](SampleScene& s) {
             IDerivedObject* d = stackOf(s.box);
             d->DeleteModifier(0);
             d->AddModifier(create<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID), nullptr, 1);
         },
         "node 'Box01': stack 0 modifier 0 class Taper (0x48532302, 0x00000001) vs Bend (0x48532301, 0x00000001)"},
        {"modifier deleted", [&](SampleScene& s) { stackOf(s.box)->DeleteModifier(0); }, "stack 0 modifiers 2 vs 1"},
        {"modifier parameter", [&](SampleScene& s) { block(stackOf(s.box)->GetModifier(1))->SetValue(bend_angle, 0, 45.0f); },
         "stack 0 modifier 1 parameter"},
        {"position key", [](SampleScene& s) { s.box->GetTMController()->GetPositionController()->AddNewKey(4800); },
         "node 'Box01': transform controller Position keys 0 1600 vs 0 1600 4800"},
        {"position value", [](SampleScene& s) {
             Matrix3 tm;
             tm.SetTrans(Point3(0, 5, 0));
             s.box->SetNodeTM(0, tm);
         },
         "node 'Box01': transform controller Position values"},
        {"look-at target", [](SampleScene& s) { s.camera->GetTMController()->SetTarget(s.sphere); },
         "node 'Camera01': transform controller target 'Box01' vs 'Sphere01'"},
    });
}

TEST_F(SceneCompare, ReportsMaterialsAndLayers) {
    expectReported({
        {"material parameter", [](SampleScene& s) { block(s.shared)->SetValue(hostrt::StdMaterial::kGlossiness, 0, 77.0f); },
         "material 'Red': material parameter"},
        {"material name", [](SampleScene& s) { s.shared->SetName(L"Crimson"); }, "node 'Box01': material 'Red' vs 'Crimson'"},
        {"map", [](SampleScene& s) { s.shared->GetSubTexmap(hostrt::StdMaterial::kDiffuseMap)->SetSubTexmap(0, nullptr); },
         "material 'Red': map 0.0 Bitmap"},
        {"sub-material", [](SampleScene& s) { s.sphere->GetMtl()->SetSubMtl(1, nullptr); }, "material 'Multi': sub-material 1 'Blue' vs none"},
        // A copy in place of the shared material: same values, but the sharing is gone.
        {"sharing", [](SampleScene& s) {
             Mtl* copy = static_cast<Mtl*>(CloneRefHierarchy(s.shared));
             s.box->SetMtl(copy);
         },
         "material 'Multi': sub-material 0 'Red' vs 'Red' (2)"},
        {"layer parent", [](SampleScene& s) { s.walls->SetParentLayer(nullptr); }, "layer 'walls': parent 'building' vs none"},
        {"layer name", [](SampleScene& s) { s.building->SetName(L"house"); }, "layer 'building'/'house': name"},
        {"layer nodes", [](SampleScene& s) { s.building->AddToLayer(s.box); }, "layer 'walls': node count 1 vs 0"},
        {"new layer", [](SampleScene&) { ip()->GetLayerManager()->CreateLayer(L"roof"); },
         "layer 'roof' (#3) only in the second scene"},
    });
}

TEST_F(SceneCompare, SceneMergedIntoAnEmptySceneHasNoDifferences) {
    SampleScene scene;
    const auto before = TakeSnapshot();
    const MSTR file = path("merged.max");
    ASSERT_EQ(ip()->SaveToFile(file.data()), 1);
    ip()->FileReset();
    ASSERT_EQ(ip()->MergeFromFile(file.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, MERGE_DUP_MTL_USE_MERGED), 1);
    const auto differences = CompareSnapshots(before, TakeSnapshot());
    EXPECT_TRUE(differences.empty()) << JoinDifferences(differences);
}

// A scene saved and merged back after a node of its own: by place every node moved, by name path only the new
// node differs. Same-named siblings pair in order.
TEST_F(SceneCompare, PairsNodesByNamePathWhenAsked) {
    SampleScene scene;
    INode* twin = ip()->CreateObjectNode(create<Object>(GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID));
    twin->SetName(L"Sphere01");
    scene.box->AttachChild(twin, FALSE);
    twin->SetWireColor(0x000000FF);
    const auto before = TakeSnapshot();
    ASSERT_EQ(before.nodes[1].second.path, "Box01/Sphere01");
    ASSERT_EQ(before.nodes[2].second.path, "Box01/Sphere01 #2");
    const MSTR file = path("by_name.max");
    ASSERT_EQ(ip()->SaveToFile(file.data()), 1);
    ip()->FileReset();
    ip()->CreateObjectNode(create<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID))->SetName(L"Local");
    ASSERT_EQ(ip()->MergeFromFile(file.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, MERGE_DUP_MTL_USE_MERGED), 1);
    const auto after = TakeSnapshot();

    const auto byPlace = CompareSnapshots(before, after);
    EXPECT_TRUE(contains(byPlace, "node 'Box01'/'Local': name 'Box01' vs 'Local'")) << JoinDifferences(byPlace);
    hostrt::test::CompareOptions options;
    options.byName = true;
    const auto byName = CompareSnapshots(before, after, options);
    EXPECT_EQ(byName, (std::vector<std::string>{"node 'Local' (at Local) only in the second scene",
                                                "layer '0': node count 3 vs 4"}))
        << JoinDifferences(byName);

    // The twins keep their order: swapping their colours shows on both.
    ip()->GetINodeByName(L"Box01")->GetChildNode(1)->SetWireColor(0);
    const auto swapped = CompareSnapshots(before, TakeSnapshot(), options);
    EXPECT_TRUE(contains(swapped, "node 'Sphere01': wire colour 0x000000FF vs 0x00000000")) << JoinDifferences(swapped);
}

// The text form lists nodes by name path whatever their order in the scene, so two scenes that differ only in
// the order their nodes were made read the same; twins keep their " #2" and every line ends the same way.
TEST_F(SceneCompare, TextListsNodesByNamePathWhateverTheirOrder) {
    auto make = [](const std::vector<const wchar_t*>& names) {
        hostrt::Scene::Instance().ResetScene();
        for (const wchar_t* name : names) {
            INode* node = ip()->CreateObjectNode(create<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID));
            node->SetName(name);
            node->SetWireColor(0x00112233);
        }
        return hostrt::test::SnapshotText(TakeSnapshot());
    };
    const std::string forwards = make({L"Alpha", L"Beta", L"Beta"});
    const std::string backwards = make({L"Beta", L"Beta", L"Alpha"});
    EXPECT_EQ(forwards, backwards);
    EXPECT_EQ(forwards.rfind("node 'Alpha': parent scene root\n", 0), 0u) << forwards;
    EXPECT_NE(forwards.find("node 'Beta #2': wire colour 0x00112233\n"), std::string::npos) << forwards;
    EXPECT_LT(forwards.find("node 'Beta': "), forwards.find("node 'Beta #2': "));
    EXPECT_NE(forwards.find("layer '0': node count 3\n"), std::string::npos) << forwards;
    EXPECT_EQ(forwards.back(), '\n');
}
