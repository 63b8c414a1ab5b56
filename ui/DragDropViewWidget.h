#pragma once

#include "ui/ImageView.h"
#include "views/DragDropView.h"

namespace companion {

/// The drop area: passes drags and drops from other programs on to its model.
class DragDropViewWidget : public ImageView {
    Q_OBJECT

public:
    explicit DragDropViewWidget(QWidget* parent = nullptr);

    /// The drop area to show, which must outlive the widget; called once.
    void setModel(DragDropView& model) { m_model = &model; }

protected:
    /// In the image's colour, within a dashed border, which closes while a drag is inside.
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void takeOrRefuse(QDragMoveEvent& event);
    void endDrag();

    DragDropView* m_model = nullptr;
    bool m_isDragInside = false; ///< one that was taken
};

} // namespace companion
