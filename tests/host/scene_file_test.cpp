// Scene files: round trips through save and open (shared targets, cycles, weak references, host links,
// custom attributes), the notifications around them, and damaged, foreign and missing files.
#include "core/class_directory.h"
#include "core/ref_internal.h"
#include "io/scene_file_error.h"
#include "io/scene_links.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "max.h"
#include "scene/scene.h"
#include "scene/scene_item_list.h"
#include "scene/scene_parts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using hostrt::Scene;
using hostrt::SceneFileError;
using hostrt::ItemList;

namespace {

IOResult saveInts(ISave* s, USHORT id, std::vector<std::int32_t> v) {
    ULONG n = 0;
    s->BeginChunk(id);
    const IOResult r = s->Write(v.data(), ULONG(v.size() * 4), &n);
    s->EndChunk();
    return r;
}

// A target with numbered references (some of them weak), a value and a name saved in its own chunks.
// A thing of value -1 fails to load.
class Thing : public ReferenceTarget {
public:
    static constexpr Class_ID kID = Class_ID(0x5CE7E001, 0x1);
    explicit Thing(int value = 0, int refs = 0) : value(value), refs_(std::size_t(refs)) {}

    Class_ID ClassID() override { return kID; }
    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override { return refs_.at(std::size_t(i)); }
    void SetReference(int i, RefTargetHandle t) override { refs_.at(std::size_t(i)) = t; }
    BOOL IsRealDependency(ReferenceTarget* t) override {
        for (int i : weakSlots)
            if (refs_[std::size_t(i)] == t) return FALSE;
        return TRUE;
    }
    IOResult Save(ISave* s) override {
        saveInts(s, 0x0001, {value, NumRefs()});
        s->BeginChunk(0x0002);
        s->WriteWString(name);
        s->EndChunk();
        return IO_OK;
    }
    IOResult Load(ILoad* l) override {
        IOResult res;
        while ((res = l->OpenChunk()) == IO_OK) {
            std::int32_t v[2] = {};
            ULONG n = 0;
            if (l->CurChunkID() == 0x0001) {
                if (l->Read(v, sizeof v, &n) != IO_OK || v[0] == -1) return IO_ERROR;
                value = v[0];
                refs_.assign(std::size_t(v[1]), nullptr);
            }
            if (l->CurChunkID() == 0x0002) l->ReadWStringChunk(name);
            l->CloseChunk();
        }
        postLoad_.owner = this;
        l->RegisterPostLoadCallback(&postLoad_);
        return res == IO_END ? IO_OK : res;
    }

    int value;
    MSTR name;
    std::vector<int> weakSlots;
    int refsSeenAfterLoad = -1;  // non-null references seen by the post-load step

private:
    struct PostLoad : PostLoadCallback {
        Thing* owner = nullptr;
        void proc(ILoad*) override {
            owner->refsSeenAfterLoad = int(owner->refs_.size() - std::count(owner->refs_.begin(), owner->refs_.end(), nullptr));
        }
    } postLoad_;
    std::vector<RefTargetHandle> refs_;
};

// A thing with host links: plain pointers the file keeps, as a node keeps its parent.
class Linked : public Thing, public hostrt::ISceneLinks {
public:
    static constexpr Class_ID kID = Class_ID(0x5CE7E002, 0x1);
    using Thing::Thing;
    Class_ID ClassID() override { return kID; }
    int NumLinks() override { return 2; }
    ReferenceTarget* GetLink(int i) override { return links[i]; }
    void SetLink(int i, ReferenceTarget* t) override { links[i] = t; }
    ReferenceTarget* links[2] = {nullptr, nullptr};
};

class Attrib : public CustAttrib {
public:
    static constexpr Class_ID kID = Class_ID(0x5CE7E003, 0x1);
    Class_ID ClassID() override { return kID; }
    IOResult Save(ISave* s) override { return saveInts(s, 0x0001, {value}); }
    IOResult Load(ILoad* l) override {
        ULONG n = 0;
        return l->OpenChunk() == IO_OK && l->Read(&value, sizeof value, &n) == IO_OK ? IO_OK : IO_ERROR;
    }
    int value = 0;
};

// A thing of a class that is registered only for a while, as a plug-in library that goes away.
class Gone : public Thing {
public:
    static constexpr Class_ID kID = Class_ID(0x5CE7E004, 0x1);
    Class_ID ClassID() override { return kID; }
};

template <class T> class Desc : public ClassDesc {
public:
    Desc(const MCHAR* name, SClass_ID sc = REF_TARGET_CLASS_ID) : name_(name), sc_(sc) {}
    int IsPublic() override { return TRUE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new T()); }
    const MCHAR* ClassName() override { return name_; }
    SClass_ID SuperClassID() override { return sc_; }
    Class_ID ClassID() override { return T::kID; }
    const MCHAR* Category() override { return L"Test"; }

private:
    const MCHAR* name_;
    SClass_ID sc_;
};

