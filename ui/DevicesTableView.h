#pragma once

#include "ui/DeviceTableCellView.h"

#include <functional>
#include <memory>
#include <optional>
#include <QElapsedTimer>
#include <QListView>
#include <QTimer>

namespace companion {

class DevicesTableModel;

/// The list of panels: rows of 60 points, more where texts are larger, one cell each. It paints no selection of its own;
/// the icons of the rows do, and screen readers find the row checked.
class DevicesTableView : public QListView {
    Q_OBJECT

public:
    using RowCount = std::function<int()>;
    using ConfigureCell = std::function<void(int row, DeviceTableCellView& cell)>;

    static int rowHeight();

    explicit DevicesTableView(QWidget* parent = nullptr);
    ~DevicesTableView() override;

    /// Where rows come from; asked while painting.
    void setDataSource(RowCount rowCount, ConfigureCell configureCell);

    /// Shows the data source's present rows: at the event loop's next turn, or, in a list too long to be seen whole, no
    /// sooner than 16 ms after the time before.
    void reloadData();

    /// The icon of a row; it stays with the row number, whichever panel stands there, and for when a row
    /// of that number comes back. Rows that never were there are skipped.
    void setRowIcon(int row, const QString& imageName);
    QString rowIcon(int row) const;

    /// What a row shows at present.
    DeviceTableCellView cell(int row) const;

    /// A friendly line for an empty list.
    void setPlaceholder(const QString& text);
    QString placeholder() const { return m_placeholder; }

    /// What that line needs in a list of that width; 0 when there are rows instead.
    int placeholderHeight(int width) const;

Q_SIGNALS:
    /// A click, pressed and released on one row, or the Return key; both are -1 for the empty area below the rows.
    void rowClicked(int row, int column);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void showPresentRows();
    bool mayWait() const;
    void rememberPress(const QMouseEvent& event);

    std::unique_ptr<DevicesTableModel> m_model;
    QTimer m_reload;
    QElapsedTimer m_sinceReload;
    QString m_placeholder;
    std::optional<int> m_pressedRow; ///< Where the left button went down, -1 below the rows.
};

} // namespace companion
