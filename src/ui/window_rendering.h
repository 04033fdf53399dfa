#pragma once

namespace boxlift {

/// Has windows drawn without the graphics card, unless the environment says how to draw them: that
/// starts sooner, takes less memory and works everywhere. Before the first window.
void preferSoftwareRendering();

} // namespace boxlift
