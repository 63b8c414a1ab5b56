#include "views/qt/QtSplashView.h"

#include "ui_Splash.h"
#include "views/qt/Theme.h"

namespace companion {

QtSplashView::QtSplashView(QWidget* parent)
    : ColoredView(parent)
    , m_scene(std::make_unique<Ui::SplashScene>())
{
    m_scene->setupUi(this);
    setBackgroundColor(Qt::white);
    m_scene->splashImage->setImageName("panel-companion");
    m_scene->mainTitleLabel->setFont(Theme::font(Theme::FontFace::regular, 20));
    m_scene->subTitleLabel->setFont(Theme::font(Theme::FontFace::extraLight, 20));
}

QtSplashView::~QtSplashView() = default;

} // namespace companion
