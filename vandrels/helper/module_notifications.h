// The host notifications that the library hears process-wide: registered by the first helper, taken down when
// the host is about to reset, renew or open a scene.
#pragma once

namespace vandrels {

// Registers the whole table once (nothing when it is registered already) and marks it registered.
void RegisterModuleNotifications();
// Unregisters the whole table and marks it unregistered.
void UnregisterModuleNotifications();

}  // namespace vandrels
