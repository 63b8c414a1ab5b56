#pragma once

#include "views/UploadProgress.h"

#include <memory>
#include <QWidget>

namespace companion {

class UploadBar;

/// One slim bar for each upload on its way; nothing when none is. It takes no input.
class UploadProgressBars : public QWidget {
    Q_OBJECT

public:
    explicit UploadProgressBars(QWidget* parent = nullptr);
    ~UploadProgressBars() override;

    /// The oldest first; lines keep their place while they last.
    void setLines(const std::vector<UploadLine>& lines);

    /// What a screen reader says of all uploads when it is next asked, or has the time.
    void announce(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int count() const { return static_cast<int>(m_bars.size()); }
    int shownCount() const;
    QRect place(int index) const;
    std::unique_ptr<UploadBar> barFor(const UploadLine& line);
    void arrange();

    std::vector<std::unique_ptr<UploadBar>> m_bars;
};

} // namespace companion
