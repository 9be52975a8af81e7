#include "qt_iconset.h"

#include "core_check.h"

#include <QWindow>

namespace NS_QT {
namespace {

constexpr int kEdgeLengths[] = {16, 24, 32, 48};

} // namespace

int IconSet::edgeLength(int32_t sizeCode) {
    const bool known = CHECKF(sizeCode >= Size16 && sizeCode <= Size48);
    return kEdgeLengths[known ? sizeCode : Size24];
}

QIcon::Mode IconSet::mode(int32_t modeCode) {
    switch (modeCode) {
    case Disabled:
        return QIcon::Disabled;
    case Active:
        return QIcon::Active;
    default:
        return QIcon::Normal;
    }
}

QPixmap IconSet::pixmap(const QIcon& icon, int32_t sizeCode, int32_t modeCode, QWindow* window) {
    const int edge = edgeLength(sizeCode);
    return icon.pixmap(window, QSize(edge, edge), mode(modeCode), QIcon::Off);
}

} // namespace NS_QT
