#include "helper/module_notifications.h"

#include "helper/module_state.h"
#include "inode.h"
#include "notify.h"
#include "records/scene_utils.h"

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

// 10: the manager window's follow-up once a scene is open; the manager window brings it.
void OnSceneOpened(void*, NotifyInfo*) {}

// 13, 14: the saving pipeline takes referenced content out before the host writes and puts it back after;
// it comes with the saving pipeline.
void OnPreSave(void*, NotifyInfo*) {}
void OnPostSave(void*, NotifyInfo*) {}

// 20, 21: the rendering flag. Switching the references whose proxy differs between viewport and render comes
// with the reload operations.
void OnPreRender(void*, NotifyInfo*) { SetRendering(true); }
void OnPostRender(void*, NotifyInfo*) { SetRendering(false); }

// Scene events (node links, layers, renames, property changes, selection sets, deletions): the event
// reactions forward them to the records; they come with the scene event handling.
void OnSceneEvent(void*, NotifyInfo*) {}

// 153: the user renamed a node; a node record takes the new name as its local name.
void OnNodeRenamed(void*, NotifyInfo* info) {
    if (GetOperationMode() != kModeIdle || !info || !info->callParam) return;
    const auto* change = static_cast<const NameChange*>(info->callParam);
    if (RefNode* record = FindNodeRecord(change->node)) record->OnNodeRenamed(MSTR(change->newName));
}

void OnNestingBegin(void*, NotifyInfo*) { SetNestingCounter(GetNestingCounter() + 1); }
void OnNestingEnd(void*, NotifyInfo*) { SetNestingCounter(GetNestingCounter() - 1); }

void OnMonitorSuspend(void*, NotifyInfo*) { SetMonitorSuspended(true); }
void OnMonitorResume(void*, NotifyInfo*) { SetMonitorSuspended(false); }

struct Entry {
    int code;
    NOTIFYPROC proc;
};

const Entry kTable[] = {
    {5, OnSceneAboutToChange},  {7, OnSceneAboutToChange}, {9, OnSceneAboutToChange},
    {10, OnSceneOpened},        {13, OnPreSave},           {14, OnPostSave},
    {20, OnPreRender},          {21, OnPostRender},        {59, OnSceneEvent},
    {64, OnSceneEvent},         {68, OnSceneEvent},        {130, OnSceneEvent},
    {132, OnSceneEvent},        {150, OnSceneEvent},       {153, OnNodeRenamed},
    {174, OnSceneEvent},        {184, OnSceneEvent},       {185, OnSceneEvent},
    {188, OnSceneEvent},        {197, OnSceneEvent},       {199, OnSceneEvent},
    {213, OnSceneEvent},        {214, OnSceneEvent},       {267, OnSceneEvent},
    {103, OnNestingBegin},      {104, OnNestingEnd},       {113, OnMonitorSuspend},
    {115, OnMonitorSuspend},    {114, OnMonitorResume},    {116, OnMonitorResume},
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
