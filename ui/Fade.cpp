#include "ui/Fade.h"

#include <QFocusFrame>
#include <QPainter>
#include <QVariantAnimation>

namespace companion {

namespace {

bool g_isMotionAllowed = false;

/// A picture over a part of a view. The base class keeps it away from the mouse and out of the accessibility tree.
class Fade : public QFocusFrame {
public:
    Fade(QWidget& view, const QRect& area, QPixmap picture)
        : QFocusFrame(&view)
        , m_picture(std::move(picture))
    {
        setAcceptDrops(false);
        setGeometry(area);
        show();
        raise();
        m_opacity.setStartValue(1.0);
        m_opacity.setEndValue(0.0);
        m_opacity.setDuration(static_cast<int>(fadeDuration.count()));
        connect(&m_opacity, &QVariantAnimation::valueChanged, this, [this] { update(); });
        connect(&m_opacity, &QVariantAnimation::finished, this, &QObject::deleteLater);
        m_opacity.start();
    }

    bool hasJustBegun() const { return m_opacity.currentTime() == 0; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setOpacity(m_opacity.currentValue().toDouble());
        painter.drawPixmap(0, 0, m_picture);
    }

private:
    const QPixmap m_picture;
    QVariantAnimation m_opacity;
};

Fade* fadeOf(QWidget& view, const QRect& area)
{
    for (QFocusFrame* frame : view.findChildren<QFocusFrame*>(Qt::FindDirectChildrenOnly)) {
        auto* const fade = dynamic_cast<Fade*>(frame);
        if (fade && fade->geometry() == area)
            return fade;
    }
    return nullptr;
}

} // namespace

void allowMotion(bool isAllowed)
{
    g_isMotionAllowed = isAllowed;
}

bool isMotionAllowed()
{
    return g_isMotionAllowed;
}

void fade(QWidget& view, const QRect& area, const std::function<void()>& change)
{
    const QRect seen = area & view.rect();
    Fade* const present = fadeOf(view, seen);
    const bool isPartOfSameChange = present && present->hasJustBegun();
    if (!g_isMotionAllowed || !view.isVisible() || seen.isEmpty() || isPartOfSameChange)
        return change();
    QPixmap before = view.grab(seen); // with what the present one has left
    delete present;
    change();
    new Fade(view, seen, std::move(before));
}

} // namespace companion
