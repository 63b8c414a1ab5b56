#include "tests/ui/ScreenStates.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace companion::testing {
namespace {

constexpr int visibleDifference = 12; // of a channel, of 255; the kept pictures have few colours
constexpr int toleratedPixels = 40;   // of half a million: rounding at edges, not a line that moved

/// Letters look different with every version of the toolkit, of the library that draws them, and of the fonts.
QString makers()
{
    QImage letters(600, 300, QImage::Format_RGB32);
    letters.fill(Qt::white);
    QPainter painter(&letters);
    int y = 0;
    for (const auto face : {Theme::FontFace::regular, Theme::FontFace::medium, Theme::FontFace::semiBold,
             Theme::FontFace::extraLight}) {
        painter.setFont(Theme::font(face, 16));
        painter.drawText(10, y += 60, QStringLiteral("Panel Companion pairs 0A00020F (10.0.2.15)"));
    }
    painter.end();
    const QByteArray drawn(reinterpret_cast<const char*>(letters.constBits()), letters.sizeInBytes());
    const QByteArray sum = QCryptographicHash::hash(drawn, QCryptographicHash::Sha1).toHex();
    return QStringLiteral("Qt %1, letters %2\n")
        .arg(QString::fromLatin1(qVersion()), QString::fromLatin1(sum));
}

/// One pixel for each point, whatever the scale is, as the pictures are kept.
QImage onePixelAPoint(const QImage& picture, QSize points)
{
    QImage scaled = picture.convertToFormat(QImage::Format_RGB32);
    scaled.setDevicePixelRatio(1);
    return scaled.size() == points ? scaled
                                   : scaled.scaled(points, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

int differentPixels(const QImage& one, const QImage& other)
{
    if (one.size() != other.size())
        return one.width() * one.height();
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        const auto* ours = reinterpret_cast<const QRgb*>(one.constScanLine(y));
        const auto* theirs = reinterpret_cast<const QRgb*>(other.constScanLine(y));
        for (int x = 0; x < one.width(); ++x) {
            count += ours[x] != theirs[x]
                && (std::abs(qRed(ours[x]) - qRed(theirs[x])) > visibleDifference
                    || std::abs(qGreen(ours[x]) - qGreen(theirs[x])) > visibleDifference
                    || std::abs(qBlue(ours[x]) - qBlue(theirs[x])) > visibleDifference);
        }
    }
    return count;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// With PANEL_COMPANION_NEW_PICTURES it writes the pictures there, for tools/screenshots.sh; otherwise it compares, and
/// puts those that differ into the folder "pictures" of where it runs.
TEST(ReferencePictureTest, EveryStateLooksAsInItsPictureAtThreeSizes)
{
    const QString written = qEnvironmentVariable("PANEL_COMPANION_NEW_PICTURES");
    const QDir known(QStringLiteral(REFERENCE_PICTURES));
    const QString madeWith =
        QStringLiteral("made-with@%1.txt").arg(qApp->devicePixelRatio()); // hinting differs
    if (written.isEmpty() && contents(known.filePath(madeWith)) != makers().toUtf8())
        GTEST_SKIP() << "the pictures were made with another Qt, FreeType or typeface: they have "
                     << contents(known.filePath(madeWith)).toStdString() << "here it is "
                     << makers().toStdString();
    const QDir output(written.isEmpty() ? QStringLiteral("pictures") : written);
    QDir().mkpath(output.path());
    if (!written.isEmpty()) {
        QFile file(output.filePath(madeWith));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(makers().toUtf8());
    }
    ScreenStates states([&](const QString& state) {
        if (state == "settings-choice") // the platform's small screen pushes the menu about
            return;
        for (const QSize size : {QSize(800, 560), QSize(960, 640), QSize(1920, 1080)}) {
            states.window().resize(size);
            states.comeToRest();
            const QString name = QStringLiteral("%1-%2x%3@%4.png")
                                     .arg(state)
                                     .arg(size.width())
                                     .arg(size.height())
                                     .arg(states.window().devicePixelRatioF());
            const QImage picture = onePixelAPoint(states.picture(), size);
            const QImage reference(known.filePath(name));
            const bool isAlike = written.isEmpty()
                && differentPixels(picture, reference.convertToFormat(QImage::Format_RGB32))
                    <= toleratedPixels;
            EXPECT_TRUE(isAlike || !written.isEmpty())
                << QDir::current().filePath(output.filePath(name)).toStdString();
            if (!isAlike) {
                EXPECT_TRUE(picture.save(output.filePath(name)));
            }
        }
    });
    states.run();
}

} // namespace
} // namespace companion::testing
