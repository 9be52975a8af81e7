#include "gallery.h"

#include "states.h"

#include <QLabel>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace gallery {

Gallery::Gallery() : d_pages(new QTabWidget(this)), d_signalled(new QLabel(this)) {
    setWindowTitle("Widgets");
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(d_pages);
    d_pages->tabBar()->setAccessibleName("Pages");
    layout->addWidget(d_signalled);
    d_signalled->setAlignment(leading());
    d_signalled->setText("Signals of the widgets appear here.");
    addPage("inputs", "Numbers and choices", &makeInputsPage);
    addPage("links", "Links, icons, messages", &makeLinksPage);
    addPage("buttons", "Buttons", &makeButtonsPage);
    addPage("strips", "Strips", &makeStripsPage);
    addPage("dialog", "Built dialog", &makeDialogPage);
}

void Gallery::addPage(const QString& name, const QString& title, QWidget* (*make)(const Report&)) {
    QWidget* const page = make([this](const QString& text) { d_signalled->setText(text); });
    page->setObjectName(name);
    d_pages->addTab(page, title);
}

bool Gallery::showPage(const QString& name) {
    auto* const page = d_pages->findChild<QWidget*>(name);
    d_pages->setCurrentWidget(page);
    return page != nullptr;
}

QStringList Gallery::pageNames() const {
    QStringList names;
    for (int index = 0; index < d_pages->count(); ++index)
        names << d_pages->widget(index)->objectName();
    return names;
}

} // namespace gallery
