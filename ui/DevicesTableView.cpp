#include "ui/DevicesTableView.h"

#include "ui/Theme.h"

#include <algorithm>
#include <QAbstractListModel>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <utility>
#include <vector>

namespace companion {

/// Passes the data source on to the list; the rows' icons live here, by row number.
class DevicesTableModel : public QAbstractListModel {
public:
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_rows; }

    QVariant data(const QModelIndex& index, int role) const override
    {
        const bool isPicked = icon(index.row()) == QStringLiteral("connectedChain");
        if (role == Qt::CheckStateRole) // for screen readers: rows are painted by their icons
            return isPicked ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::AccessibleDescriptionRole)
            return isPicked ? DevicesTableView::tr("Picked") : QString();
        if (role != Qt::AccessibleTextRole && role != Qt::DisplayRole)
            return {};
        const DeviceTableCellView cell = cellAt(index.row());
        if (cell.deviceNameLabel.isEmpty())
            return cell.deviceIPLabel;
        return QStringLiteral("%1, %2").arg(cell.deviceNameLabel, cell.deviceIPLabel);
    }

    DeviceTableCellView cellAt(int row) const
    {
        DeviceTableCellView cell;
        cell.conectedImageView = icon(row);
        if (configureCell && row < rowsInSource())
            configureCell(row, cell);
        return cell;
    }

    /// Rows come and go at the end, so that the keyboard's row and the scroll position stay where they are.
    void reload()
    {
        const int rows = rowsInSource();
        if (rows > m_rows) {
            beginInsertRows({}, m_rows, rows - 1);
            m_rows = rows;
            endInsertRows();
        } else if (rows < m_rows) {
            beginRemoveRows({}, rows, m_rows - 1);
            m_rows = rows;
            endRemoveRows();
        }
        if (m_rows > 0)
            Q_EMIT dataChanged(index(0), index(m_rows - 1));
    }

    QString icon(int row) const
    {
        const auto number = static_cast<std::size_t>(row);
        return number < m_icons.size() ? m_icons[number] : QStringLiteral("radioIcon");
    }

    void setIcon(int row, const QString& imageName)
    {
        const auto known = static_cast<int>(m_icons.size());
        if (row < 0 || row >= qMax(m_rows, known)) // a row that went may come back, with the icon that it had
            return;
        if (row >= known)
            m_icons.resize(static_cast<std::size_t>(row) + 1, QStringLiteral("radioIcon"));
        m_icons[static_cast<std::size_t>(row)] = imageName;
        if (row < m_rows)
            Q_EMIT dataChanged(index(row), index(row));
    }

    DevicesTableView::RowCount countRows;
    DevicesTableView::ConfigureCell configureCell;

private:
    int rowsInSource() const { return countRows ? countRows() : 0; }

    int m_rows = 0;
    std::vector<QString> m_icons;
};

namespace {

using namespace std::chrono_literals;

/// Hundreds of panels may be announced in one second, and nobody sees more than a picture a frame.
constexpr auto shortestReloadInterval = 16ms;

constexpr int placeholderMargin = 24;

QFont placeholderFont()
{
    return Theme::font(Theme::FontFace::regular, 14);
}

class CellDelegate : public QStyledItemDelegate {
public:
    CellDelegate(const DevicesTableModel& model, DevicesTableView& table)
        : QStyledItemDelegate(&table)
        , m_model(model)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        return {option.rect.width(), DevicesTableView::rowHeight()};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        painter->setLayoutDirection(option.direction);
        m_model.cellAt(index.row()).paint(*painter, option.rect, option.state & QStyle::State_MouseOver);
        if (index.row() + 1 < m_model.rowCount())
            painter->fillRect(QStyle::visualRect(option.direction, option.rect, separatorIn(option.rect)),
                QColor(Theme::line));
        painter->restore();
    }

    /// What does not fit into its row, whole.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
        const QModelIndex& index) override
    {
        const bool isTip = event && event->type() == QEvent::ToolTip && index.isValid();
        if (!isTip)
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        QToolTip::showText(
            event->globalPos(), m_model.cellAt(index.row()).toolTip(view->visualRect(index).width()), view);
        return true;
    }

private:
    static QRect separatorIn(const QRect& row)
    {
        return {row.left() + DeviceTableCellView::textInset, row.bottom(),
            row.width() - DeviceTableCellView::textInset - DeviceTableCellView::margin, 1};
    }

    const DevicesTableModel& m_model;
};

} // namespace

