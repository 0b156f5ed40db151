// The view types of the panel that live beside the plain widgets: they
// know the patch, the MIDI configuration and the sound. Every program that
// opens the panel calls this once before building a layout.
#pragma once

namespace views {

void registerLivingViews();

}  // namespace views
