// Merging scene files (order, duplicate names, shared materials, layers by name, nested merges, files that
// cannot be read) and saving some nodes as a file of their own.
#include "core/class_directory.h"
#include "core/paramblock_classes.h"
#include "ilayer.h"
#include "inode.h"
#include "imtl.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "notify.h"
#include "scene/controllers/controller_classes.h"
#include "scene/layers/layer_manager.h"
#include "scene/materials/material_classes.h"
#include "scene/objects/object_classes.h"
#include "scene/scene.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using hostrt::Scene;

namespace {

Interface* ip() { return GetCOREInterface(); }

INode* makeNode(const MCHAR* name, INode* parent = nullptr) {
    auto* box = dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    INode* n = ip()->CreateObjectNode(box);
    n->SetName(name);
    if (parent) parent->AttachChild(n, FALSE);
    return n;
}

Mtl* material(const MCHAR* name) {
    Mtl* m = NewDefaultStdMat();
    m->SetName(name);
    return m;
}

// "name(child,child)" for each child of node, in order.
std::wstring tree(INode* node) {
    std::wstring s;
    for (int i = 0; i < node->NumberOfChildren(); ++i) {
        INode* c = node->GetChildNode(i);
        s += (i ? L" " : L"") + std::wstring(c->GetName());
        if (c->NumberOfChildren()) s += L"(" + tree(c) + L")";
    }
    return s;
}

// Records broadcasts with what their call parameters say while they are sent: the node's name (67), the merged
// nodes (267), the file name (13, 14).
struct Broadcasts {
    struct Entry {
        int code;
        std::wstring text;
        std::vector<INode*> nodes;
    };
    std::vector<Entry> log;
    explicit Broadcasts(std::initializer_list<int> codes) {
        for (int c : codes) RegisterNotification(&proc, this, c);
    }
    ~Broadcasts() { UnRegisterNotification(&proc, this); }
    static void proc(void* self, NotifyInfo* info) {
        Entry e{info->intcode, {}, {}};
        if (info->intcode == NOTIFY_SCENE_ADDED_NODE) e.text = static_cast<INode*>(info->callParam)->GetName();
        if (info->intcode == NOTIFY_FILE_POST_MERGE3)
            for (INode* n : *static_cast<INodeTab*>(info->callParam)) e.nodes.push_back(n);
        if (info->intcode == NOTIFY_FILE_PRE_SAVE || info->intcode == NOTIFY_FILE_POST_SAVE)
            e.text = static_cast<const MCHAR*>(info->callParam);
        static_cast<Broadcasts*>(self)->log.push_back(e);
    }
    std::vector<int> Codes() const {
        std::vector<int> c;
        for (auto& e : log) c.push_back(e.code);
        return c;
    }
    std::wstring NodeNames() const {
        std::wstring s;
        for (auto& e : log)
            if (e.code == NOTIFY_SCENE_ADDED_NODE) s += (s.empty() ? L"" : L" ") + e.text;
        return s;
    }
};

struct Marker : AnimProperty {
    DWORD ID() override { return 0x7E57; }
};

struct SceneMerge : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        hostrt::RegisterParamBlockClasses();
        hostrt::RegisterControllerClasses();
        hostrt::RegisterObjectClasses();
        hostrt::RegisterMaterialClasses();
        hostrt::RegisterLayerClasses();
        Scene::Instance().ResetScene();
        dir_ = std::filesystem::temp_directory_path() /
               ("scene_merge_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override {
        Scene::Instance().ResetScene();
        std::filesystem::remove_all(dir_);
    }
    MSTR path(const char* name) const { return MSTR((dir_ / name).wstring()); }
    // Saves the open scene as name and starts an empty one.
    MSTR saveAndReset(const char* name) {
        const MSTR p = path(name);
        EXPECT_EQ(ip()->SaveToFile(p.data()), 1);
        ip()->FileReset();
        return p;
    }
    static int merge(const MSTR& file) {
        return ip()->MergeFromFile(file.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000);
    }
    std::filesystem::path dir_;
};

}  // namespace

