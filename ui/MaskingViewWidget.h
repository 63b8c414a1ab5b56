#pragma once

#include "views/MaskingView.h"

#include <memory>
#include <QWidget>
#include <vector>

namespace companion {

/// An overlay that disables the controls directly in it at every redraw and, while masking, lets every click fall
/// through to what lies under it.
class MaskingViewWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool maskEnabled READ maskEnabled WRITE setMaskEnabled)

public:
    explicit MaskingViewWidget(QWidget* parent = nullptr);
    ~MaskingViewWidget() override;

    /// The log must outlive the view; called once, before the view is shown.
    void setLog(SystemLog& log);

    bool maskEnabled() const;
    void setMaskEnabled(bool enabled);

    /// Lasts until the next redraw.
    void enableSubViews();
    void disableSubViews();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    class Control;

    std::vector<MaskedSubview*> directSubviews();

    std::vector<std::unique_ptr<Control>> m_controls; // those of the last question
    std::unique_ptr<MaskingView> m_model;
};

} // namespace companion
