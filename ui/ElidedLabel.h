#pragma once

#include <QLabel>

namespace companion {

/// One line of plain text that ends in an ellipsis where it does not fit; its tool tip shows the whole then.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString shownText() const;
};

} // namespace companion
