#pragma once

#include "pages.h"

#include <QWidget>

class QLabel;
class QTabWidget;

namespace gallery {

/// The window: one tab for each page, and a line with what was signalled last.
class Gallery : public QWidget {
public:
    Gallery();

    /// Shows the page of that name ("inputs"); false if there is none.
    bool showPage(const QString& name);

private:
    void addPage(const QString& name, const QString& title, QWidget* (*make)(const Report&));

    QTabWidget* const d_pages;
    QLabel* const d_signalled;
};

} // namespace gallery
