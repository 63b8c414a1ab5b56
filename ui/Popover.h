#pragma once

#include <QPainterPath>
#include <QPointer>
#include <QWidget>

namespace companion {

/// A small window with an arrow to the control that it belongs to. It closes when the window of that control is used,
/// its title bar included, and stays open while the user works in other programs.
///
/// A frameless tool window: pop-up windows would grab the mouse, and are missing from the accessibility tree.
class Popover : public QWidget {
    Q_OBJECT

public:
    /// `content` becomes a child. A popover whose anchor has gone does nothing any more. The content's focus proxy is the
    /// control that the keyboard works first.
    Popover(QWidget& anchor, QWidget& content);

    /// Shows the popover below the anchor, or brings it to the front where it is open already.
    void present();

    /// Where the arrow points to, on the screen.
    QPoint arrowTip() const { return mapToGlobal(QPoint(m_arrowX, 0)); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isUseOfAnchorsWindow(const QObject* watched, const QEvent& event);
    bool isActivatedByUser();
    void focusContent();
    void placeBelowAnchor();
    QBitmap shape() const;
    QPainterPath outline(double inset) const;

    QPointer<QWidget> m_anchor;
    QWidget& m_content;
    int m_arrowX = 0;
    bool m_wasUnderAlert = false;
};

} // namespace companion
