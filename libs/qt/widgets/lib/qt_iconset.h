#pragma once

#include <QIcon>
#include <QObject>
#include <QPixmap>

#include <cstdint>

class QWindow;

namespace NS_QT {

/// Square pictures out of icons, by the codes for their size and mode that widgets and
/// stored settings use. GUI thread only.
class IconSet {
    Q_GADGET

public:
    /// Edge lengths, by the number in the name.
    enum SizeCode : int32_t { Size16 = 0, Size24 = 1, Size32 = 2, Size48 = 3 };
    Q_ENUM(SizeCode)
    /// As QIcon's modes.
    enum ModeCode : int32_t { Normal = 0, Disabled = 1, Active = 2 };
    Q_ENUM(ModeCode)

    /// The edge of a picture in pixels. Any other code: a failed check, and 24.
    static int edgeLength(int32_t sizeCode);

    /// Any other code is Normal.
    static QIcon::Mode mode(int32_t modeCode);

    /// The picture in its off state. With a window it has the window's pixel density if
    /// the application asks for such pictures (Qt::AA_UseHighDpiPixmaps).
    static QPixmap pixmap(const QIcon& icon, int32_t sizeCode, int32_t modeCode,
                          QWindow* window = nullptr);
};

} // namespace NS_QT
