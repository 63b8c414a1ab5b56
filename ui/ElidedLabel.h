#pragma once

#include <QLabel>

namespace companion {

/// Plain text, on one line or wrapped, that ends in an ellipsis where it does not fit; its tool tip shows the whole then.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

    /// The text, or as many lines of it as there is room for.
    QString shownText() const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isWhole() const;
};

} // namespace companion
