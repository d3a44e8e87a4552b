// Animate mode: one process-wide switch and a count of open suspensions.
#include "scene/controllers/animate_mode.h"

#include "control.h"

namespace {
bool animateOn = false;
int suspended = 0;
}  // namespace

namespace hostrt {
void SetAnimateMode(bool on) { animateOn = on; }
bool AnimateMode() { return animateOn; }
}  // namespace hostrt

BOOL Animating() { return animateOn && suspended == 0 ? TRUE : FALSE; }
void AnimateOn() { animateOn = true; }
void AnimateOff() { animateOn = false; }
void SuspendAnimate() { ++suspended; }
void ResumeAnimate() {
    if (suspended > 0) --suspended;
}
