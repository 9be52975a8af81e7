#pragma once

#include "core_deprecated_glist.h"
#include "qt_presswidget.h"

#include <QKeySequence>
#include <QPixmap>
#include <QRect>
#include <QStringList>
#include <QVector>

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
/// Mouse: only the left button presses. Keyboard: the strip is one stop of the Tab key,
/// and does not take the focus by the mouse. Arrow keys go to the nearest enabled button
/// in their direction on the screen, Home and End to the first and last one. Space and
/// Enter press the button while they are held, Escape takes the press back. So does
/// disabling or hiding the strip, or leaving its window. For screen readers a strip is a
/// tool bar with buttons that are named by their tool tips.
///
/// A click emits pressed(), toggled() if the button changes, released(), clicked() and
/// triggered(), in this order. Until clicked() returns, the button still looks pressed:
/// what opens a dialog belongs to triggered(). Slots may delete the strip. GUI thread
/// only.
class QT_ButtonStrip : public NS_QT::PressWidget {
    Q_OBJECT
    Q_PROPERTY(QPixmap picture READ picture WRITE setPicture NOTIFY buttonsChanged)
    Q_PROPERTY(int buttonCount READ count WRITE setButtonCount NOTIFY buttonsChanged)
    Q_PROPERTY(QStringList buttonToolTips READ buttonToolTips WRITE setButtonToolTips NOTIFY
                   buttonToolTipsChanged)
    Q_PROPERTY(bool checkable READ isCheckable WRITE setCheckable NOTIFY checkableChanged)
    Q_PROPERTY(bool exclusive READ isExclusive WRITE setExclusive NOTIFY exclusiveChanged)
    Q_PROPERTY(int currentButton READ currentButton WRITE setCurrentButton NOTIFY
                   currentButtonChanged DESIGNABLE false)

public:
    /// The pictures of a strip, all of one size, and where its buttons are.
    struct Images {
        Images() = default;

        /// Makes the other pictures from the strip's: down, it is shaded within the
        /// buttons by a quarter; disabled, it is half as opaque.
        Images(const QPixmap& picture, const QVector<QRect>& buttons);

        /// Adds a button's rectangle.
        void addButton(const QRect& rect);

        QPixmap strip;            ///< enabled
        QPixmap down;             ///< with every button shown down
        QPixmap disabled;         ///< the same, disabled
        core::GList<QRect> rects; ///< owned; in strip order
    };

    /// Without buttons at first.
    explicit QT_ButtonStrip(QWidget* parent = nullptr);
    QT_ButtonStrip(const QPixmap& picture, const QVector<QRect>& buttons,
                   QWidget* parent = nullptr);

    /// For pictures that are drawn, not computed.
    explicit QT_ButtonStrip(std::unique_ptr<Images> images, QWidget* parent = nullptr);
    ~QT_ButtonStrip() override;

    /// Takes other pictures and buttons. Buttons keep their number with all that was set
    /// for it, as far as there are so many.
    void setImages(std::unique_ptr<Images> images);

    /// The one that was set.
    const QPixmap& picture() const;

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
    QStringList buttonToolTips() const;

    /// Whether a button takes presses, which all do at first; a disabled strip has none
    /// that does. False, or ignored, for an index that is no button's.
    bool isButtonEnabled(int index) const;
    void setButtonEnabled(int index, bool enabled);

    /// Keys that click a button while the strip's window is active; empty at first.
    QKeySequence buttonShortcut(int index) const;
    void setButtonShortcut(int index, const QKeySequence& keys);

    /// Whether a click toggles its button, off by default; and whether at most one
    /// button is checked at a time, which then stays so when it is clicked again. Of
    /// several that are checked already, the first stays so.
    bool isCheckable() const;
    bool isExclusive() const;

    /// Whether a button is checked, that is, shown down. Setting it emits toggled() and
    /// needs no checkable strip; in an exclusive one it unchecks the others. False, or
    /// ignored, for an index that is no button's.
    bool isChecked(int index) const;
    void setChecked(int index, bool checked);

    /// The button that keys act on; the one used last, 0 at first. An index that is no
    /// button's is ignored.
    int currentButton() const;

    /// The button under a press in progress; -1 for none.
    int pressedButton() const;

    /// The picture's.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

public Q_SLOTS:
    /// Another picture, for the same buttons; and so many buttons side by side, which
    /// share the width of this and every later picture.
    void setPicture(const QPixmap& picture);
    void setButtonCount(int count);
    /// Set what is described above, and tell of a change.
    void setButtonToolTips(const QStringList& texts);
    void setCheckable(bool checkable);
    void setExclusive(bool exclusive);
    void setCurrentButton(int index);

    /// What a click on the button does, if it is enabled.
    void click(int index);

Q_SIGNALS:
    /// A press has begun, and has ended: released on its button or elsewhere, or taken
    /// back.
    void pressed(int index);
    void released(int index);

    /// The button is checked or unchecked now.
    void toggled(int index, bool checked);

    /// The button was pressed and released, or clicked by a program or a screen reader.
    /// It is checked or unchecked already.
    void clicked(int index);

    /// The same, when the press is over.
    void triggered(int index);

    /// The property has another value now.
    void buttonsChanged();
    void buttonToolTipsChanged();
    void checkableChanged(bool checkable);
    void exclusiveChanged(bool exclusive);
    void currentButtonChanged(int index);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

    int targetAt(const QPoint& point) const override;
    int keyTarget() const override;
    void pressBegan() override;
    void pressMoved(bool over) override { showPressed(over); }
    void pressReleased(bool inside) override;
    void pressTakenBack(int target) override;

private:
    struct Button;
    struct Data;

    Button* buttonOf(int index) const;
    bool isButton(int index) const { return buttonOf(index) != nullptr; }
    void divide(const QPixmap& picture, int count);
    int edgeButton(int first, int step) const;
    int neighbour(int key) const;
    void clickByShortcut(int id, bool isAmbiguous);
    void showToolTip(QEvent* event);
    void drawButtons(QPainter& painter, const QRect& area) const;
    void storeChecked(int index, bool checked);
    void tellToggled(const QVector<int>& indices);
    bool toggle(int index);
    void showPressed(bool shown);
    void dropPress(int index);

    std::unique_ptr<Data> d_data;
};
