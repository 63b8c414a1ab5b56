#include "ui/FirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <utility>

namespace companion {

namespace {

class FirstPaint : public QObject {
public:
    FirstPaint(QWidget& widget, std::function<void()> then)
        : QObject(&widget)
        , m_then(std::move(then))
    {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // The whole window goes out at the end of this turn of the event loop.
            QTimer::singleShot(0, this, [this] {
                m_then();
                deleteLater();
            });
        }
        return false;
    }

private:
    const std::function<void()> m_then;
};

} // namespace

void afterFirstPaint(QWidget& widget, std::function<void()> then)
{
    new FirstPaint(widget, std::move(then));
}

} // namespace companion
