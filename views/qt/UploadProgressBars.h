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

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    std::vector<UploadLine> m_lines;
};

} // namespace companion
