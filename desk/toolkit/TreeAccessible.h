#pragma once

namespace desk {

/// Has assistive technology see the trees of the program as Qt shows its own, a table of the opened rows below
/// a line of headings, with actions on top: "Toggle" opens and closes a folder, "Press" selects a row alone
/// (AT-SPI; there is no interface for selections in this version of Qt). May be called again. UI thread.
void InstallTreeAccessible();

}  // namespace desk
