#pragma once

#include "views/UploadProgress.h"

#include <QWidget>

namespace companion {

/// One slim bar for each upload on its way, with the file's name and percentage; nothing when none is. It takes no
/// input.
class UploadProgressBars : public QWidget {
    Q_OBJECT

public:
    explicit UploadProgressBars(QWidget* parent = nullptr);

    /// The oldest first; lines keep their place while they last.
    void setLines(const std::vector<UploadLine>& lines);

    /// What a screen reader says of the uploads when it is next asked, or has the time.
    void announce(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int count() const { return static_cast<int>(m_lines.size()); }
    void drawLine(QPainter& painter, const QRect& line, const UploadLine& upload) const;
    void drawBar(QPainter& painter, const QRect& bar, const QColor& color) const;
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    std::vector<UploadLine> m_lines;
};

} // namespace companion
