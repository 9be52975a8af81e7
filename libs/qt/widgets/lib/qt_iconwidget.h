#pragma once

#include "qt_iconset.h"

#include <QIcon>
#include <QWidget>

#include <cstdint>

namespace NS_QT {

/// Shows an icon, centred; in its disabled mode while the widget is disabled. For screen
/// readers it is a picture, named by its accessible name or its tool tip. GUI thread only.
class IconWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QIcon icon READ icon WRITE setIcon NOTIFY iconChanged)
    Q_PROPERTY(
        NS_QT::IconSet::SizeCode sizeCode READ sizeCode WRITE setSizeCode NOTIFY sizeCodeChanged)

public:
    /// Without an icon, or with one.
    explicit IconWidget(QWidget* parent = nullptr);
    explicit IconWidget(const QIcon& icon, int32_t sizeCode = IconSet::Size24,
                        QWidget* parent = nullptr);

    /// The one that was set.
    const QIcon& icon() const { return d_icon; }

    /// How large the icon is drawn: a size code of IconSet, 24 pixels at first. Setting an
    /// unknown one is a failed check, and 24 pixels.
    IconSet::SizeCode sizeCode() const { return static_cast<IconSet::SizeCode>(d_sizeCode); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

public Q_SLOTS:
    /// Set the properties, and tell of a change.
    void setIcon(const QIcon& icon);
    void setSizeCode(int32_t sizeCode);

Q_SIGNALS:
    /// The property has another value now.
    void iconChanged();
    void sizeCodeChanged();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon d_icon;
    int32_t d_sizeCode;
    int d_edge;
};

} // namespace NS_QT
