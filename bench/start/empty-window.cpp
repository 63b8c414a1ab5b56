// What any Qt window costs: empty, or with a line of text when started as bench_text_window.
#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Nothing but a window"));
    if (WINDOW_HAS_TEXT) {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(new QLabel(QStringLiteral("Nothing but a text")));
    }
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