// The items these tests put into the scene: a scene part of the tests' own, saved and opened with the scene.
constexpr auto kTestItemsRole = static_cast<hostrt::ScenePartRole>(0x5CE7);
void registerTestItems() {
    static bool done = false;
    if (done) return;
    done = true;
    hostrt::RegisterScenePart({kTestItemsRole, [] { return static_cast<ReferenceTarget*>(new ItemList()); },
                               [](ReferenceTarget*, ReferenceTarget*) {}});
}
ItemList* items() { return dynamic_cast<ItemList*>(hostrt::ScenePartItem(kTestItemsRole)); }

Thing* thingAt(int i) { return dynamic_cast<Thing*>(items()->Get(i)); }
Thing* refOf(ReferenceTarget* t, int i) { return dynamic_cast<Thing*>(t->GetReference(i)); }

// Records the notifications of a file operation: code, then what the call parameter says.
struct Recorder {
    std::vector<std::wstring> log;
    static void proc(void* self, NotifyInfo* info) {
        auto* r = static_cast<Recorder*>(self);
        std::wstring e = std::to_wstring(info->intcode);
        switch (info->intcode) {
        case NOTIFY_FILE_PRE_SAVE_PROCESS: {
            auto* p = static_cast<NotifyFileProcess*>(info->callParam);
            e += L" " + std::to_wstring(p->fileProcessType) + L" " + p->fileName;
            break;
        }
        case NOTIFY_FILE_PRE_SAVE:
        case NOTIFY_FILE_POST_SAVE: e += L" " + std::wstring(static_cast<const MCHAR*>(info->callParam)); break;
        case NOTIFY_FILE_PRE_OPEN:
        case NOTIFY_FILE_POST_OPEN: e += L" " + std::to_wstring(*static_cast<FileIOType*>(info->callParam)); break;
        }
        r->log.push_back(e);
    }
    static constexpr int kCodes[] = {5, 6, 7, 8, 9, 10, 13, 14, 174};
    Recorder() {
        for (int c : kCodes) RegisterNotification(&proc, this, c);
    }
    ~Recorder() { UnRegisterNotification(&proc, this); }
};

class SceneFile : public ::testing::Test {
protected:
    void SetUp() override {
        static Desc<Thing> thing(L"Thing");
        static Desc<Linked> linked(L"Linked");
        static Desc<Attrib> attrib(L"Attrib", CUST_ATTRIB_CLASS_ID);
        hostrt::RegisterBuiltinClasses();
        hostrt::RegisterSceneClasses();
        registerTestItems();
        for (ClassDesc* d : std::initializer_list<ClassDesc*>{&thing, &linked, &attrib})
            hostrt::ClassDirectory::Instance().Register(d, "scene-file-test");
        dir_ = std::filesystem::temp_directory_path() /
               ("scene_file_test_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        Scene::Instance().ResetScene();
        emptyLive_ = hostrt::LiveAnimatableCount();
    }
    void TearDown() override {
        Scene::Instance().ResetScene();
        EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_) << "objects outlived the scene";
        std::filesystem::remove_all(dir_);
    }
    MSTR path(const char* name) const { return MSTR::FromUTF8((dir_ / name).string()); }
    static std::vector<std::uint8_t> bytesOf(const MSTR& p) {
        std::ifstream f(p.ToUTF8(), std::ios::binary);
        return {std::istreambuf_iterator<char>(f), {}};
    }
    static void writeBytes(const MSTR& p, const std::vector<std::uint8_t>& b) {
        std::ofstream(p.ToUTF8(), std::ios::binary).write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
    }
    // Opens a file that must fail: the message must hold `expect`, and the open scene must stay as it was.
    void expectOpenFails(const MSTR& file, const std::wstring& expect) {
        Scene& s = Scene::Instance();
        ItemList* root = items();
        const int count = root->Count();
        const MSTR before = s.CurFilePath();
        Recorder rec;
        try {
            s.OpenScene(file);
            ADD_FAILURE() << "opened " << file.ToUTF8();
        } catch (const SceneFileError& e) {
            EXPECT_NE(e.message.str().find(expect), std::wstring::npos) << e.what();
            EXPECT_EQ(e.message.str().rfind(file.str() + L": ", 0), 0u) << e.what();
        }
        EXPECT_EQ(items(), root);
        EXPECT_EQ(root->Count(), count);
        EXPECT_EQ(s.CurFilePath(), before);
        EXPECT_TRUE(rec.log.empty());
    }

