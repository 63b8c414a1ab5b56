#pragma once

#include <QMainWindow>

namespace companion {

/// The one window of the program; its contents change, the window stays.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow();

    /// Replaces the contents; the window owns the view.
    void setContentView(QWidget* view);
};

} // namespace companion
