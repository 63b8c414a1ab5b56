#include "ui/ITSwitchWidget.h"

#include <algorithm>
#include <QAccessible>
#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace companion {

namespace {

constexpr TimingFunction platformDefaultTiming{0.25, 0.1, 0.25, 1};
constexpr int focusRingMargin = 4; // around the track, so that the ring does not cover it

QColor toQColor(const Color& color)
{
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
        static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

double between(double from, double to, double progress)
{
    return from + (to - from) * progress;
}

QRectF between(const QRectF& from, const QRectF& to, double progress)
{
    return {between(from.x(), to.x(), progress), between(from.y(), to.y(), progress),
        between(from.width(), to.width(), progress), between(from.height(), to.height(), progress)};
}

/// A clear colour has no hue of its own: fading to or from it goes through the other one, not through black.
QColor inHueOf(const QColor& other, const QColor& color)
{
    return color.alpha() > 0 ? color : QColor(other.red(), other.green(), other.blue(), 0);
}

/// Channels are clamped: the curve overshoots, a colour cannot.
QColor between(const QColor& start, const QColor& end, double progress)
{
    const QColor from = inHueOf(end, start);
    const QColor to = inHueOf(start, end);
    const auto channel = [progress](float a, float b) {
        return static_cast<float>(std::clamp(between(double(a), double(b), progress), 0.0, 1.0));
    };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
        channel(from.blueF(), to.blueF()), channel(from.alphaF(), to.alphaF()));
}

void paintRounded(QPainter& painter, const QRectF& bounds, double cornerRadius, const QColor& color)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(bounds, cornerRadius, cornerRadius);
}

/// Blurred in three steps, from half a radius within the shape to a whole one around it.
void paintShadow(QPainter& painter, const QRectF& shape, double cornerRadius, const ITSwitch::Shadow& shadow)
{
    constexpr int steps = 3;
    QColor color = toQColor(shadow.color);
    color.setAlphaF(static_cast<float>(shadow.opacity / steps));
    const QRectF cast = shape.translated(shadow.offset.width, -shadow.offset.height);
    for (int step = 0; step < steps; ++step) {
        const double spread = shadow.radius * (2.0 - 1.5 * step) / 2;
        paintRounded(painter, cast.adjusted(-spread, -spread, spread, spread), cornerRadius + spread, color);
    }
}

} // namespace

ITSwitchWidget::ITSwitchWidget(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setDuration(static_cast<int>(ITSwitch::animationDuration.count()));
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& time) { showProgress(time.toDouble()); });
}

ITSwitchWidget::~ITSwitchWidget()
{
    if (m_model)
        m_model->setLayers(nullptr);
}

void ITSwitchWidget::setModel(ITSwitch& model)
{
    m_model = &model;
    m_wasChecked = model.checked();
    model.setLayers(this);
    reloadLayerSize();
}

ITSwitchWidget::Appearance ITSwitchWidget::target() const
{
    const Rect knob = m_model->rectForKnob();
    const ITSwitch::Look look = m_model->look();
    return {{knob.origin.x, knob.origin.y, knob.size.width, knob.size.height}, toQColor(look.trackBorder),
        toQColor(look.trackFill), toQColor(look.knobInside), look.opacity};
}

void ITSwitchWidget::reloadLayerSize()
{
    m_animation.stop();
    m_to = target();
    m_shown = m_to;
    update();
}

void ITSwitchWidget::reloadLayer()
{
    const Appearance to = target();
    const TimingFunction timing = m_model->look().timing.value_or(platformDefaultTiming);
    announceState();
    if (isOnItsWayTo(to, timing))
        return;
    m_from = m_shown;
    m_to = to;
    m_timing = timing;
    m_animation.stop();
    if (isVisible())
        m_animation.start();
    else
        m_shown = m_to;
    update();
}

/// Or there already. The pointer moves more often than once in the animation's time, and every move asks for it anew.
bool ITSwitchWidget::isOnItsWayTo(const Appearance& target, const TimingFunction& timing) const
{
    return m_to == target && (m_animation.state() == QAbstractAnimation::Stopped || m_timing == timing);
}

