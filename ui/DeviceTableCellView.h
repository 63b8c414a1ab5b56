#pragma once

#include <QFont>
#include <QString>

class QPainter;
class QRect;

namespace companion {

/// What one row of the list shows: the row's icon, the panel's name above its address, in hexadecimal and as people
/// know it.
struct DeviceTableCellView {
    QString conectedImageView; ///< The image's name: "radioIcon" or "connectedChain".
    QString deviceNameLabel;
    QString deviceIPLabel;
    QString dottedAddress;

    static constexpr int textInset = 56; ///< From the row's start.
    static constexpr int margin = 16;    ///< At both ends of the row.

    static QFont nameFont();
    static QFont addressFont();

    void paint(QPainter& painter, const QRect& bounds, bool isHovered) const;

    /// Both texts, if one of them ends in an ellipsis in a row of that width; "" otherwise.
    QString toolTip(int rowWidth) const;

private:
    QString addresses() const;
};

} // namespace companion
