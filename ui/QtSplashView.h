#pragma once

#include "ui/ColoredView.h"

#include <memory>

namespace Ui {
class SplashScene;
}

namespace companion {

/// What the main window shows while the program starts: the picture at once, the titles right after it.
class QtSplashView : public ColoredView {
    Q_OBJECT

public:
    explicit QtSplashView(QWidget* parent = nullptr);
    ~QtSplashView() override;

private:
    void showTitles();

    std::unique_ptr<Ui::SplashScene> m_scene;
};

} // namespace companion
