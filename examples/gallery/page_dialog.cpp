#include "pages.h"
#include "states.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

namespace gallery {
namespace {

void addField(NS_QT::WidgetBuilder& builder, const QString& caption, const QString& text) {
    builder.addLabel(caption, leading());
    builder.add(new QLineEdit(text))->setAccessibleName(caption);
}

} // namespace

QWidget* makeDialogPage(const Report& report) {
    auto* const page = new QWidget;
    NS_QT::WidgetBuilder builder(page);
    const NS_QT::VBoxScope column(builder);
    {
        const NS_QT::GridScope grid(builder);
        addField(builder, "Address", "nvr-1.example.org");
        addField(builder, "Port", "80");
        builder.newRow();
        addField(builder, "User", "operator");
        addField(builder, "Site", "North");
        builder.newRow();
        builder.skipColumn();
        builder.setColSpan(3);
        builder.add(new QCheckBox("Connect when the program starts"));
    }
    builder.addStretch(1);
    const auto reportTo = [&](QPushButton* button) {
        QObject::connect(button, &QPushButton::clicked, button,
                         [report, button] { report(button->text() + ": clicked()"); });
    };
    reportTo(builder.addPushButton("Try the connection", "Does nothing here", nullptr, nullptr));
    reportTo(builder.addOkCancel(page, SLOT(update()), page, SLOT(update())));
    return page;
}

} // namespace gallery
