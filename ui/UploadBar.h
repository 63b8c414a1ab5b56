#pragma once

#include "dashboard/DashboardView.h"

#include <QProgressBar>

namespace companion {

/// One upload under way: the file's name and percentage above a slim bar. To a screen reader it is a progress bar that
/// has the file's name, and tells of its value as it changes.
class UploadBar : public QProgressBar {
    Q_OBJECT

public:
    static constexpr int textHeight = 20;
    static constexpr int barHeight = 4;

    UploadBar(const QString& fileName, std::weak_ptr<const UploadPercent> percent, QWidget* parent);

    /// False when the upload is over.
    bool refresh();

    /// "photo.png 42 %"
    QString text() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawBar(QPainter& painter, const QRect& bar, const QColor& color) const;
    void drawText(QPainter& painter, const QRect& area, Qt::Alignment alignment, const QString& text) const;

    const std::weak_ptr<const UploadPercent> m_percent;
};

} // namespace companion
