#pragma once

#include "qt_presswidget.h"
#include "qt_timerinterface.h"

#include <QMetaType>
#include <QPixmap>

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
/// pixels and what surrounds it excluded, and only those of the left mouse button. Sizes
/// are device independent: pictures for dense screens carry their device pixel ratio, and
/// so do the looks made of them.
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
/// Subclasses start timers as kern::TimerInterface does, with timerExpired as callback;
/// Qt's are QObject::startTimer and QObject::killTimer.
///
/// Slots may delete the button. GUI thread only.
class QT_Button : public NS_QT::PressWidget, public kern::TimerInterface {
    Q_OBJECT
    Q_INTERFACES(kern::TimerInterface)
    Q_PROPERTY(QPixmap picture READ picture WRITE setPicture NOTIFY pictureChanged)
    Q_PROPERTY(HotStyle hotStyle READ hotStyle WRITE setHotStyle NOTIFY hotStyleChanged)
    Q_PROPERTY(double opacity READ opacity WRITE setOpacity NOTIFY opacityChanged)
    Q_PROPERTY(QT_Button::Schedule schedule READ schedule WRITE setSchedule NOTIFY scheduleChanged
                   DESIGNABLE false)

public:
    /// How the button looks under the pointer.
    enum HotStyle : int32_t {
        Plain = 0,  ///< unchanged; the default
        Halo = 1,   ///< with a green halo of three pixels
        Outline = 2 ///< with a green outline of two pixels, within the picture's bounds
    };
    Q_ENUM(HotStyle)

    /// Milliseconds until a tick, by the number of ticks that went before it.
    using Schedule = std::map<int32_t, int32_t>;

    /// A schedule for an hour's press: the first tick after `first` milliseconds, the
    /// others `then` milliseconds apart, which is 10 at least.
    static Schedule repeating(int32_t first, int32_t then);

    /// Without a picture, or with one.
    explicit QT_Button(QWidget* parent = nullptr);
    explicit QT_Button(const QPixmap& picture, QWidget* parent = nullptr);
    ~QT_Button() override;

    using kern::TimerInterface::killTimer;
    using kern::TimerInterface::startTimer;

    /// The one that was set.
    const QPixmap& picture() const { return d_normal; }

    /// One of HotStyle; with any other value a failed check, and Plain, when the look is
    /// made.
    HotStyle hotStyle() const { return static_cast<HotStyle>(d_hotStyle); }

    /// Of the picture in all its looks: 1, the default, is opaque, 0 invisible.
    double opacity() const { return d_opacity; }

    /// Empty, the default: no ticks. Otherwise the press is tick number 0, and each
    /// tick looks up its own number: {{0, 500}, {1, 100}, {2, 100}} waits 500 ms for
    /// the first tick and 100 ms for the next two. A schedule must outlast the press: a
    /// number without an entry is a failed check, after which a timer that already runs
    /// keeps its period, and each further tick is a failed check again.
    const Schedule& schedule() const { return d_schedule; }

    /// Ticks so far in the sequence that runs, or of the last one.
    int32_t tickCount() const { return d_tickCount; }

    /// Milliseconds that the timer of the present tick was started with.
    int32_t period() const { return d_period; }

    /// Whether a press is in progress, be the pointer over the button or not.
    bool isDown() const { return pressTarget() != -1; }

    /// Whether a press at this point of the widget counts.
    bool hitTest(const QPoint& point) const;

    /// The picture with room for a halo.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    void timerExpired(int64_t id) override;

public Q_SLOTS:
    /// Set the properties, and tell of a change.
    void setPicture(const QPixmap& picture);
    void setHotStyle(int32_t style);
    void setOpacity(double opacity);
    void setSchedule(const QT_Button::Schedule& schedule);

    /// Emits clicked() and triggered(), if the button is enabled.
    void click();

Q_SIGNALS:
    /// A press has begun, and has ended: released over the button or beside it, or taken
    /// back.
    void pressed();
    void released();

    /// The button was pressed and released inside its picture, or ticked.
    void clicked();

    /// The button was used once: after the clicked() of a release or of click(), not of
    /// a tick.
    void triggered();

    /// The sequence of ticks that a press started is over. If the release that ended it
    /// is a click, that follows.
    void spinningComplete();

    /// The property has another value now.
    void pictureChanged();
    void hotStyleChanged();
    void opacityChanged(double opacity);
    void scheduleChanged();

protected:
    /// What a tick does: emits clicked() while the pointer is over the button or a key
    /// holds it down. May be replaced; may delete the button.
    virtual void tick();

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

    int targetAt(const QPoint& point) const override { return hitTest(point) ? 0 : -1; }
    int keyTarget() const override { return 0; }
    void pressBegan() override;
    void pressMoved(bool over) override { setHover(over); }
    void pressReleased(bool inside) override;
    void pressTakenBack(int target) override;

private:
    QRect centred(const QPixmap& picture) const;
    const QPixmap& hot();
    const QPixmap& pressedLook();
    const QPixmap& disabled();
    const QPixmap& currentPicture();
    QPixmap makeHot() const;
    void forgetLooks();
    bool looksPressed() const { return isDown() && (d_isHover || pressKey() != 0); }
    void setHover(bool hover);
    bool endTicks();
    void scheduleTick();

    QPixmap d_normal;
    QPixmap d_pressed;
    QPixmap d_hot;
    QPixmap d_disabled;
    double d_opacity = 1.0;
    bool d_isHover = false;
    int32_t d_hotStyle = Plain;
    int64_t d_timerId = 0;
    int32_t d_period = 0;
    int32_t d_tickCount = 0;
    Schedule d_schedule;
};

Q_DECLARE_METATYPE(QT_Button::Schedule)
