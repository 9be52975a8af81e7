#include "pages.h"
#include "pictures.h"
#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_buttonstrips.h"
#include "states.h"
#include "strip_art.h"

#include <QEnterEvent>
#include <QLabel>
#include <QMouseEvent>

namespace gallery {
namespace {

// As if the pointer were over the button, and pressed it; lasts until a real pointer passes.
void pretendPointer(QT_Button* button, bool press) {
    const QPoint middle = button->rect().center();
    QEnterEvent enter(middle, middle, middle);
    QApplication::sendEvent(button, &enter);
    if (press) {
        QMouseEvent event(QEvent::MouseButtonPress, middle, Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(button, &event);
    }
}

QT_Button* makeButton(const Report& report, int32_t hotStyle) {
    constexpr int kEdge = 32;
    const QIcon icon = makeIcon(Picture::Monitor);
    auto* const button = new QT_Button(icon.pixmap(kEdge, kEdge));
    button->setHotStyle(hotStyle);
    button->setToolTip("Monitor");
    QObject::connect(button, &QT_Button::clicked, button, [report, button] {
        report(QString("QT_Button: clicked(), %1 ticks").arg(button->tickCount()));
    });
    return button;
}

void addHeads(NS_QT::WidgetBuilder& group) {
    const int character = QApplication::fontMetrics().averageCharWidth();
    group.setColumnMinimumWidth(24 * character);
    group.skipColumn();
    for (const char* head : {"As it is", "Pointed at", "Pressed", "Disabled"}) {
        group.setColumnMinimumWidth(12 * character);
        group.addLabel(head, leading());
    }
    group.addStretch(1);
    group.newRow();
}

void addLooks(NS_QT::WidgetBuilder& group, const Report& report, const QString& caption,
              int32_t hotStyle) {
    group.addLabel(caption, leading());
    for (int state = 0; state < 4; ++state) {
        QT_Button* const button = makeButton(report, hotStyle);
        group.add(button);
        if (state == 1 || state == 2)
            pretendPointer(button, state == 2);
        button->setEnabled(state != 3);
    }
    group.newRow();
}

// A button that repeats after half a second, then ten times a second.
QT_Button* makeRepeating(const Report& report) {
    QT_Button* const button = makeButton(report, QT_Button::Halo);
    button->setSchedule(QT_Button::repeating(500, 100));
    button->setOpacity(0.6);
    return button;
}

void addButtons(NS_QT::WidgetBuilder& group, const Report& report) {
    addHeads(group);
    addLooks(group, report, "Plain", QT_Button::Plain);
    addLooks(group, report, "With a halo", QT_Button::Halo);
    addLooks(group, report, "With an outline", QT_Button::Outline);
    group.addLabel("Repeating, opacity 0.6", leading());
    group.add(makeRepeating(report));
}

struct Strip {
    QT_ButtonStrips::Strip definition;
    const char* caption;
    QStringList signs;
};

const std::vector<Strip>& strips() {
    using namespace QT_ButtonStrips;
    static const std::vector<Strip> all{
        {Review, "Review", {"|<", "<", "<|", "||", "|>", ">", "o"}},
        {TagStart, "Tag start", {"[", "<["}},
        {TagEnd, "Tag end", {"]>", "]", "x", "[]"}},
        {Live, "Live", {"*"}},
        {Preview, "Preview", {">", "||", "|>"}},
        {PlayMode, "Play mode, exclusive", {"o", ">|", ">>"}},
        {ListNav, "List", {"|<", "<", ">", ">|"}},
    };
    return all;
}

QT_ButtonStrip* makeStrip(const Report& report, const Strip& strip) {
    const StripArt art = drawStrip(strip.signs);
    auto* const buttons = new QT_ButtonStrip(art.picture, art.buttons);
    buttons->setButtonToolTips(QT_ButtonStrips::definition(strip.definition).toolTips());
    if (strip.definition == QT_ButtonStrips::PlayMode) {
        buttons->setCheckable(true);
        buttons->setExclusive(true);
        buttons->setChecked(1, true);
    }
    QObject::connect(buttons, &QT_ButtonStrip::clicked, buttons, [report, buttons](int index) {
        report(QString("QT_ButtonStrip: clicked(%1), \"%2\"")
                   .arg(index)
                   .arg(buttons->buttonToolTip(index)));
    });
    return buttons;
}

} // namespace

QWidget* makeButtonsPage(const Report& report) {
    auto* const page = new QWidget;
    NS_QT::WidgetBuilder builder(page);
    const NS_QT::VBoxScope column(builder);
    addGroup(builder, "QT_Button", [&](NS_QT::WidgetBuilder& group) { addButtons(group, report); });
    builder.addStretch(1);
    return page;
}

QWidget* makeStripsPage(const Report& report) {
    auto* const page = new QWidget;
    NS_QT::WidgetBuilder builder(page);
    const NS_QT::VBoxScope column(builder);
    addGroup(builder, "QT_ButtonStrip", [&](NS_QT::WidgetBuilder& group) {
        for (const Strip& strip : strips())
            addStates(group, strip.caption, [&] { return makeStrip(report, strip); });
    });
    builder.addStretch(1);
    return page;
}

} // namespace gallery
