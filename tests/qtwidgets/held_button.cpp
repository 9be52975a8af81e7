// A window with a button that repeats, which says on standard output what happens to it.
// tests/qtwidgets/pointer.py works it.

#include "qt_button.h"
#include "qt_timermanager.h"

#include <QApplication>
#include <QMouseEvent>

#include <cstdio>

namespace {

class HeldButton : public QT_Button {
public:
    using QT_Button::QT_Button;

protected:
    void tick() override {
        std::puts("tick");
        QT_Button::tick();
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        QT_Button::mouseMoveEvent(event);
        std::puts(rect().contains(event->pos()) ? "over" : "away");
    }
};

} // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const QApplication application(argc, argv);
    const NS_QT::QtTimerManager timers;
    QPixmap picture(80, 80);
    picture.fill(Qt::blue);
    HeldButton button(picture);
    button.setSchedule(QT_Button::repeating(50, 50));
    QObject::connect(&button, &QT_Button::clicked, [] { std::puts("clicked"); });
    QObject::connect(&button, &QT_Button::pressed, [] { std::puts("pressed"); });
    QObject::connect(&button, &QT_Button::released, [] { std::puts("released"); });
    button.setFixedSize(button.sizeHint());
    button.show();
    return QApplication::exec();
}
