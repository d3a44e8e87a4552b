// The one request the helper's scene events send to the manager window: bring its rows up to date. The window
// belongs to the scripting layer above the helper, which hands its refresh in when the library loads; until then
// a request does nothing.
#pragma once

namespace vandrels {

using ManagerRefresh = void (*)();

// Sets the function that refreshes the manager window (null: none).
void SetManagerRefresh(ManagerRefresh refresh);
// Brings the manager window's rows up to date when a refresh was handed in and the window is shown.
void RequestManagerRefresh();

}  // namespace vandrels
