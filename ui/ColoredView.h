#pragma once

#include <optional>
#include <QColor>
#include <QWidget>

namespace companion {

/// A view that is one even colour behind its children; a colour with an alpha shows what lies under it. A hairline can set
/// one edge off from the next view.
class ColoredView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor)

public:
    explicit ColoredView(QWidget* parent = nullptr);

    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);

    void setHairline(Qt::Edge edge);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_backgroundColor;
    std::optional<Qt::Edge> m_hairline;
};

} // namespace companion
