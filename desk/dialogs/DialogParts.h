#pragma once

#include <QString>
#include <string_view>

class QMessageBox;
class QWidget;

namespace desk {

/// The window for a dialog to stand over: the active one, else any that the user sees; may be null. UI thread.
QWidget* FindParentWindow();

/// `text` escaped line by line: its own line breaks are the message's paragraphs. Long paths may be broken
/// behind their separators.
QString ToDisplayLines(std::u16string_view text);

/// Gives the box its title, and the width that a window's frame takes to show it whole. To be called last: what
/// else it is given makes the box lay itself out anew.
void SetTitle(QMessageBox& box, std::u16string_view title);

/// Gives the box the theme's picture for what it is: "information", "question" or "warning".
void SetPicture(QMessageBox& box, std::string_view kind);

}  // namespace desk
