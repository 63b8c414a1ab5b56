#include "ui/QtSplashView.h"

#include "ui/FirstPaint.h"
#include "ui/Theme.h"
#include "ui_Splash.h"

namespace companion {

QtSplashView::QtSplashView(QWidget* parent)
    : ColoredView(parent)
    , m_scene(std::make_unique<Ui::SplashScene>())
{
    m_scene->setupUi(this);
    setBackgroundColor(Qt::white);
    m_scene->titlesView->setFixedHeight(Theme::scaled(64));
    m_scene->splashImage->setImageName("panel-companion");
    m_scene->mainTitleLabel->hide();
    m_scene->subTitleLabel->hide();
    afterFirstPaint(*this, [this] { showTitles(); });
}

QtSplashView::~QtSplashView() = default;

/// The first text of a program has the toolkit look through all fonts of the computer, which takes longer than
/// everything else that this view needs.
void QtSplashView::showTitles()
{
    m_scene->mainTitleLabel->setFont(Theme::font(Theme::FontFace::regular, 20));
    m_scene->subTitleLabel->setFont(Theme::font(Theme::FontFace::extraLight, 20));
    m_scene->mainTitleLabel->show();
    m_scene->subTitleLabel->show();
}

} // namespace companion
