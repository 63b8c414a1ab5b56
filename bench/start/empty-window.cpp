// What any Qt window costs.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Empty window"));
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
