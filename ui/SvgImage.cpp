#include "ui/SvgImage.h"

#include <array>
#include <map>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <vector>

namespace companion {

namespace {

/// A stretch along one axis, in whole pixels of the device, and the third of the image that it shows.
struct Span {
    int start;
    int length;
    int third;
};

/// The first third, the middle one as often as fits, the last one. Pixels are whole so that no seam shows.
std::vector<Span> spans(int points, double third, double ratio)
{
    const int length = qRound(points * ratio);
    const int corner = qMin(qRound(third * ratio), length / 2);
    const int middle = length - 2 * corner;
    const int repeats = qMax(1, qRound(middle / (third * ratio)));
    std::vector<Span> spans{{0, corner, 0}};
    for (int i = 0; i < repeats; ++i) {
        const int start = corner + middle * i / repeats;
        spans.push_back({start, corner + middle * (i + 1) / repeats - start, 1});
    }
    spans.push_back({length - corner, corner, 2});
    return spans;
}

/// Draws pieces of one image; pieces that are alike are rendered once.
class TilePainter {
public:
    TilePainter(QSvgRenderer& renderer, QPainter& painter, QSizeF third, double ratio)
        : m_renderer(renderer)
        , m_painter(painter)
        , m_third(third)
        , m_ratio(ratio)
    {
    }
    ~TilePainter() { m_renderer.setViewBox(QRectF({0, 0}, m_third * 3)); }
    TilePainter(const TilePainter&) = delete;
    TilePainter& operator=(const TilePainter&) = delete;

    /// A piece of the middle that meets `leftOut` has the colour of the middle's corner throughout.
    void paint(QPoint origin, const Span& column, const Span& row, const QRectF& leftOut)
    {
        if (column.length <= 0 || row.length <= 0)
            return;
        const QRectF place(
            origin + QPointF(column.start, row.start) / m_ratio, QSizeF(column.length, row.length) / m_ratio);
        const bool isBlank = column.third == 1 && row.third == 1 && place.intersects(leftOut);
        m_painter.drawPixmap(place.topLeft(), isBlank ? blankTile(column, row) : tile(column, row));
    }

private:
    const QPixmap& tile(const Span& column, const Span& row)
    {
        QPixmap& tile = m_tiles[{column.third, row.third, column.length, row.length}];
        if (tile.isNull()) {
            tile = QPixmap(column.length, row.length);
            tile.fill(Qt::transparent);
            m_renderer.setViewBox(
                QRectF({column.third * m_third.width(), row.third * m_third.height()}, m_third));
            QPainter painter(&tile);
            m_renderer.render(&painter, QRectF(tile.rect()));
            painter.end();
            tile.setDevicePixelRatio(m_ratio);
        }
        return tile;
    }

    const QPixmap& blankTile(const Span& column, const Span& row)
    {
        QPixmap& blank = m_blankTiles[{column.length, row.length}];
        if (blank.isNull()) {
            blank = tile(column, row);
            blank.fill(blank.toImage().pixelColor(0, 0));
        }
        return blank;
    }

    QSvgRenderer& m_renderer;
    QPainter& m_painter;
    const QSizeF m_third;
    const double m_ratio;
    std::map<std::array<int, 4>, QPixmap> m_tiles;
    std::map<std::array<int, 2>, QPixmap> m_blankTiles;
};

} // namespace

SvgImage::SvgImage() = default;
SvgImage::~SvgImage() = default;

QString SvgImage::path(const QString& name)
{
    return QStringLiteral(":/images/%1.svg").arg(name);
}

void SvgImage::setName(const QString& name)
{
    m_name = name;
    m_renderer.reset();
    if (QFile::exists(path(name)))
        m_renderer = std::make_unique<QSvgRenderer>(path(name));
}

void SvgImage::paint(QPainter& painter, const QRectF& bounds) const
{
    if (!m_renderer)
        return;
    QRectF target(QPointF(), QSizeF(m_renderer->defaultSize()).scaled(bounds.size(), Qt::KeepAspectRatio));
    target.moveCenter(bounds.center());
    m_renderer->render(&painter, target);
}

void SvgImage::paintTiled(QPainter& painter, const QRect& bounds, const QRectF& leftOut) const
{
    if (!m_renderer)
        return;
    const double ratio = painter.device()->devicePixelRatioF();
    const QSizeF third = QSizeF(m_renderer->defaultSize()) / 3;
    TilePainter tiles(*m_renderer, painter, third, ratio);
    const std::vector<Span> columns = spans(bounds.width(), third.width(), ratio);
    for (const Span& row : spans(bounds.height(), third.height(), ratio)) {
        for (const Span& column : columns)
            tiles.paint(bounds.topLeft(), column, row, leftOut);
    }
}

} // namespace companion