    std::filesystem::path dir_;
    std::size_t emptyLive_ = 0;
};

}  // namespace

TEST_F(SceneFile, RoundTripKeepsSharingCyclesAndNotifiesInOrder) {
    Scene& s = Scene::Instance();
    auto* a = new Thing(1, 2);
    auto* b = new Thing(2, 1);
    auto* c = new Thing(3, 1);
    a->name = L"a \U0001F600";
    a->ReplaceReference(0, b);
    a->ReplaceReference(1, c);
    b->ReplaceReference(0, c);  // c is shared by a and b
    c->ReplaceReference(0, a);  // and refers back to a: a cycle
    items()->Add(a);
    items()->Add(new Thing(4, 0));
    s.SetSaveRequired(true);

    const MSTR file = path("round.max");
    {
        Recorder rec;
        s.SaveScene(file);
        const std::wstring f = file.str();
        EXPECT_EQ(rec.log, (std::vector<std::wstring>{L"174 1 " + f, L"13 " + f, L"14 " + f}));
    }
    EXPECT_FALSE(s.IsSaveRequired());
    EXPECT_EQ(s.CurFilePath(), file);

    s.ResetScene();
    EXPECT_EQ(items()->Count(), 0);
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_);  // the old scene's objects are gone
    EXPECT_TRUE(s.CurFilePath().isNull());

    {
        Recorder rec;
        s.OpenScene(file);
        EXPECT_EQ(rec.log, (std::vector<std::wstring>{L"9 0", L"10 0"}));
    }
    EXPECT_EQ(s.CurFilePath(), file);
    ASSERT_EQ(items()->Count(), 2);
    Thing* a2 = thingAt(0);
    ASSERT_NE(a2, nullptr);
    EXPECT_EQ(a2->value, 1);
    EXPECT_EQ(a2->name, MSTR(L"a \U0001F600"));
    Thing* b2 = refOf(a2, 0);
    Thing* c2 = refOf(a2, 1);
    ASSERT_TRUE(b2 && c2);
    EXPECT_EQ(b2->value, 2);
    EXPECT_EQ(c2->value, 3);
    EXPECT_EQ(refOf(b2, 0), c2);  // one object, not a copy
    EXPECT_EQ(refOf(c2, 0), a2);
    EXPECT_EQ(thingAt(1)->value, 4);
    // References come back with the bookkeeping, and before the post-load steps run.
    EXPECT_EQ(std::count(c2->Dependents().begin(), c2->Dependents().end(), a2), 1);
    EXPECT_EQ(std::count(c2->Dependents().begin(), c2->Dependents().end(), b2), 1);
    EXPECT_EQ(a2->refsSeenAfterLoad, 2);
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_ + 4);
}

TEST_F(SceneFile, WeakReferencesAreWrittenOnlyWhenTheirTargetIs) {
    Scene& s = Scene::Instance();
    auto* holder = new Thing(1, 2);
    auto* alone = new Thing(10, 0);  // only weakly referenced: left out
    auto* shared = new Thing(20, 0);  // also referenced really: kept
    holder->weakSlots = {0, 1};
    holder->ReplaceReference(0, alone);
    holder->ReplaceReference(1, shared);
    auto* keeper = new Thing(2, 1);
    keeper->ReplaceReference(0, shared);
    items()->Add(holder);
    items()->Add(keeper);

    // Depth first from the root, references in index order; the weak target held by keeper is placed
    // where holder's weak reference meets it, since it is written anyway.
    const auto order = hostrt::CollectSceneObjects({items()});
    EXPECT_EQ(order, (std::vector<ReferenceTarget*>{items(), holder, shared, keeper}));

    const MSTR file = path("weak.max");
    s.SaveScene(file);
    s.OpenScene(file);
    Thing* holder2 = thingAt(0);
    Thing* keeper2 = thingAt(1);
    ASSERT_TRUE(holder2 && keeper2);
    EXPECT_EQ(holder2->GetReference(0), nullptr);
    ASSERT_NE(refOf(holder2, 1), nullptr);
    EXPECT_EQ(refOf(holder2, 1), refOf(keeper2, 0));
    EXPECT_EQ(refOf(keeper2, 0)->value, 20);
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_ + 3);
}

