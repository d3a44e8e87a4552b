// A merge that fails midway leaves the session as it found it: undo recording and reference messages are back
// on, however the failure left the merge.
#include "core/class_directory.h"
#include "hold.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "plugapi.h"
#include "ref.h"
#include "scene/objects/object_classes.h"
#include "scene/scene.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

Interface* ip() { return GetCOREInterface(); }

INode* MakeBox(const MCHAR* name) {
    auto* box = dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    INode* node = ip()->CreateObjectNode(box);
    node->SetName(name);
    return node;
}

// Deleting a scene node fails: the merge that replaces scene nodes by the file's throws in the middle.
void RefuseDeletion(void*, NotifyInfo*) { throw MAXException(L"the node may not go"); }

TEST(MergeScopeGuards, AMergeThatThrowsMidwayPutsUndoAndReferenceMessagesBack) {
    hostrt::RegisterBuiltinClasses();
    hostrt::RegisterObjectClasses();
    hostrt::Scene::Instance().ResetScene();
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("merge_scope_guards_" + std::to_string(::getpid()) + ".max");
    MakeBox(L"Same");
    ASSERT_EQ(ip()->SaveToFile(MSTR(file.wstring()).data()), 1);

    RegisterNotification(&RefuseDeletion, nullptr, NOTIFY_SCENE_PRE_DELETED_NODE);
    const int merged = ip()->MergeFromFile(MSTR(file.wstring()).data(), TRUE, FALSE, FALSE, MERGE_DUPS_DELOLD);
    UnRegisterNotification(&RefuseDeletion, nullptr, NOTIFY_SCENE_PRE_DELETED_NODE);

    EXPECT_EQ(merged, 0);
    EXPECT_FALSE(theHold.IsSuspended());
    EXPECT_TRUE(RefMsgsEnabled());
    hostrt::Scene::Instance().ResetScene();
    std::filesystem::remove(file);
}

}  // namespace
