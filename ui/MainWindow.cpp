#include "ui/MainWindow.h"

#include "ui/FirstPaint.h"
#include "ui/SvgImage.h"

#include <QApplication>

namespace companion {

MainWindow::MainWindow()
{
    setWindowTitle(QStringLiteral("Panel Companion"));
    afterFirstPaint(*this, [] { // it is drawn in several sizes, and for alerts, too
        QApplication::setWindowIcon(SvgImage::icon(QStringLiteral("panel-companion")));
    });
    setMinimumSize(800, 560);
    resize(960, 640);
}

void MainWindow::setContentView(QWidget* view)
{
    setCentralWidget(view);
}

} // namespace companion
