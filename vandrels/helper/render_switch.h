// The switch between viewport and render content around a render: a reference whose proxy settings differ
// between the viewports and the render (or that holds nested content that switches) is reloaded when a render
// starts, with its render content, and when it ends, with its viewport content.
#pragma once

namespace vandrels {

// Sets or clears the rendering flag, then (unless the host renders as a network render server) reloads every
// helper that needs render switching, all inside one reference batch.
void SwitchForRender(bool rendering);

}  // namespace vandrels
