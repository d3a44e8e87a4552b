#include "helper/module_notifications.h"

#include "frame/module_state.h"
#include "helper/render_switch.h"
#include "helper/scene_events.h"
#include "helper/scene_save.h"
#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"

namespace vandrels {
namespace {

// 5, 7, 9: the scene is about to be reset, renewed or opened. Opening another kind of file (a material
// library, render presets) keeps the table.
void OnSceneAboutToChange(void*, NotifyInfo* info) {
    if (info && info->intcode == NOTIFY_FILE_PRE_OPEN && info->callParam &&
        *static_cast<FileIOType*>(info->callParam) != IOTYPE_MAX)
        return;
    UnregisterModuleNotifications();
    SetOperationMode(kModeIdle);
}

// NOTIFY_FILE_PRE_SAVE, NOTIFY_FILE_POST_SAVE: the saving pipeline takes referenced content out before the host writes and puts it back after.
void OnPreSave(void*, NotifyInfo* info) { PreSave(info); }
void OnPostSave(void*, NotifyInfo* info) { PostSave(info); }

// 20, 21: the rendering flag, and the references whose content differs between viewport and render switch.
void OnPreRender(void*, NotifyInfo*) { SwitchForRender(true); }
void OnPostRender(void*, NotifyInfo*) { SwitchForRender(false); }

// Scene events (node links, layers, renames, property changes, selection sets, deletions) go to the records.
void OnSceneEventProc(void*, NotifyInfo* info) { OnSceneEvent(info); }

void OnNestingBegin(void*, NotifyInfo*) { SetNestingCounter(GetNestingCounter() + 1); }
void OnNestingEnd(void*, NotifyInfo*) { SetNestingCounter(GetNestingCounter() - 1); }

void OnMonitorSuspend(void*, NotifyInfo*) { SetMonitorSuspended(true); }
void OnMonitorResume(void*, NotifyInfo*) { SetMonitorSuspended(false); }

struct Entry {
    int code;
    NOTIFYPROC proc;
};

// The host's nested operations begin and end; the host has no names for these two codes.
constexpr int kNotifyNestedOperationBegins = 103;
constexpr int kNotifyNestedOperationEnds = 104;

const Entry kTable[] = {
    {NOTIFY_SYSTEM_PRE_RESET, OnSceneAboutToChange},
    {NOTIFY_SYSTEM_PRE_NEW, OnSceneAboutToChange},
    {NOTIFY_FILE_PRE_OPEN, OnSceneAboutToChange},
    {NOTIFY_FILE_POST_OPEN, OnSceneEventProc},
    {NOTIFY_FILE_PRE_SAVE, OnPreSave},
    {NOTIFY_FILE_POST_SAVE, OnPostSave},
    {NOTIFY_PRE_RENDER, OnPreRender},
    {NOTIFY_POST_RENDER, OnPostRender},
    {NOTIFY_NODE_LINKED, OnSceneEventProc},
    {NOTIFY_NODE_CREATED, OnSceneEventProc},
    {NOTIFY_SCENE_PRE_DELETED_NODE, OnSceneEventProc},
    {NOTIFY_POST_NODE_BONE_PROP_CHANGED, OnSceneEventProc},
    {NOTIFY_POST_NODE_USER_PROP_CHANGED, OnSceneEventProc},
    {NOTIFY_NODE_LAYER_CHANGED, OnSceneEventProc},
    {NOTIFY_NODE_RENAMED, OnSceneEventProc},
    {NOTIFY_FILE_PRE_SAVE_PROCESS, OnSceneEventProc},
    {NOTIFY_NAMED_SEL_SET_CREATED, OnSceneEventProc},
    {NOTIFY_NAMED_SEL_SET_DELETED, OnSceneEventProc},
    {NOTIFY_NAMED_SEL_SET_RENAMED, OnSceneEventProc},
    {NOTIFY_POST_NODE_RENDER_PROP_CHANGED, OnSceneEventProc},
    {NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, OnSceneEventProc},
    {NOTIFY_NODE_PROPERTY_CHANGED, OnSceneEventProc},
    {NOTIFY_NODE_STRUCTURE_CHANGED, OnSceneEventProc},
    {NOTIFY_FILE_POST_MERGE3, OnSceneEventProc},
    {kNotifyNestedOperationBegins, OnNestingBegin},
    {kNotifyNestedOperationEnds, OnNestingEnd},
    {NOTIFY_PRE_MODIFIER_ADDED, OnMonitorSuspend},
    {NOTIFY_PRE_MODIFIER_DELETED, OnMonitorSuspend},
    {NOTIFY_POST_MODIFIER_ADDED, OnMonitorResume},
    {NOTIFY_POST_MODIFIER_DELETED, OnMonitorResume},
};
constexpr int kCount = int(sizeof(kTable) / sizeof(kTable[0]));

}  // namespace

void RegisterModuleNotifications() {
    if (AreNotificationsRegistered()) return;
    for (int i = 0; i < kCount; ++i) RegisterNotification(kTable[i].proc, nullptr, kTable[i].code);
    SetNotificationsRegistered(true);
}

void UnregisterModuleNotifications() {
    for (int i = 0; i < kCount; ++i) UnRegisterNotification(kTable[i].proc, nullptr, kTable[i].code);
    SetNotificationsRegistered(false);
}

}  // namespace vandrels
