#pragma once

#include "views/ITSwitch.h"

#include <QVariantAnimation>
#include <QWidget>

namespace companion {

/// Shows an `ITSwitch` and passes the user's gestures and keys on to it.
class ITSwitchWidget : public QWidget, private ITSwitchLayers {
    Q_OBJECT

public:
    explicit ITSwitchWidget(QWidget* parent = nullptr);
    ~ITSwitchWidget() override;

    /// The switch to show, which must outlive the widget; called once.
    void setModel(ITSwitch& model);
    ITSwitch* model() const { return m_model; }

    /// The knob's rectangle as it is shown now, which differs from the model's while it moves.
    QRectF shownKnob() const { return m_shown.knob; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// What is animated.
    struct Appearance {
        QRectF knob;
        QColor trackBorder;
        QColor trackFill;
        QColor knobInside;
        double opacity = 1;

        bool operator==(const Appearance&) const = default;
    };

    void reloadLayerSize() override;
    void reloadLayer() override;
    Appearance target() const;
    bool isOnItsWayTo(const Appearance& target, const TimingFunction& timing) const;
    void showProgress(double time);
    void paintLayers(QPainter& painter) const;
    QPixmap layersAsOne() const;
    void cancelGesture();
    void announceState();

    ITSwitch* m_model = nullptr;
    Appearance m_from;
    Appearance m_to;
    Appearance m_shown;
    TimingFunction m_timing;
    QVariantAnimation m_animation{this};
    bool m_wasChecked = false;
};

} // namespace companion
