#pragma once

#include <QEvent>
#include <QWidget>

namespace companion::testing {

/// Counts how often a view is given an event of one type: painted, for one, or pressed.
class EventCounter : public QObject {
public:
    EventCounter(QWidget& view, QEvent::Type type)
        : m_type(type)
    {
        view.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == m_type;
        return false;
    }

    int count = 0;

private:
    const QEvent::Type m_type;
};

} // namespace companion::testing
