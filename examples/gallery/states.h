#pragma once

#include "qt_widgetbuilder.h"

#include <QGroupBox>
#include <QString>

namespace gallery {

/// A group of the page that `builder` builds; `fill` is given a builder of its own, with a
/// grid open.
template <typename Fill>
void addGroup(NS_QT::WidgetBuilder& builder, const QString& title, Fill fill) {
    auto* const group = builder.add(new QGroupBox(title));
    NS_QT::WidgetBuilder inside(group);
    const NS_QT::GridScope grid(inside);
    fill(inside);
}

/// A row of the grid: a caption, then the widget that `make` makes, twice: as it is and
/// disabled.
template <typename Make>
void addStates(NS_QT::WidgetBuilder& builder, const QString& caption, Make make) {
    builder.addLabel(caption, Qt::AlignLeading | Qt::AlignVCenter);
    builder.add(make());
    builder.add(make())->setEnabled(false);
    builder.newRow();
}

} // namespace gallery
