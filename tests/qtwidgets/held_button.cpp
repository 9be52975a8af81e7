// A window with a button that repeats, which says on standard output what happens to it.
// tests/qtwidgets/pointer.py works it.

#include "qt_button.h"
#include "qt_timermanager.h"

#include <QApplication>
#include <QMouseEvent>

#include <cstdio>

namespace {

void say(const char* what) {
    std::puts(what);
    std::fflush(stdout);
}

class HeldButton : public QT_Button {
public:
    explicit HeldButton(const QPixmap& picture) : QT_Button(picture) {
        setSchedule(repeating(50, 50));
        connect(this, &QT_Button::clicked, [] { say("clicked"); });
        connect(this, &QT_Button::pressed, [] { say("pressed"); });
        connect(this, &QT_Button::released, [] { say("released"); });
    }

protected:
    void tick() override {
        say("tick");
        QT_Button::tick();
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        QT_Button::mouseMoveEvent(event);
        say(rect().contains(event->pos()) ? "over" : "away");
    }
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const NS_QT::QtTimerManager timers;
    QPixmap picture(80, 80);
    picture.fill(Qt::blue);
    HeldButton button(picture);
    button.setFixedSize(button.sizeHint());
    button.show();
    return QApplication::exec();
}
