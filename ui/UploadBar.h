#pragma once

#include "views/UploadProgress.h"

#include <QProgressBar>

namespace companion {

/// One upload on its way: the file's name and percentage above a slim bar. To a screen reader it is a progress bar that
/// has the file's name, and tells of its value as it changes.
class UploadBar : public QProgressBar {
    Q_OBJECT

public:
    static constexpr int textHeight = 20;
    static constexpr int barHeight = 4;

    /// For the upload of `line` alone.
    UploadBar(const UploadLine& line, QWidget* parent);

    std::uint64_t number() const { return m_number; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawBar(QPainter& painter, const QRect& bar, const QColor& color) const;
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    const std::uint64_t m_number;
};

} // namespace companion
