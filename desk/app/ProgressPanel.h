#pragma once

namespace desk {

/// Registers the panel that shows what is being copied (`host::kProgressHandlerID`) and its entry in the Window
/// menu, as a plug-in does; it is closed until it is wanted. To be called once the language is known. UI
/// thread.
void RegisterProgressPanel();

}  // namespace desk