TEST_F(SceneMerge, TopLevelNodesJoinLastInFileOrderAndDuplicateNamesStay) {
    INode* fileA = makeNode(L"a");
    makeNode(L"a1", fileA);
    makeNode(L"b");
    const MSTR file = saveAndReset("ab.max");

    INode* a = makeNode(L"a");
    auto* mark = new Marker();
    a->AddAProp(mark);
    ip()->SelectNode(a);
    ip()->SetSaveRequiredFlag(FALSE);
    Broadcasts b({NOTIFY_SCENE_ADDED_NODE, NOTIFY_FILE_POST_MERGE3, NOTIFY_FILE_POST_OPEN});
    ASSERT_EQ(merge(file), 1);

    EXPECT_EQ(tree(ip()->GetRootNode()), L"a a(a1) b");
    EXPECT_EQ(b.Codes(), (std::vector<int>{67, 67, 67, 267}));
    EXPECT_EQ(b.NodeNames(), L"a a1 b");
    const auto& merged = b.log.back().nodes;
    ASSERT_EQ(merged.size(), 3u);
    EXPECT_EQ(merged[0], ip()->GetRootNode()->GetChildNode(1));
    EXPECT_EQ(merged[1], ip()->GetRootNode()->GetChildNode(1)->GetChildNode(0));
    INode* newA = ip()->GetRootNode()->GetChildNode(1);
    EXPECT_NE(newA, a);
    EXPECT_EQ(a->GetAProp(0x7E57), mark);  // the scene's node keeps its property list, the merged one has none
    EXPECT_EQ(newA->aprops.Count(), 0);
    EXPECT_EQ(ip()->GetSelNodeCount(), 1);  // not selected
    EXPECT_TRUE(ip()->IsSaveRequired());
    EXPECT_EQ(ip()->GetINodeByHandle(newA->GetHandle()), newA);

    // The other duplicate actions: skip leaves the file's "a" out, delete-old replaces the scene's.
    ASSERT_EQ(ip()->MergeFromFile(file.data(), TRUE, FALSE, FALSE, MERGE_DUPS_SKIP), 1);
    EXPECT_EQ(tree(ip()->GetRootNode()), L"a a(a1) b");  // both names are taken
    ASSERT_EQ(ip()->MergeFromFile(file.data(), TRUE, TRUE, FALSE, MERGE_DUPS_DELOLD), 1);
    EXPECT_EQ(tree(ip()->GetRootNode()), L"a1 a(a1) b");  // a1 was re-linked when its parent went
    EXPECT_EQ(ip()->GetSelNodeCount(), 3);  // selMerged selects what came in
}

TEST_F(SceneMerge, MaterialsJoinTheLibraryAndLayersAreReusedByName) {
    ILayerManager* lm = ip()->GetLayerManager();
    ILayer* building = lm->CreateLayer(L"building");
    ILayer* walls = lm->CreateLayer(L"walls");
    walls->SetParentLayer(building);
    Mtl* brick = material(L"brick");
    INode* n1 = makeNode(L"n1");
    INode* n2 = makeNode(L"n2");
    INode* n3 = makeNode(L"n3");
    walls->AddToLayer(n1);
    walls->AddToLayer(n2);
    n1->SetMtl(brick);
    n2->SetMtl(brick);
    n3->SetMtl(material(L"glass"));
    const MSTR file = saveAndReset("layers.max");

    // The scene has its own "walls", at the top level; the option is off: same name is enough.
    lm = ip()->GetLayerManager();
    const bool option = lm->GetDuplicateLayerWithoutSameHierarchyOnMerge();
    lm->SetDuplicateLayerWithoutSameHierarchyOnMerge(false, false);
    ILayer* sceneWalls = lm->CreateLayer(L"walls");
    MtlBaseLib* lib = ip()->GetSceneMtls();
    const int before = lib->Count();
    ASSERT_EQ(merge(file), 1);
    INode* m1 = ip()->GetINodeByName(L"n1");
    INode* m2 = ip()->GetINodeByName(L"n2");
    INode* m3 = ip()->GetINodeByName(L"n3");
    ASSERT_TRUE(m1 && m2 && m3);
    EXPECT_EQ(m1->GetLayer(), sceneWalls);
    EXPECT_EQ(m2->GetLayer(), sceneWalls);
    EXPECT_EQ(m3->GetLayer(), lm->GetLayer(0));
    EXPECT_EQ(lm->GetLayer(L"building"), nullptr);  // nothing merged needed it
    ASSERT_NE(m1->GetMtl(), nullptr);
    EXPECT_EQ(m1->GetMtl(), m2->GetMtl());  // still one material
    EXPECT_EQ(lib->Count(), before + 2);
    EXPECT_GE(lib->FindMtl(m1->GetMtl()), 0);
    EXPECT_GE(lib->FindMtl(m3->GetMtl()), 0);

    // With the option on, a "walls" under another parent is a layer of its own, renamed, under "building".
    ip()->FileReset();
    lm = ip()->GetLayerManager();
    lm->SetDuplicateLayerWithoutSameHierarchyOnMerge(true, false);
    sceneWalls = lm->CreateLayer(L"walls");
    ASSERT_EQ(merge(file), 1);
    m1 = ip()->GetINodeByName(L"n1");
    ASSERT_NE(m1->GetLayer(), nullptr);
    EXPECT_NE(m1->GetLayer(), sceneWalls);
    EXPECT_EQ(m1->GetLayer()->GetName(), MSTR(L"walls001"));
    ASSERT_NE(m1->GetLayer()->GetParentLayer(), nullptr);
    EXPECT_EQ(m1->GetLayer()->GetParentLayer(), lm->GetLayer(L"building"));
    EXPECT_EQ(lm->GetLayer(L"walls001"), m1->GetLayer());
    EXPECT_EQ(m1->GetLayer()->NumNodes(), 2);
    lm->SetDuplicateLayerWithoutSameHierarchyOnMerge(option, false);
}

