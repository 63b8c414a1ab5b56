#pragma once

#include "dashboard/DashboardView.h"

#include <memory>
#include <QTimer>
#include <QWidget>
#include <vector>

namespace companion {

/// One slim bar for each upload under way, and a button that gives it up; hidden when there is none.
class UploadProgressBars : public QWidget {
    Q_OBJECT

public:
    explicit UploadProgressBars(QWidget* parent = nullptr);
    ~UploadProgressBars() override;

    /// Adds a bar, which stays until `upload` expires or is given up. It is painted before this returns.
    void add(const QString& fileName, std::weak_ptr<UploadUnderWay> upload);

    /// Shows how far uploads are; ten times a second while there are any.
    void refresh();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class UploadBar;

    int count() const { return static_cast<int>(m_bars.size()); }
    int shownCount() const;
    QRect place(int index) const;
    void paintNow();
    void announce(const QString& text);
    void countHasChanged();
    void arrange();

    std::vector<std::unique_ptr<UploadBar>> m_bars; ///< The oldest first.
    QTimer m_timer{this};
};

} // namespace companion
