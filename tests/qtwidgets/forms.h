#pragma once

#include "ui_every_widget.h"

#include <QMetaProperty>
#include <QRegularExpression>
#include <QWidget>

#include <vector>

/// A window with every widget of the toolkit.
struct Form : QWidget, Ui::EveryWidget {
    Form() { setupUi(this); }

    QList<QWidget*> widgets() const {
        return findChildren<QWidget*>(QRegularExpression("^[a-z]+$"));
    }
};

/// The properties of a widget's own class, whatever it inherits.
inline std::vector<QMetaProperty> propertiesOf(const QWidget& widget) {
    const QMetaObject& meta = *widget.metaObject();
    std::vector<QMetaProperty> properties;
    for (int index = meta.propertyOffset(); index < meta.propertyCount(); ++index)
        properties.push_back(meta.property(index));
    return properties;
}

/// A property's value, enumerators by their names; nothing of a picture.
inline QString inWords(const QMetaProperty& property, const QVariant& value) {
    if (property.isEnumType())
        return property.enumerator().valueToKey(value.toInt());
    return value.canConvert<QString>() ? value.toString() : value.toStringList().join(", ");
}
