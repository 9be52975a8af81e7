#pragma once

#include <QAccessible>
#include <QApplication>
#include <QKeySequence>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QPointer>
#include <QTest>
#include <QWidget>

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace test {

/// Does to a widget what the words of the script say, as long as there is one. "+20,15"
/// presses the left mouse button there, "~20,15" moves the held pointer, "-20,15" releases it;
/// ">" and "<" press and release the right one. "+Space" and "-Space" press and release a key,
/// "*Space" repeats it while it is held, and "Space" does both. Words in small letters are
/// states and events; "press" is what a screen reader does.
inline void play(QWidget& played, const QString& script) {
    static const std::map<QChar, std::pair<QEvent::Type, Qt::MouseButton>> kMouse{
        {'+', {QEvent::MouseButtonPress, Qt::LeftButton}},
        {'-', {QEvent::MouseButtonRelease, Qt::LeftButton}},
        {'>', {QEvent::MouseButtonPress, Qt::RightButton}},
        {'<', {QEvent::MouseButtonRelease, Qt::RightButton}},
        {'~', {QEvent::MouseMove, Qt::NoButton}}};
    const QPointer<QWidget> widget(&played);
    const auto send = [&](QEvent&& event) { QApplication::sendEvent(widget, &event); };
    const std::map<QString, std::function<void()>> words{
        {"on", [&] { widget->setEnabled(true); }},
        {"off", [&] { widget->setEnabled(false); }},
        {"focus", [&] { widget->setFocus(); }},
        {"blur", [&] { widget->clearFocus(); }},
        {"enter", [&] { send(QEvent(QEvent::Enter)); }},
        {"leave", [&] { send(QEvent(QEvent::Leave)); }},
        {"away", [&] { send(QEvent(QEvent::WindowDeactivate)); }},
        {"hidden", [&] { widget->hide(), widget->show(); }},
        {"press", [&] {
             auto* access = QAccessible::queryAccessibleInterface(widget);
             if (access->childCount() > 0)
                 access = access->child(0);
             access->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
         }}};
    for (const QString& step : script.split(' ', Qt::SkipEmptyParts)) {
        const QStringList at = (step[0].isLetter() ? step : step.mid(1)).split(',');
        const auto key = Qt::Key(QKeySequence(at[0])[0]);
        if (words.count(step) > 0) {
            words.at(step)();
        } else if (at.size() == 2) {
            const auto& [type, button] = kMouse.at(step[0]);
            send(QMouseEvent(type, QPoint(at[0].toInt(), at[1].toInt()), button, Qt::LeftButton,
                             {}));
        } else if (step[0] == '*') {
            for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress})
                send(QKeyEvent(type, key, {}, {}, true));
        } else {
            const QTest::KeyAction unsigned_ = step[0] == '-' ? QTest::Release : QTest::Click;
            const auto action = step[0] == '+' ? QTest::Press : unsigned_;
            QTest::sendKeyEvent(action, widget, key, QString(), {});
        }
        if (widget == nullptr)
            return;
        QApplication::sendPostedEvents(widget);
    }
}

/// What an object says from now on: its signals and what they carry, in order. Those that all
/// widgets have are left out.
class Heard : public QObject {
public:
    explicit Heard(QObject& object) : d_meta(*object.metaObject()) {
        for (int id = QWidget::staticMetaObject.methodCount(); id < d_meta.methodCount(); ++id) {
            if (d_meta.method(id).methodType() == QMetaMethod::Signal)
                QMetaObject::connect(&object, id, this, staticMetaObject.methodCount() + id);
        }
    }
    /// Called after each signal, which may be the object's last.
    std::function<void(const QString& signal)> then = [](const QString&) {};

    /// Since the last call: "toggled 1 true, clicked 1".
    std::string take() { return std::exchange(d_said, {}).join(", ").toStdString(); }

    int qt_metacall(QMetaObject::Call call, int id, void** arguments) override {
        const int signal = QObject::qt_metacall(call, id, arguments);
        if (call != QMetaObject::InvokeMetaMethod || signal < 0)
            return signal;
        const QMetaMethod method = d_meta.method(signal);
        QString text = method.name();
        for (int index = 0; index < method.parameterCount(); ++index) {
            const QVariant value(method.parameterType(index), arguments[index + 1]);
            text += ' ' + value.toString();
        }
        d_said << text;
        then(method.name());
        return -1;
    }

private:
    const QMetaObject& d_meta;
    QStringList d_said;
};

} // namespace test