void ITSwitchWidget::showProgress(double time)
{
    const double progress = m_timing.progressAt(time);
    m_shown = {between(m_from.knob, m_to.knob, progress),
        between(m_from.trackBorder, m_to.trackBorder, progress),
        between(m_from.trackFill, m_to.trackFill, progress),
        between(m_from.knobInside, m_to.knobInside, progress),
        std::clamp(between(m_from.opacity, m_to.opacity, progress), 0.0, 1.0)};
    update();
}

void ITSwitchWidget::announceState()
{
    if (m_wasChecked == m_model->checked())
        return;
    m_wasChecked = m_model->checked();
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void ITSwitchWidget::paintEvent(QPaintEvent*)
{
    if (!m_model)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_shown.opacity < 1) {
        painter.setOpacity(m_shown.opacity);
        painter.drawPixmap(0, 0, layersAsOne());
    } else {
        paintLayers(painter);
    }
}

/// The opacity is that of the whole: each layer with it would let those below shine through.
QPixmap ITSwitchWidget::layersAsOne() const
{
    QPixmap whole(QSizeF(QSizeF(size()) * devicePixelRatioF()).toSize());
    whole.setDevicePixelRatio(devicePixelRatioF());
    whole.fill(Qt::transparent);
    QPainter painter(&whole);
    painter.setRenderHint(QPainter::Antialiasing);
    paintLayers(painter);
    return whole;
}

/// The border of a layer lies over what is in the layer.
void ITSwitchWidget::paintLayers(QPainter& painter) const
{
    painter.translate(focusRingMargin, focusRingMargin);
    const ITSwitch::Geometry geometry = m_model->geometry();
    const double half = ITSwitch::borderWidth / 2;
    const QRectF track(
        half, half, m_model->frame().size.width - 2 * half, m_model->frame().size.height - 2 * half);
    const double trackRadius = geometry.trackCornerRadius - half;
    paintRounded(painter, track, trackRadius, m_shown.trackFill);

    paintShadow(painter, m_shown.knob, geometry.knobCornerRadius, ITSwitch::knobShadow);
    paintRounded(painter, m_shown.knob, geometry.knobCornerRadius, toQColor(ITSwitch::knobColor));
    paintShadow(painter, m_shown.knob, geometry.knobInsideCornerRadius, ITSwitch::knobInsideShadow);
    paintRounded(painter, m_shown.knob, geometry.knobInsideCornerRadius, Qt::white); // what the inside covers
    paintRounded(painter, m_shown.knob, geometry.knobInsideCornerRadius, m_shown.knobInside);

    painter.setPen(QPen(m_shown.trackBorder, ITSwitch::borderWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(track, trackRadius, trackRadius);
}

/// A window under an alert hears no more of the mouse, and neither does one that is hidden.
bool ITSwitchWidget::event(QEvent* event)
{
    if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::Hide)
        cancelGesture();
    return QWidget::event(event);
}

void ITSwitchWidget::cancelGesture()
{
    if (m_model && m_model->isActive())
        m_model->cancelGesture();
}

void ITSwitchWidget::resizeEvent(QResizeEvent*)
{
    setProperty("focusRingRadius", height() / 2.0);
    if (m_model)
        m_model->setFrame({{0, 0}, {width() - 2.0 * focusRingMargin, height() - 2.0 * focusRingMargin}});
}

void ITSwitchWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange && m_model) {
        cancelGesture();
        m_model->setEnabled(isEnabled());
    }
    QWidget::changeEvent(event);
}

void ITSwitchWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_model)
        m_model->mouseDown();
}

void ITSwitchWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton && m_model && m_model->isActive())
        m_model->mouseDragged(
            {event->position().x() - focusRingMargin, event->position().y() - focusRingMargin});
}

void ITSwitchWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_model && m_model->isActive())
        m_model->mouseUp();
}

void ITSwitchWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->isAutoRepeat())
        return; // a key that is held is one change
    if (event->key() == Qt::Key_Left && m_model)
        m_model->moveLeft();
    else if (event->key() == Qt::Key_Right && m_model)
        m_model->moveRight();
    else if (!m_model || !m_model->performKeyEquivalent(event->key() == Qt::Key_Space, hasFocus()))
        QWidget::keyPressEvent(event);
}

} // namespace companion
