#pragma once

#include "ui_every_widget.h"

#include <QMetaProperty>
#include <QWidget>

/// A window with every widget of the toolkit.
struct Form : QWidget, Ui::EveryWidget {
    Form() { setupUi(this); }
};

/// A property's value, enumerators by their names and pictures by their widths.
QString inWords(const QMetaProperty& property, const QVariant& value);

/// Expects that a widget is what every_widget.ui describes.
void expectEveryWidget(const QWidget& form);
