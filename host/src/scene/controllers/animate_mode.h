// The host's animate mode ("auto key"), as the script layer switches it: see Animating() in control.h.
#pragma once

namespace hostrt {

// Switches animate mode on or off (suspensions stay as they are).
void SetAnimateMode(bool on);
// Whether animate mode is on, ignoring suspensions.
bool AnimateMode();

}  // namespace hostrt
