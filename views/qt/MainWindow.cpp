#include "views/qt/MainWindow.h"

#include "views/qt/SvgImage.h"

namespace companion {

MainWindow::MainWindow()
{
    setWindowTitle(QStringLiteral("Panel Companion"));
    setWindowIcon(QIcon(SvgImage::path(QStringLiteral("panel-companion"))));
    setMinimumSize(800, 560);
    resize(960, 640);
}

void MainWindow::setContentView(QWidget* view)
{
    setCentralWidget(view);
}

} // namespace companion