TEST_F(SceneMerge, MergesNestInsideThePostMergeNotification) {
    makeNode(L"outer");
    const MSTR first = saveAndReset("first.max");
    makeNode(L"inner");
    const MSTR second = saveAndReset("second.max");

    Broadcasts b({NOTIFY_SCENE_ADDED_NODE, NOTIFY_FILE_POST_MERGE3});
    struct Nester {
        MSTR file;
        int depth = 0;
        bool done = false;
        static void proc(void* self, NotifyInfo*) {
            auto* n = static_cast<Nester*>(self);
            if (n->done) return;
            n->done = true;
            ++n->depth;
            EXPECT_EQ(merge(n->file), 1);
            --n->depth;
        }
    } nester{second};
    RegisterNotification(&Nester::proc, &nester, NOTIFY_FILE_POST_MERGE3);
    ASSERT_EQ(merge(first), 1);
    UnRegisterNotification(&Nester::proc, &nester);
    EXPECT_EQ(tree(ip()->GetRootNode()), L"outer inner");
    EXPECT_EQ(b.Codes(), (std::vector<int>{67, 267, 67, 267}));
    EXPECT_EQ(b.NodeNames(), L"outer inner");
}

TEST_F(SceneMerge, FilesThatCannotBeReadChangeNothing) {
    makeNode(L"kept");
    const MSTR good = saveAndReset("good.max");
    makeNode(L"here");
    Broadcasts b({NOTIFY_SCENE_ADDED_NODE, NOTIFY_FILE_POST_MERGE3});
    EXPECT_EQ(merge(path("missing.max")), 0);
    const auto size = std::filesystem::file_size(std::filesystem::path(good.str()));
    std::filesystem::resize_file(std::filesystem::path(good.str()), size - 20);
    EXPECT_EQ(merge(good), 0);
    std::ofstream(std::filesystem::path(path("text.max").str())) << "not a scene";
    EXPECT_EQ(merge(path("text.max")), 0);
    EXPECT_TRUE(b.log.empty());
    EXPECT_EQ(tree(ip()->GetRootNode()), L"here");
}

TEST_F(SceneMerge, SaveNodesWritesJustThoseNodesWithWhatTheyNeed) {
    INode* p = makeNode(L"p");
    INode* c = makeNode(L"c", p);
    makeNode(L"q");
    INode* r = makeNode(L"r");
    c->SetMtl(material(L"stone"));
    Broadcasts b({NOTIFY_FILE_PRE_SAVE, NOTIFY_FILE_POST_SAVE});
    const MSTR file = path("some.max");
    INodeTab nodes{c, r, p};  // c goes with p
    ASSERT_EQ(ip()->SaveNodes(&nodes, file.data()), 1);
    ASSERT_EQ(b.Codes(), (std::vector<int>{13, 14}));
    EXPECT_EQ(b.log[0].text, file.str());
    EXPECT_EQ(b.log[1].text, file.str());
    EXPECT_EQ(tree(ip()->GetRootNode()), L"p(c) q r");  // the scene itself is untouched
    EXPECT_TRUE(ip()->GetCurFilePath().isNull());

    ip()->FileReset();
    makeNode(L"base");
    ASSERT_EQ(merge(file), 1);
    EXPECT_EQ(tree(ip()->GetRootNode()), L"base r p(c)");
    INode* c2 = ip()->GetINodeByName(L"c");
    ASSERT_NE(c2->GetMtl(), nullptr);
    EXPECT_EQ(c2->GetMtl()->GetName(), MSTR(L"stone"));

    // The same file opens as a scene of its own, with fresh scene parts.
    ASSERT_EQ(ip()->LoadFromFile(file.data()), 1);
    EXPECT_EQ(tree(ip()->GetRootNode()), L"r p(c)");
    EXPECT_EQ(ip()->GetLayerManager()->GetLayer(0)->GetName(), MSTR(L"0"));
}
