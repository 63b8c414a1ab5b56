#include "ui/MainWindow.h"

#include "ui/FirstPaint.h"
#include "ui/SvgImage.h"

#include <QApplication>

namespace companion {

MainWindow::MainWindow()
{
    setWindowTitle(QStringLiteral("Panel Companion"));
    afterFirstPaint(*this, [] { // it is drawn in six sizes
        QApplication::setWindowIcon(
            QIcon(SvgImage::path(QStringLiteral("panel-companion")))); // of alerts, too
    });
    setMinimumSize(800, 560);
    resize(960, 640);
}

void MainWindow::setContentView(QWidget* view)
{
    setCentralWidget(view);
}

} // namespace companion
