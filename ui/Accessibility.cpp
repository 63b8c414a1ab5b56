#include "ui/Accessibility.h"

#include "ui/ImageView.h"
#include "ui/ITSwitchWidget.h"
#include "ui/Popover.h"
#include "ui/RoundButton.h"
#include "ui/UploadProgressBars.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QComboBox>

namespace companion {

bool isUnderAlert(const QWidget& view)
{
    const QWidget* const modal = QApplication::activeModalWidget();
    return modal && modal->window() != view.window();
}

namespace {

bool isWorkable(const QWidget& view)
{
    return view.isEnabled() && !isUnderAlert(view);
}

/// A check box that can be pressed or toggled, and whose value is 0 or 1.
class AccessibleSwitch : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleSwitch(ITSwitchWidget& widget)
        : QAccessibleWidget(&widget, QAccessible::CheckBox)
        , m_widget(widget)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = m_widget.model() && m_widget.model()->checked();
        return state;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value && m_widget.model())
            return QString::number(m_widget.model()->accessibilityValue());
        return QAccessibleWidget::text(kind);
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override
    {
        return m_widget.model() ? m_widget.model()->accessibilityValue() : 0;
    }
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return 1; }
    QVariant minimumStepSize() const override { return 1; }

    void setCurrentValue(const QVariant& value) override
    {
        if (isWorkable(m_widget) && m_widget.model())
            m_widget.model()->accessibilitySetValue(value.toBool());
    }

    QStringList actionNames() const override
    {
        return QStringList{toggleAction(), pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override
    {
        if (name != toggleAction() && name != pressAction())
            QAccessibleWidget::doAction(name);
        else if (isWorkable(m_widget) && m_widget.model())
            m_widget.model()->accessibilityPerformPress();
    }

private:
    ITSwitchWidget& m_widget;
};

/// A button whose state tells whether what it stands for is running.
class AccessibleRoundButton : public QAccessibleWidget {
public:
    explicit AccessibleRoundButton(RoundButton& button)
        : QAccessibleWidget(&button, QAccessible::Button)
        , m_button(button)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.pressed = m_button.isActive();
        return state;
    }

    QStringList actionNames() const override
    {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override
    {
        if (name != pressAction())
            QAccessibleWidget::doAction(name);
        else if (isWorkable(m_button)) // what it starts may be modal, and the caller must not wait for that
            QMetaObject::invokeMethod(&m_button, &QAbstractButton::click, Qt::QueuedConnection);
    }

private:
    RoundButton& m_button;
};

/// A pop-up button by its own name; the toolkit would take what is chosen for its name, too.
class AccessiblePopUpButton : public QAccessibleWidget {
public:
    explicit AccessiblePopUpButton(QComboBox& button)
        : QAccessibleWidget(&button, QAccessible::ComboBox)
        , m_button(button)
    {
    }

    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(m_button.view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child && child->object() == m_button.view() ? 0 : -1;
    }

    QString text(QAccessible::Text kind) const override
    {
        const bool isChoice = kind == QAccessible::Value || kind == QAccessible::Description;
        return isChoice ? m_button.currentText() : QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.hasPopup = true;
        state.expanded = m_button.view()->isVisible();
        return state;
    }

    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }

    void doAction(const QString& name) override
    {
        if ((name != showMenuAction() && name != pressAction()) || !isWorkable(m_button))
            return;
        if (m_button.view()->isVisible())
            m_button.hidePopup();
        else
            m_button.showPopup();
    }

private:
    QComboBox& m_button;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    if (auto* widget = qobject_cast<ITSwitchWidget*>(object))
        return new AccessibleSwitch(*widget);
    if (auto* button = qobject_cast<RoundButton*>(object))
        return new AccessibleRoundButton(*button);
    if (auto* button = qobject_cast<QComboBox*>(object))
        return new AccessiblePopUpButton(*button);
    if (auto* popover = qobject_cast<Popover*>(object))
        return new QAccessibleWidget(popover, QAccessible::Dialog);
    if (auto* bars = qobject_cast<UploadProgressBars*>(object))
        return new QAccessibleWidget(bars, QAccessible::Grouping);
    if (auto* view = qobject_cast<ImageView*>(object)) {
        const bool isDecoration = view->accessibleName().isEmpty();
        return new QAccessibleWidget(view, isDecoration ? QAccessible::Graphic : QAccessible::Grouping);
    }
    return nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(makeInterface);
}

} // namespace companion
