#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace gallery {

/// Shows the visitor what a widget has just signalled.
using Report = std::function<void(const QString& text)>;

/// The pages, with each widget in every state. The caller owns them.
QWidget* makeInputsPage(const Report& report);
QWidget* makeLinksPage(const Report& report);
QWidget* makeButtonsPage(const Report& report);
QWidget* makeStripsPage(const Report& report);
QWidget* makeDialogPage(const Report& report);

} // namespace gallery
