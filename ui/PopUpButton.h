#pragma once

#include "ui/SvgImage.h"

#include <QComboBox>

namespace companion {

/// A combo box with the program's own arrow, as a style sheet's images would need a plugin, and a pop-up with round
/// corners, a gap away from it.
class PopUpButton : public QComboBox {
    Q_OBJECT

public:
    explicit PopUpButton(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SvgImage m_arrow;
};

} // namespace companion
