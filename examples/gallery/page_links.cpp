#include "pages.h"
#include "pictures.h"
#include "qt_hyperlinklabel.h"
#include "qt_iconwidget.h"
#include "qt_infobutton.h"
#include "states.h"

#include <QHBoxLayout>

namespace gallery {
namespace {

NS_QT::HyperlinkLabel* makeLink(const Report& report, const QString& text) {
    auto* const link = new NS_QT::HyperlinkLabel(text);
    link->setAlignment(leading());
    QObject::connect(link, &NS_QT::HyperlinkLabel::clicked, link,
                     [report, text] { report("HyperlinkLabel: clicked(), \"" + text + '"'); });
    return link;
}

void addLinks(NS_QT::WidgetBuilder& group, const Report& report) {
    addStates(group, "Link", [&] { return makeLink(report, "Open the manual"); });
    addStates(group, "Italic, in its own colour", [&] {
        NS_QT::HyperlinkLabel* const link = makeLink(report, "Show the log");
        link->setItalic(true);
        link->setUnderline(false);
        link->setLinkColour(QColor(200, 80, 30));
        return link;
    });
    addStates(group, "Not a link", [&] {
        NS_QT::HyperlinkLabel* const link = makeLink(report, "No recorder found");
        link->setLinkEnabled(false);
        return link;
    });
}

// All pictures in one row, in the four sizes.
QWidget* makeIconRow() {
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    const Picture pictures[] = {Picture::Camera, Picture::Monitor, Picture::Bell, Picture::Tick};
    for (int32_t size = NS_QT::IconSet::Size16; size <= NS_QT::IconSet::Size48; ++size)
        layout->addWidget(new NS_QT::IconWidget(makeIcon(pictures[size]), size));
    layout->addStretch();
    return row;
}

void addMessages(NS_QT::WidgetBuilder& group) {
    using NS_QT::InfoButton;
    const auto addButton = [&](const QString& caption, InfoButton::Kind kind, const QString& text) {
        const auto make = [&] { return new InfoButton(kind, "Recorder", text); };
        addStates(group, caption, make, Qt::AlignLeading | Qt::AlignVCenter);
    };
    addButton("Information", InfoButton::Information, "The recorder answers on port 80.");
    addButton("Warning", InfoButton::Warning, "The recorder does not answer.");
}

} // namespace

QWidget* makeLinksPage(const Report& report) {
    auto* const page = new QWidget;
    NS_QT::WidgetBuilder builder(page);
    const NS_QT::VBoxScope column(builder);
    addGroup(builder, "HyperlinkLabel",
             [&](NS_QT::WidgetBuilder& group) { addLinks(group, report); });
    addGroup(builder, "IconWidget", [](NS_QT::WidgetBuilder& group) {
        addStates(group, "16, 24, 32 and 48 pixels", &makeIconRow);
    });
    addGroup(builder, "InfoButton", &addMessages);
    builder.addStretch(1);
    return page;
}

} // namespace gallery