TEST_F(SceneFile, HostLinksAndCustomAttributesRoundTrip) {
    Scene& s = Scene::Instance();
    auto* owner = new Linked(1, 1);
    auto* child = new Thing(2, 0);
    auto* onlyLinked = new Thing(3, 0);  // reachable through a link only
    owner->ReplaceReference(0, child);
    owner->links[0] = onlyLinked;
    owner->links[1] = child;
    owner->AllocCustAttribContainer();
    auto* attrib = new Attrib();
    attrib->value = 77;
    owner->GetCustAttribContainer()->AppendCustAttrib(attrib);
    items()->Add(owner);

    const MSTR file = path("links.max");
    s.SaveScene(file);
    s.OpenScene(file);  // the scene owns what it reaches through links: the old one is deleted
    auto* owner2 = dynamic_cast<Linked*>(items()->Get(0));
    ASSERT_NE(owner2, nullptr);
    auto* onlyLinked2 = dynamic_cast<Thing*>(owner2->links[0]);
    ASSERT_NE(onlyLinked2, nullptr);
    EXPECT_EQ(onlyLinked2->value, 3);
    EXPECT_EQ(owner2->links[1], owner2->GetReference(0));
    ICustAttribContainer* cc = owner2->GetCustAttribContainer();
    ASSERT_NE(cc, nullptr);
    EXPECT_EQ(cc->GetOwner(), owner2);
    ASSERT_EQ(cc->GetNumCustAttribs(), 1);
    auto* attrib2 = dynamic_cast<Attrib*>(cc->GetCustAttrib(0));
    ASSERT_NE(attrib2, nullptr);
    EXPECT_EQ(attrib2->value, 77);
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_ + 5);  // owner, 2 things, container, attribute
}

TEST_F(SceneFile, DamagedForeignAndMissingFilesChangeNothing) {
    Scene& s = Scene::Instance();
    auto* a = new Thing(1, 1);
    a->ReplaceReference(0, new Thing(2, 0));
    items()->Add(a);
    const MSTR good = path("good.max");
    s.SaveScene(good);
    const std::vector<std::uint8_t> bytes = bytesOf(good);
    ASSERT_GT(bytes.size(), 100u);

    const MSTR cut = path("cut.max");
    // The roots chunk comes last (6-byte header, count, one index per root): cutting 30 bytes more lands inside
    // the object table.
    const std::size_t rootsChunk = 10 + 4 * hostrt::ParseSceneFile(bytes, good).roots.size();
    const std::size_t keep = bytes.size() - rootsChunk - 30;
    writeBytes(cut, {bytes.begin(), bytes.begin() + std::ptrdiff_t(keep)});
    expectOpenFails(cut, L"truncated at byte " + std::to_wstring(keep) + L" in the object table");
    writeBytes(cut, {bytes.begin(), bytes.begin() + 10});
    expectOpenFails(cut, L"truncated at byte 10 in the header");
    // Every shorter prefix fails validation.
    for (std::size_t n = 0; n < bytes.size(); ++n)
        EXPECT_THROW(hostrt::ParseSceneFile({bytes.begin(), bytes.begin() + std::ptrdiff_t(n)}, cut), SceneFileError) << n;

    const MSTR garbage = path("garbage.max");
    writeBytes(garbage, {'#', '!', '/', 'b', 'i', 'n', '/', 's', 'h', '\n', 0, 0, 0, 0});
    expectOpenFails(garbage, L"not a scene file");

    std::vector<std::uint8_t> badIndex = bytes;
    badIndex[badIndex.size() - 1] = 0x7F;  // the root index, last in the file
    const MSTR bad = path("bad-index.max");
    writeBytes(bad, badIndex);
    expectOpenFails(bad, L"a root refers to object");

    expectOpenFails(path("missing.max"), L"cannot open: No such file or directory");
}

