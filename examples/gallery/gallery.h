#pragma once

#include "pages.h"

#include <QStringList>
#include <QWidget>

class QLabel;
class QTabWidget;

namespace gallery {

/// The window: one tab for each page, and a line that shows the last signal.
class Gallery : public QWidget {
public:
    Gallery();

    /// Shows the page of that name ("inputs"); false if there is none.
    bool showPage(const QString& name);

    QStringList pageNames() const;

private:
    void addPage(const QString& name, const QString& title, QWidget* (*make)(const Report&));

    QTabWidget* const d_pages;
    QLabel* const d_signalled;
};

} // namespace gallery
