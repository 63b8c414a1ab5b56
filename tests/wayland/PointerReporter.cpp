// pointer-reporter: another program, over the whole screen, that prints each mouse event as "press X Y",
// "move X Y", "double X Y" or "release X Y", in its window's coordinates; "ready" comes first. "token TOKEN" is what lets
// another program's window come to the front.
#include "platform/wayland/ActivationToken.h"

#include <cstdio>
#include <QApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

class Reporter : public QWidget {
protected:
    void mousePressEvent(QMouseEvent* event) override { report("press", *event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { report("double", *event); }
    void mouseReleaseEvent(QMouseEvent* event) override { report("release", *event); }
    void mouseMoveEvent(QMouseEvent* event) override { report("move", *event); }

private:
    static void report(const char* what, const QMouseEvent& event)
    {
        std::printf("%s %.2f %.2f\n", what, event.position().x(), event.position().y());
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Reporter window;
    window.setWindowTitle(QStringLiteral("Touches"));
    window.setMouseTracking(true);
    window.showFullScreen();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &window, [&] {
        if (!window.windowHandle()->isExposed() || window.size() != window.screen()->size())
            return;
        poll.stop();
        std::puts("ready");
        std::fflush(stdout);
    });
    poll.start(20);
    const companion::ActivationToken activation([](const std::string& token) {
        std::printf("token %s\n", token.c_str());
        std::fflush(stdout);
    });
    return QApplication::exec();
}