TEST_F(SceneFile, UnknownClassesAndFailedLoadsAreReported) {
    Scene& s = Scene::Instance();
    static Desc<Gone> goneDesc(L"GoneClass");
    hostrt::ClassDirectory::Instance().Register(&goneDesc, "scene-file-test-temporary");
    items()->Add(new Gone());
    const MSTR file = path("unknown.max");
    s.SaveScene(file);
    hostrt::ClassDirectory::Instance().UnregisterLibrary("scene-file-test-temporary");
    expectOpenFails(file, L"unknown class 'GoneClass' (superclass 0x00000200, class id (0x5CE7E004, 0x00000001))");

    // Saving an object of an unknown class fails before the old file is touched; 14 still follows 13.
    {
        Recorder rec;
        try {
            s.SaveScene(file);
            ADD_FAILURE() << "saved an unregistered class";
        } catch (const SceneFileError& e) {
            EXPECT_NE(e.message.str().find(L"not registered"), std::wstring::npos) << e.what();
        }
        ASSERT_EQ(rec.log.size(), 3u);
        EXPECT_EQ(rec.log.back().substr(0, 3), L"14 ");
        EXPECT_TRUE(s.IsSaveRequired());
    }
    EXPECT_NE(bytesOf(file).size(), 0u);  // the file of the first save is still there

    s.ResetScene();
    try {
        s.SaveScene(path("no-such-dir/x.max"));
        ADD_FAILURE() << "saved into a missing folder";
    } catch (const SceneFileError& e) {
        EXPECT_NE(e.message.str().find(L"cannot write: No such file or directory"), std::wstring::npos) << e.what();
    }

    // A Load that answers an error fails the open after the point of no return: the scene is left empty,
    // every object made from the file is destroyed, and 10 closes what 9 opened.
    s.ResetScene();
    auto* bad = new Thing(-1, 1);
    auto* keep = new Thing(6, 1);
    keep->ReplaceReference(0, bad);
    items()->Add(keep);
    const MSTR failing = path("failing.max");
    s.SaveScene(failing);
    s.ResetScene();
    items()->Add(new Thing(7, 0));
    Recorder rec;
    try {
        s.OpenScene(failing);
        ADD_FAILURE() << "opened a file whose object fails to load";
    } catch (const SceneFileError& e) {
        EXPECT_NE(e.message.str().find(L"(class 'Thing'"), std::wstring::npos) << e.what();
        EXPECT_NE(e.message.str().find(L"failed to load"), std::wstring::npos) << e.what();
    }
    EXPECT_EQ(rec.log, (std::vector<std::wstring>{L"9 0", L"10 0"}));
    EXPECT_EQ(items()->Count(), 0);
    EXPECT_TRUE(s.CurFilePath().isNull());
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_);
}

TEST_F(SceneFile, ResetAndNewEmptyTheScene) {
    Scene& s = Scene::Instance();
    items()->Add(new Thing(1, 0));
    const MSTR file = path("x.max");
    s.SaveScene(file);
    s.SetSaveRequired(true);
    Recorder rec;
    s.NewScene();
    EXPECT_EQ(items()->Count(), 0);
    EXPECT_TRUE(s.CurFilePath().isNull());
    EXPECT_FALSE(s.IsSaveRequired());
    items()->Add(new Thing(2, 0));
    // An item that something outside the scene depends on survives, with what it holds.
    auto* held = new Thing(3, 1);
    auto* inner = new Thing(4, 0);
    held->ReplaceReference(0, inner);
    items()->Add(held);
    auto* outside = new Thing(5, 1);
    outside->ReplaceReference(0, held);
    s.ResetScene();
    EXPECT_EQ(items()->Count(), 0);
    EXPECT_EQ(rec.log, (std::vector<std::wstring>{L"7", L"8", L"5", L"6"}));
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_ + 3);
    EXPECT_EQ(held->GetReference(0), inner);
    outside->DeleteMe();
    EXPECT_EQ(hostrt::LiveAnimatableCount(), emptyLive_);
}
