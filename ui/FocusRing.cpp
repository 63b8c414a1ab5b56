#include "ui/FocusRing.h"

#include "ui/DevicesTableView.h"
#include "ui/ITSwitchWidget.h"
#include "ui/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QFocusFrame>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>

namespace companion {

namespace {

constexpr double ringWidth = 3;
constexpr double usualRadius = 8;

bool isRinged(const QWidget& control)
{
    return qobject_cast<const QAbstractButton*>(&control) || qobject_cast<const QComboBox*>(&control)
        || qobject_cast<const ITSwitchWidget*>(&control) || qobject_cast<const DevicesTableView*>(&control);
}

/// What the ring lies on: a list's rows scroll in its viewport.
QWidget& surfaceOf(QWidget& control)
{
    auto* const list = qobject_cast<QAbstractItemView*>(&control);
    return list ? *list->viewport() : control;
}

/// A child of the control, just inside its bounds. The base class keeps it out of the accessibility tree.
class FocusRing : public QFocusFrame {
public:
    explicit FocusRing(QWidget& control)
        : QFocusFrame(&surfaceOf(control))
        , m_control(control)
    {
        place();
        show();
        parentWidget()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Paint)
            place();
        return false;
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        // White sets the ring off from a control of any colour, the ring's own included.
        const bool isOnDark = m_control.property("focusRingOnDark").toBool();
        if (isOnDark)
            paintRing(painter, ringWidth * 3 / 2, Qt::white);
        paintRing(painter, ringWidth / 2, QColor(isOnDark ? Theme::text : Theme::accent));
    }

private:
    void place()
    {
        const auto* const list = qobject_cast<QAbstractItemView*>(&m_control);
        const bool isRow = list && list->currentIndex().isValid();
        setGeometry(isRow ? list->visualRect(list->currentIndex()) : parentWidget()->rect());
    }

    /// `inset` is that of the ring's middle line.
    void paintRing(QPainter& painter, double inset, const QColor& color) const
    {
        const QVariant radius = m_control.property("focusRingRadius");
        const double cornerRadius = (radius.isValid() ? radius.toDouble() : usualRadius) - inset;
        painter.setPen(QPen(color, ringWidth));
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
    }

    QWidget& m_control;
};

class FocusRingFilter : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* const widget = qobject_cast<QWidget*>(watched);
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            m_isKeyLast = false;
            delete m_ring;
            break;
        case QEvent::KeyPress:
            m_isKeyLast = true;
            if (widget && !m_ring && leadsTheEyeTo(*widget, *static_cast<QKeyEvent*>(event)))
                showRing(*widget);
            break;
        case QEvent::FocusIn:
            if (widget)
                showRing(*widget);
            break;
        case QEvent::FocusOut:
            delete m_ring;
            break;
        default:
            break;
        }
        return false;
    }

private:
    /// Which row the keys have reached has to be seen, and where Tab is that finds nowhere else to go.
    static bool leadsTheEyeTo(const QWidget& widget, const QKeyEvent& event)
    {
        const bool isTab = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
        return widget.hasFocus() && (isTab || qobject_cast<const DevicesTableView*>(&widget));
    }

    void showRing(QWidget& control)
    {
        delete m_ring;
        if (m_isKeyLast && isRinged(control))
            m_ring = new FocusRing(control);
    }

    QPointer<FocusRing> m_ring; ///< Goes with its control.
    bool m_isKeyLast =
        false; ///< Rather than a mouse button. Focus reasons do not tell: when what has the focus is hidden,
               ///< the toolkit moves on "by Tab".
};

} // namespace

void installFocusRing()
{
    qApp->installEventFilter(new FocusRingFilter(qApp));
}

} // namespace companion
