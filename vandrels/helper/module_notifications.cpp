#include "helper/module_notifications.h"

#include "frame/module_state.h"
#include "helper/render_switch.h"
#include "helper/scene_events.h"
#include "helper/scene_save.h"
#include "notify.h"

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

// 13, 14: the saving pipeline takes referenced content out before the host writes and puts it back after.
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

const Entry kTable[] = {
    {5, OnSceneAboutToChange},  {7, OnSceneAboutToChange},  {9, OnSceneAboutToChange},
    {10, OnSceneEventProc},     {13, OnPreSave},            {14, OnPostSave},
    {20, OnPreRender},          {21, OnPostRender},         {59, OnSceneEventProc},
    {64, OnSceneEventProc},     {68, OnSceneEventProc},     {130, OnSceneEventProc},
    {132, OnSceneEventProc},    {150, OnSceneEventProc},    {153, OnSceneEventProc},
    {174, OnSceneEventProc},    {184, OnSceneEventProc},    {185, OnSceneEventProc},
    {188, OnSceneEventProc},    {197, OnSceneEventProc},    {199, OnSceneEventProc},
    {213, OnSceneEventProc},    {214, OnSceneEventProc},    {267, OnSceneEventProc},
    {103, OnNestingBegin},      {104, OnNestingEnd},        {113, OnMonitorSuspend},
    {115, OnMonitorSuspend},    {114, OnMonitorResume},     {116, OnMonitorResume},
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
