// Saving a scene that holds references: before the host writes, the referenced content leaves what the host
// will write (parked under a private external-scene entry, light placeholders where local content depends on
// it); after the write everything is put back, so the scene in memory is as it was and not marked changed.
#pragma once

struct NotifyInfo;

namespace vandrels {

// Host notification NOTIFY_FILE_PRE_SAVE (call parameter: the file name being saved).
void PreSave(NotifyInfo* info);
// Host notification NOTIFY_FILE_POST_SAVE.
void PostSave(NotifyInfo* info);

}  // namespace vandrels
