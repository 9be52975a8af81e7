#pragma once

#include "kern_timerinterface.h"
#include "qt_focusmark.h"

#include <QPixmap>
#include <QWidget>

#include <cstdint>
#include <map>

/// A button that is a picture. Its looks under the pointer, pressed and disabled are
/// computed from that picture, each once, when it is first needed.
///
///     auto* const play = new QT_Button(QPixmap(":/play.png"), this);
///     play->setHotStyle(QT_Button::Halo);
///     play->setToolTip(tr("Play"));
///     connect(play, &QT_Button::clicked, this, &Player::play);
///
/// The picture is centred in the widget; only presses inside it count, its outermost
/// pixels and what surrounds it excluded. Sizes are device independent: pictures for
/// dense screens carry their device pixel ratio, and so do the looks made of them.
///
/// Held down, a button with a schedule repeats: a press starts a sequence of ticks, and
/// the schedule says how many milliseconds to wait for each (see setSchedule). For that
/// the thread needs a timer manager, usually NS_QT::QtTimerManager.
///
/// Keyboard: the button takes the focus by Tab, not by the mouse; Space and Enter press
/// it while they are held, Escape takes the press back. So does disabling or hiding the
/// button, or leaving its window. Screen readers find a button named by its accessible
/// name or its tool tip.
///
/// Slots may delete the button. GUI thread only.
class QT_Button : public QWidget, public kern::TimerInterface {
    Q_OBJECT

public:
    /// How the button looks under the pointer.
    enum HotStyle : int32_t {
        Plain = 0,  ///< as ever; the default
        Halo = 1,   ///< with a green halo of three pixels
        Outline = 2 ///< with a green outline of two pixels, within the picture's bounds
    };

    /// Milliseconds until a tick, by the number of ticks that went before it.
    using Schedule = std::map<int32_t, int32_t>;

    explicit QT_Button(const QPixmap& picture, QWidget* parent = nullptr);
    ~QT_Button() override;

    const QPixmap& picture() const { return d_normal; }
    void setPicture(const QPixmap& picture);

    /// One of HotStyle; with any other value a failed check, and Plain, when the look is
    /// made.
    int32_t hotStyle() const { return d_hotStyle; }
    void setHotStyle(int32_t style);

    /// Of the whole drawing: 1, the default, is opaque, 0 invisible.
    double opacity() const { return d_opacity; }
    void setOpacity(double opacity);

    /// Empty, the default: no ticks. Otherwise the press is tick number 0, and each
    /// tick looks up its own number: {{0, 500}, {1, 100}, {2, 100}} waits 500 ms for
    /// the first tick and 100 ms for the next two. A number without an entry is a
    /// failed check, after which a timer that already runs keeps its period.
    const Schedule& schedule() const { return d_schedule; }
    void setSchedule(const Schedule& schedule) { d_schedule = schedule; }

    /// Ticks so far in the sequence that runs, or of the last one.
    int32_t tickCount() const { return d_tickCount; }

    /// Milliseconds that the timer of the present tick was started with.
    int32_t period() const { return d_period; }

    /// Whether a press is in progress, be the pointer over the button or not.
    bool isDown() const { return d_isDown; }

    /// Whether a press at this point of the widget counts.
    bool hitTest(const QPoint& point) const;

    /// The picture with room for a halo.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    void timerExpired(int64_t id) override;

public slots:
    /// Emits clicked() if the button is enabled.
    void click();

signals:
    /// The button was pressed and released inside its picture, or ticked.
    void clicked();

    /// The sequence of ticks that a press started is over. If the release that ended it
    /// is a click, that follows.
    void spinningComplete();

protected:
    /// What a tick does: emits clicked() while the pointer is over the button or a key
    /// holds it down. May be replaced; may delete the button.
    virtual void tick();

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QRect centred(const QPixmap& picture) const;
    const QPixmap& hot();
    const QPixmap& pressed();
    const QPixmap& disabled();
    const QPixmap& currentPicture();
    QPixmap makeHot() const;
    void forgetLooks();
    bool looksPressed() const { return d_isDown && (d_isHover || d_pressKey != 0); }
    void setHover(bool hover);
    void press(int key);
    bool endPress();
    void release(bool inside);
    void cancelPress();
    void scheduleTick();

    QPixmap d_normal;
    QPixmap d_pressed;
    QPixmap d_hot;
    QPixmap d_disabled;
    double d_opacity = 1.0;
    bool d_isDown = false;
    bool d_isHover = false;
    int32_t d_hotStyle = Plain;
    int64_t d_timerId = 0;
    int32_t d_period = 0;
    int32_t d_tickCount = 0;
    Schedule d_schedule;
    int d_pressKey = 0; // that holds the button down; 0 for the mouse
    NS_QT::FocusMark d_focusMark;
};
