// The library's menu in the host's main window: when the host starts with its graphical interface, a "Vandrels"
// menu on the main window's menu bar opens the manager window.
#pragma once

#include "notify.h"

namespace vandrels {

// Adds the menu (once) when the host has a Qt main window; a notification procedure for the host's start-up.
void AddVandrelsMenu(void* param, NotifyInfo* info);

}  // namespace vandrels
