// `maxhost demo`: builds a small scene from two demonstration classes, shows messages and undo at work, saves
// the scene, opens it again and prints what came back.
#include "commands.h"
#include "demo_classes.h"

#include "max.h"
#include "scene/scene.h"
#include "scene/scene_item_list.h"
#include "scene/scene_parts.h"

#include <filesystem>

namespace maxhost {
namespace {

using demo::Crate;
using demo::Shelf;

void printShelf(Shelf* shelf) {
    mprintf(L"shelf with %d crates\n", shelf->crates.Count());
    for (int i = 0; i < shelf->crates.Count(); ++i) {
        auto* crate = static_cast<Crate*>(shelf->crates[i]);
        if (!crate) {
            mprintf(L"  %d: (empty)\n", i + 1);
            continue;
        }
        IParamBlock2* pb = crate->pblock;
        mprintf(L"  %d: %s  width %.1f  height %.1f\n", i + 1, pb->GetStr(Crate::kLabel), pb->GetFloat(Crate::kWidth),
                pb->GetFloat(Crate::kHeight));
    }
}

// The demonstration keeps its shelf in a scene part of its own, saved and opened with the scene.
constexpr auto kDemoItemsRole = static_cast<hostrt::ScenePartRole>(0xDE40);
hostrt::ItemList* demoItems() {
    static bool registered = false;
    if (!registered) {
        registered = true;
        hostrt::RegisterScenePart({kDemoItemsRole, [] { return static_cast<ReferenceTarget*>(new hostrt::ItemList()); },
                                   [](ReferenceTarget*, ReferenceTarget*) {}});
    }
    return static_cast<hostrt::ItemList*>(hostrt::ScenePartItem(kDemoItemsRole));
}

Shelf* findShelf() {
    hostrt::ItemList* root = demoItems();
    for (int i = 0; i < root->Count(); ++i)
        if (root->Get(i) && root->Get(i)->ClassID() == Shelf::kClassID) return static_cast<Shelf*>(root->Get(i));
    return nullptr;
}

}  // namespace

int RunDemo(std::FILE* out) {
    demo::RegisterDemoClasses();
    auto& scene = hostrt::Scene::Instance();
    scene.ResetScene();

    mprintf(L"-- building a scene\n");
    auto* shelf = static_cast<Shelf*>(CreateInstance(REF_TARGET_CLASS_ID, Shelf::kClassID));
    demoItems()->Add(shelf);
    const MCHAR* labels[] = {L"apples", L"pears", L"plums"};
    for (int i = 0; i < 3; ++i) {
        auto* crate = static_cast<Crate*>(CreateInstance(REF_TARGET_CLASS_ID, Crate::kClassID));
        crate->pblock->SetValue(Crate::kLabel, 0, labels[i]);
        crate->pblock->SetValue(Crate::kWidth, 0, 10.f + 5.f * float(i));
        shelf->Add(crate);
    }
    shelf->Add(shelf->crates[0]);  // the same crate referenced twice: saved once
    printShelf(shelf);

    mprintf(L"-- a parameter change travels to the shelf, and undo takes it back\n");
    shelf->verbose = true;
    auto* pears = static_cast<Crate*>(shelf->crates[1]);
    theHold.Begin();
    pears->pblock->SetValue(Crate::kHeight, 0, 12.5f);
    theHold.Accept(L"Raise Pears");
    mprintf(L"  pears height %.1f; undo step \"%s\"\n", pears->pblock->GetFloat(Crate::kHeight),
            theHold.UndoEntryName(0).data());
    theHold.Undo();
    mprintf(L"  after undo: %.1f\n", pears->pblock->GetFloat(Crate::kHeight));
    theHold.Redo();
    mprintf(L"  after redo: %.1f\n", pears->pblock->GetFloat(Crate::kHeight));
    shelf->verbose = false;
    theHold.FlushUndoBuffer();

    const auto file = std::filesystem::temp_directory_path() / "maxhost-demo.max";
    const MSTR path = MSTR::FromUTF8(file.string());
    mprintf(L"-- saving, resetting and opening the scene again\n");
    try {
        scene.SaveScene(path);
        scene.ResetScene();
        mprintf(L"  after reset the scene holds %d items\n", demoItems()->Count());
        scene.OpenScene(path);
    } catch (const MAXException& e) {
        mprintf(L"demo failed: %s\n", e.message.data());
        return 1;
    }
    Shelf* back = findShelf();
    if (!back) {
        mprintf(L"demo failed: the shelf did not come back\n");
        return 1;
    }
    printShelf(back);
    mprintf(L"  crates 1 and 4 are %s\n", back->crates[0] == back->crates[3] ? L"still the same crate" : L"different crates");

    mprintf(L"-- a damaged file is refused and the open scene stays as it was\n");
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    try {
        scene.OpenScene(path);
        mprintf(L"  the damaged file opened?!\n");
        return 1;
    } catch (const MAXException& e) {
        mprintf(L"  %s\n", e.message.data());
    }
    mprintf(L"  the scene still holds its shelf: %s\n", findShelf() == back ? L"yes" : L"no");
    std::filesystem::remove(file);
    std::fflush(out);
    return 0;
}

}  // namespace maxhost
