#pragma once

#include "views/qt/ColoredView.h"

#include <memory>

namespace Ui {
class SplashScene;
}

namespace companion {

/// What the main window shows while the program starts.
class QtSplashView : public ColoredView {
    Q_OBJECT

public:
    explicit QtSplashView(QWidget* parent = nullptr);
    ~QtSplashView() override;

private:
    std::unique_ptr<Ui::SplashScene> m_scene;
};

} // namespace companion
