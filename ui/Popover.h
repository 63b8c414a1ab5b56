#pragma once

#include <QPainterPath>
#include <QPointer>
#include <QWidget>

namespace companion {

/// A panel over the other contents of a view, with an arrow to the control that it belongs to. It closes when anything
/// else in the window is used, and stays open while the user works in other programs.
///
/// A part of the window rather than a window: no desktop has to place it, and its edges blend with what lies below.
class Popover : public QWidget {
    Q_OBJECT

public:
    /// Lies over `view`, which the anchor is in. `content` becomes a child; its focus proxy is the control that the
    /// keyboard works first. Screen readers find a dialog named `heading`.
    Popover(QWidget& view, QWidget& anchor, QWidget& content, const QString& heading);

    /// Opens it below the anchor, and moves the keyboard into it.
    void present();

    /// Closes it; the keyboard goes back to where it came from.
    void dismiss();

    /// Where the arrow points to, on the screen.
    QPoint arrowTip() const { return mapToGlobal(QPoint(m_arrowX, 0)); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isUseOfOtherView(const QObject* watched, const QEvent& event) const;
    void placeBelowAnchor();
    QRectF body() const;
    QPainterPath outline() const;

    QWidget& m_anchor;
    QWidget& m_content;
    QPointer<QWidget> m_focusBefore;
    int m_arrowX = 0;
};

} // namespace companion