DevicesTableView::DevicesTableView(QWidget* parent)
    : QListView(parent)
    , m_model(std::make_unique<DevicesTableModel>())
{
    setModel(m_model.get());
    setItemDelegate(new CellDelegate(*m_model, *this));
    setUniformItemSizes(true); // without it a growing list costs quadratic time
    setSelectionMode(NoSelection);
    setFrameShape(NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Theme::followTextScale(*this, [this] {
        verticalScrollBar()->setSingleStep(rowHeight() / 3);
        scheduleDelayedItemsLayout();
    });
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);

    m_reload.setSingleShot(true);
    connect(&m_reload, &QTimer::timeout, this, &DevicesTableView::showPresentRows);
}

int DevicesTableView::rowHeight()
{
    return Theme::scaled(60);
}

DevicesTableView::~DevicesTableView()
{
    setModel(nullptr);
}

void DevicesTableView::setDataSource(RowCount rowCount, ConfigureCell configureCell)
{
    m_model->countRows = std::move(rowCount);
    m_model->configureCell = std::move(configureCell);
    reloadData();
}

void DevicesTableView::reloadData()
{
    if (m_reload.isActive())
        return;
    m_reload.start(mayWait() ? shortestReloadInterval : 0ms);
}

/// New panels come at the end: in a list longer than the window they are out of sight anyway.
bool DevicesTableView::mayWait() const
{
    const bool isLong = m_model->rowCount() * rowHeight() > viewport()->height();
    return isLong && m_sinceReload.isValid() && !m_sinceReload.hasExpired(shortestReloadInterval.count());
}

void DevicesTableView::showPresentRows()
{
    m_model->reload();
    m_sinceReload.start();
    viewport()->update();
    setAccessibleDescription(m_model->rowCount() > 0 ? QString() : m_placeholder);
}

void DevicesTableView::setRowIcon(int row, const QString& imageName)
{
    m_model->setIcon(row, imageName);
}

QString DevicesTableView::rowIcon(int row) const
{
    return m_model->icon(row);
}

DeviceTableCellView DevicesTableView::cell(int row) const
{
    return m_model->cellAt(row);
}

void DevicesTableView::setPlaceholder(const QString& text)
{
    m_placeholder = text;
    setAccessibleDescription(m_model->rowCount() > 0 ? QString() : m_placeholder);
    viewport()->update();
}

int DevicesTableView::placeholderHeight(int width) const
{
    if (m_model->rowCount() > 0)
        return 0;
    const QRect column(0, 0, width - 2 * placeholderMargin, QWIDGETSIZE_MAX);
    const QRect text = QFontMetrics(placeholderFont())
                           .boundingRect(column, Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
    return text.height() + 2 * placeholderMargin;
}

void DevicesTableView::mouseReleaseEvent(QMouseEvent* event)
{
    QListView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !viewport()->rect().contains(event->pos()))
        return;
    const QModelIndex index = indexAt(event->pos());
    if (std::exchange(m_pressedRow, std::nullopt) == index.row())
        Q_EMIT rowClicked(index.row(), index.column());
}

void DevicesTableView::mousePressEvent(QMouseEvent* event)
{
    rememberPress(*event);
    QListView::mousePressEvent(event);
}

/// The second press of two in quick succession.
void DevicesTableView::mouseDoubleClickEvent(QMouseEvent* event)
{
    rememberPress(*event);
    QListView::mouseDoubleClickEvent(event);
}

void DevicesTableView::rememberPress(const QMouseEvent& event)
{
    if (event.button() == Qt::LeftButton)
        m_pressedRow = indexAt(event.pos()).row();
}

void DevicesTableView::keyPressEvent(QKeyEvent* event)
{
    const bool isPick =
        event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space;
    if (!isPick)
        QListView::keyPressEvent(event);
    else if (currentIndex().isValid())
        Q_EMIT rowClicked(currentIndex().row(), currentIndex().column());
}

void DevicesTableView::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (m_model->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(QColor(Theme::secondaryText));
    painter.setFont(placeholderFont());
    painter.drawText(viewport()->rect().adjusted(
                         placeholderMargin, placeholderMargin, -placeholderMargin, -placeholderMargin),
        Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
}

} // namespace companion
