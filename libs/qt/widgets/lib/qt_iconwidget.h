#pragma once

#include "qt_iconset.h"

#include <QIcon>
#include <QWidget>

#include <cstdint>

namespace NS_QT {

/// Shows an icon, centred; in its disabled mode while the widget is disabled.
/// GUI thread only.
class IconWidget : public QWidget {
    Q_OBJECT

public:
    explicit IconWidget(QWidget* parent = nullptr);
    explicit IconWidget(const QIcon& icon, int32_t sizeCode = IconSet::Size24,
                        QWidget* parent = nullptr);

    const QIcon& icon() const { return d_icon; }
    void setIcon(const QIcon& icon);

    /// How large the icon is drawn: a size code of IconSet, 24 pixels at first. An unknown
    /// one is a failed check whenever it is used.
    int32_t sizeCode() const { return d_sizeCode; }
    void setSizeCode(int32_t sizeCode);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon d_icon;
    int32_t d_sizeCode = IconSet::Size24;
};

} // namespace NS_QT
