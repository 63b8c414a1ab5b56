#include "ui/MaskingViewWidget.h"

#include "ui/ITSwitchWidget.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPaintEvent>

namespace companion {

namespace {

template <typename... Controls> bool isOneOf(const QWidget* view)
{
    return (qobject_cast<const Controls*>(view) || ...);
}

} // namespace

/// The toolkit disables whatever is in a disabled view, so views that merely hold others have no enabled state here.
class MaskingViewWidget::Control : public MaskedSubview {
public:
    explicit Control(QWidget& view)
        : m_view(view)
    {
    }

    bool canBeEnabled() const override
    {
        return isOneOf<QAbstractButton, QAbstractItemView, QAbstractSlider, QAbstractSpinBox, QComboBox,
            ITSwitchWidget, QLabel, QLineEdit>(&m_view);
    }

    void setEnabled(bool enabled) override { m_view.setEnabled(enabled); }

private:
    QWidget& m_view;
};

MaskingViewWidget::MaskingViewWidget(QWidget* parent)
    : QWidget(parent)
{
}

MaskingViewWidget::~MaskingViewWidget() = default;

void MaskingViewWidget::setLog(SystemLog& log)
{
    m_model = std::make_unique<MaskingView>(log, [this] { return directSubviews(); });
}

std::vector<MaskedSubview*> MaskingViewWidget::directSubviews()
{
    m_controls.clear();
    std::vector<MaskedSubview*> subviews;
    for (QWidget* view : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        m_controls.push_back(std::make_unique<Control>(*view));
        subviews.push_back(m_controls.back().get());
    }
    return subviews;
}

bool MaskingViewWidget::maskEnabled() const
{
    return m_model && m_model->maskEnabled();
}

/// The toolkit asks no view for a hit test; it passes over those that are marked so, with all that they hold.
void MaskingViewWidget::setMaskEnabled(bool enabled)
{
    if (!m_model)
        return;
    m_model->setMaskEnabled(enabled);
    setAttribute(Qt::WA_TransparentForMouseEvents, m_model->hitTest(this) == nullptr);
}

void MaskingViewWidget::enableSubViews()
{
    if (m_model)
        m_model->enableSubViews();
}

void MaskingViewWidget::disableSubViews()
{
    if (m_model)
        m_model->disableSubViews();
}

/// A button that is pressed redraws itself, and the toolkit what is behind it; that is no redraw of this view.
void MaskingViewWidget::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    const bool isOwnRedraw = !event->region().subtracted(childrenRegion()).isEmpty();
    if (m_model && isOwnRedraw)
        m_model->didDraw();
}

void MaskingViewWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (m_model)
        m_model->mouseDown();
    event->accept();
}

} // namespace companion
