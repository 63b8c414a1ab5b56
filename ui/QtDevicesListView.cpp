#include "ui/QtDevicesListView.h"

#include "discovery/DevicesListViewController.h"
#include "ui/Accessibility.h"
#include "ui/Theme.h"
#include "ui_DevicesList.h"

#include <algorithm>
#include <QTimer>
#include <utility>

namespace companion {

namespace {

using namespace std::chrono_literals;

constexpr auto timeToFindPanels = 4s;

} // namespace

QtDevicesListView::QtDevicesListView(QWidget* parent)
    : QWidget(parent)
    , m_scene(std::make_unique<Ui::DevicesListScene>())
{
    m_scene->setupUi(this);
    style();
    Theme::followTextScale(*this, [this] {
        setFonts();
        fitRows();
    });
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_scene->devicesTableView->model(), signal, this, &QtDevicesListView::fitRows);
    setFocusProxy(m_scene->devicesTableView);
    connect(m_scene->devicesTableView, &DevicesTableView::rowClicked, this, [this](int row, int column) {
        if (isUnderAlert(*this))
            return;
        m_clickedRow = row;
        m_clickedColumn = column;
        if (m_controller)
            m_controller->deviceClicked();
    });
    connect(m_scene->disconnectButton, &QPushButton::clicked, this, [this] {
        if (m_controller && !isUnderAlert(*this))
            m_controller->disconnectDevice();
    });
}

QtDevicesListView::~QtDevicesListView() = default;

void QtDevicesListView::style()
{
    m_scene->listHeaderView->setBackgroundColor(Qt::white);
    m_scene->disconnectButton->setProperty("focusRingOnDark", true);
    m_scene->devicesTableView->setPlaceholder(tr("Looking for panels…"));
}

void QtDevicesListView::setFonts()
{
    using Theme::FontFace;
    setFixedWidth(Theme::scaled(360));
    m_scene->headerMainLabel->setFont(Theme::font(FontFace::extraLight, 20));
    m_scene->headerSubLabel->setFont(Theme::font(FontFace::regular, 12));
    m_scene->disconnectButton->setFont(Theme::font(FontFace::regular, 16));
}

/// Below the last row there is always a place to click.
void QtDevicesListView::fitRows()
{
    constexpr int fewRows = 3;
    constexpr int heightOfRows = 5 * 60; // which the smallest window has the room for
    const int manyRows = heightOfRows / DevicesTableView::rowHeight();
    auto& table = *m_scene->devicesTableView;
    const int rows = std::clamp(table.model()->rowCount(), fewRows, manyRows);
    const int height = rows * DevicesTableView::rowHeight() + 16;
    table.setFixedHeight(std::max(height, table.placeholderHeight(Theme::scaled(360))));
}

/// The search begins when the list is opened for the first time.
void QtDevicesListView::showEvent(QShowEvent*)
{
    if (std::exchange(m_hasBeenShown, true))
        return;
    QTimer::singleShot(timeToFindPanels, this, [this] {
        m_scene->devicesTableView->setPlaceholder(tr(
            "No panel found yet.\n\nCheck that the panel is switched on and on the same network as this computer. "
            "“panelctl doctor”, typed into a terminal, shows what else may be wrong."));
        fitRows();
    });
}

QString QtDevicesListView::heading() const
{
    return m_scene->headerMainLabel->text();
}

void QtDevicesListView::setController(DevicesListViewController* controller)
{
    m_controller = controller;
    if (!controller) {
        m_scene->devicesTableView->setDataSource({}, {});
        return;
    }
    m_scene->devicesTableView->setDataSource(
        [controller] { return static_cast<int>(controller->numberOfRows()); },
        [controller](int row, DeviceTableCellView& cell) {
            const DeviceRow texts = controller->viewForRow(row);
            cell.deviceNameLabel = QString::fromStdString(texts.deviceNameLabel.value_or(""));
            cell.deviceIPLabel = QString::fromStdString(texts.deviceIPLabel.value_or(""));
            cell.dottedAddress = QString::fromStdString(controller->addressForRow(row).value_or(""));
        });
}

void QtDevicesListView::reloadData()
{
    m_scene->devicesTableView->reloadData();
}

void QtDevicesListView::setIconOfCell(std::int64_t column, std::int64_t row, const std::string& imageName)
{
    if (column == 0)
        m_scene->devicesTableView->setRowIcon(static_cast<int>(row), QString::fromStdString(imageName));
}

void QtDevicesListView::setDisconnectButtonHeight(double height)
{
    m_scene->disconnectButton->setFixedHeight(static_cast<int>(height));
    m_scene->disconnectButton->setVisible(height > 0);
}

} // namespace companion
