#include "ui/ElidedLabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

namespace companion {

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip)
        setToolTip(shownText() == text() ? QString() : text());
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(),
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment())), palette(), isEnabled(),
        shownText(), foregroundRole());
}

} // namespace companion
