#include "ui/MainWindow.h"
#include "ui/SvgImage.h"

#include "tests/ui/ScreenTest.h"

#include <QDir>
#include <QImageReader>
#include <QPainter>
#include <QToolButton>

namespace companion::testing {
namespace {

/// How many pixels are not transparent.
int painted(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).alpha() > 0;
    }
    return count;
}

TEST(IconTest, TheseTestsRunWithoutAnImagePlugin)
{
    EXPECT_FALSE(QImageReader::supportedImageFormats().contains("svg"));
}

TEST(IconTest, EveryImageOfTheProgramPaintsPixelsAtAnySize)
{
    const QStringList files = QDir(":/images").entryList();
    ASSERT_GE(files.size(), 10);
    for (const QString& file : files) {
        const QIcon icon = SvgImage::icon(QString(file).remove(".svg"));
        for (const int size : {16, 24, 36, 64, 128}) {
            const QImage image = icon.pixmap(QSize(size, size), 1.0).toImage();
            EXPECT_EQ(image.size(), QSize(size, size));
            EXPECT_GT(painted(image), size) << file.toStdString() << " at " << size;
        }
    }
}

TEST(IconTest, AnUnknownImageStaysTransparent)
{
    EXPECT_EQ(painted(SvgImage("missing").pixmap({24, 24}).toImage()), 0);
}

using IconScreenTest = ScreenTest;

TEST_F(IconScreenTest, TheToolbarsIconsAreOnTheScreen)
{
    for (const char* name : {"devicesListIcon", "settingsIcon"}) {
        auto& button = outlet<QToolButton>(name);
        const QImage with = button.grab().toImage();
        button.setIcon(QIcon());
        EXPECT_NE(button.grab().toImage(), with) << name;
    }
}

TEST_F(IconScreenTest, TheWindowsIconHasPixels)
{
    QTest::qWait(50); // it follows the first paint
    EXPECT_GT(painted(QApplication::windowIcon().pixmap(QSize(64, 64), 1.0).toImage()), 64);
}

TEST_F(IconScreenTest, ThePictureOfARowIsThatOfItsState)
{
    openListOfThree();
    clickRow(1);
    const auto picture = [this](int row) {
        const QRect place = table().visualRect(table().model()->index(row, 0));
        return table().viewport()->grab(QRect(place.left() + 16, place.top() + 18, 24, 24)).toImage();
    };
    const auto drawn = [&](const char* name, QColor background) {
        QImage image(picture(0).size(), QImage::Format_RGB32);
        image.fill(background);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        SvgImage(name).paint(painter, image.rect());
        painter.end();
        return image;
    };
    const auto differences = [](const QImage& one, const QImage& other) {
        int count = 0;
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x)
                count += std::abs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))) > 48;
        }
        return count;
    };
    const QColor under = picture(1).pixelColor(0, 0); // the row may be under the pointer
    EXPECT_LT(differences(picture(1), drawn("connectedChain", under)), 40);
    EXPECT_GT(differences(picture(1), drawn("radioIcon", under)), 60);
    EXPECT_LT(differences(picture(0), drawn("radioIcon", Qt::white)), 40);
    EXPECT_GT(differences(picture(0), drawn("connectedChain", Qt::white)), 60);
}

} // namespace
} // namespace companion::testing
