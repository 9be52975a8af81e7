#pragma once

#include "core_deprecated_glist.h"

#include <QPixmap>
#include <QRect>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <memory>

/// A row of buttons that are parts of one picture.
///
///     auto* const modes = new QT_ButtonStrip(picture, {{0, 0, 24, 24}, {24, 0, 24, 24}}, this);
///     modes->setButtonToolTips({tr("Loop"), tr("Play once")});
///     modes->setCheckable(true);
///     modes->setExclusive(true);
///     connect(modes, &QT_ButtonStrip::clicked, this, &Player::setMode);
///
/// Buttons are numbered from 0 in the order of their rectangles; where rectangles
/// overlap, the first one has the pointer. The picture lies in the top left corner of
/// the widget in every layout direction. Sizes and rectangles are device independent: a
/// picture for dense screens carries its device pixel ratio.
///
/// Keyboard: the strip is one stop of the Tab key, and does not take the focus by the
/// mouse. Arrow keys go to the nearest button in their direction on the screen, Home
/// and End to the first and last one. Space and Enter press the button while they are
/// held, Escape takes the press back. So does disabling or hiding the strip, or leaving
/// its window. For screen readers a strip is a tool bar with buttons that are named by
/// their tool tips.
///
/// Slots may delete the strip. GUI thread only.
class QT_ButtonStrip : public QWidget {
    Q_OBJECT

public:
    /// The pictures of a strip, all of one size, and where its buttons are.
    struct Images {
        Images() = default;

        /// Makes the other pictures from the strip's: down, it is shaded within the
        /// buttons by a quarter; disabled, every pixel that is not fully transparent is
        /// opaque with halved colours.
        Images(const QPixmap& picture, const QVector<QRect>& buttons);

        /// Adds a button's rectangle.
        void addButton(const QRect& rect);

        QPixmap strip;
        QPixmap down; ///< with every button shown down
        QPixmap disabled;
        core::GList<QRect> rects; ///< owned; in strip order
    };

    QT_ButtonStrip(const QPixmap& picture, const QVector<QRect>& buttons,
                   QWidget* parent = nullptr);

    /// For pictures that are drawn, not computed.
    explicit QT_ButtonStrip(std::unique_ptr<Images> images, QWidget* parent = nullptr);
    ~QT_ButtonStrip() override;

    /// Number of buttons.
    int count() const;

    /// Empty for an index that is no button's.
    QRect buttonRect(int index) const;

    /// The button at a point of the widget; -1 for none.
    int buttonAt(const QPoint& point) const;

    /// Tool tips by index, shown while the pointer rests on a button; empty at first
    /// and where there is no such button. Setting all leaves those without a text empty.
    QString buttonToolTip(int index) const;
    void setButtonToolTip(int index, const QString& text);
    void setButtonToolTips(const QStringList& texts);

    /// Whether a click toggles its button, off by default; and whether at most one
    /// button is checked at a time, which then stays so when it is clicked again.
    bool isCheckable() const;
    void setCheckable(bool checkable);
    bool isExclusive() const;
    void setExclusive(bool exclusive);

    /// Whether a button is checked, that is, shown down. Setting it emits nothing and
    /// needs no checkable strip; in an exclusive one it unchecks the others. False, or
    /// ignored, for an index that is no button's.
    bool isChecked(int index) const;
    void setChecked(int index, bool checked);

    /// The button that keys act on; the one used last, 0 at first. An index that is no
    /// button's is ignored.
    int currentButton() const;
    void setCurrentButton(int index);

    /// The button under a press in progress; -1 for none.
    int pressedButton() const;

    /// The picture's.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

public slots:
    /// What a click on the button does, if the strip is enabled and has it.
    void click(int index);

signals:
    /// The button was pressed and released, or clicked by a program or a screen reader.
    /// It is checked or unchecked already.
    void clicked(int index);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    struct Data;

    bool isButton(int index) const;
    int neighbour(int key) const;
    void showToolTip(QEvent* event);
    void storeChecked(int index, bool checked);
    bool toggle(int index);
    void press(int index, int key);
    void showPressed(bool shown);
    void forgetPress();
    void dropPress();
    void release(int index);

    std::unique_ptr<Data> d_data;
};
