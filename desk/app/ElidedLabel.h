#pragma once

#include <QLabel>

namespace desk {

/// A line of plain text that is cut where there is no room, with the whole of it as its tool tip then. UI
/// thread.
class ElidedLabel : public QLabel {
public:
    ElidedLabel(Qt::TextElideMode mode, QWidget* parent);

    /// `text` is ready to be shown.
    void SetFullText(const QString& text);
    /// Whether all of the text can be seen.
    bool HasRoom() const;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void UpdateToolTip();

    Qt::TextElideMode mMode;
};

}  // namespace desk
