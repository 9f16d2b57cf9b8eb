#pragma once

#include <QWidget>

class QBoxLayout;
class QLabel;

namespace desk {

/// A bar above a project's text that says something about its state, with buttons for what can be done about
/// it, which stand below the text where they would leave it too little room. UI thread.
class ProjectNotice : public QWidget {
    Q_OBJECT

public:
    explicit ProjectNotice(QWidget* parent);

    /// `text` is localised and ready to be shown.
    void SetText(const QString& text);
    /// Adds a button that sends a command.
    void AddButton(const char* textKey, int commandID);
    void ShowButton(int commandID, bool show);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void FitButtons();

    QLabel* mText;
    QBoxLayout* mLayout;
    QBoxLayout* mButtons;
};

}  // namespace desk
