#pragma once

#include <QWidget>

namespace companion {

/// A small window with an arrow to the control that it belongs to. It closes when the window of that control is used
/// and stays open while the user works in other programs.
///
/// A frameless tool window: pop-up windows would grab the mouse, and are missing from the accessibility tree.
class Popover : public QWidget {
    Q_OBJECT

public:
    /// `anchor` and `content` (which becomes a child) live as long as the popover.
    Popover(QWidget& anchor, QWidget& content);

    /// Shows the popover below the anchor; when it is open already it closes, as a second click on the anchor means.
    void present();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void placeBelowAnchor();
    QPolygon outline() const;

    QWidget& m_anchor;
    int m_arrowX = 0;
};

} // namespace companion
