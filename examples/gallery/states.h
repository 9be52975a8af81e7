#pragma once

#include "qt_widgetbuilder.h"

#include <QAccessible>
#include <QApplication>
#include <QFontMetrics>
#include <QGroupBox>
#include <QString>
#include <Qt>

namespace gallery {

/// Adds a group to the page of `builder`; `fill` gets the group's builder, with a grid open.
template <typename Fill>
void addGroup(NS_QT::WidgetBuilder& builder, const QString& title, Fill fill) {
    auto* const group = builder.add(new QGroupBox(title));
    NS_QT::WidgetBuilder inside(group);
    const NS_QT::GridScope grid(inside);
    fill(inside);
}

/// The side on which rows begin: labels align by the direction of their text, here English, rather
/// than by the window's.
inline Qt::Alignment leading() {
    return (QApplication::isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

/// Adds a row to the grid: a caption, then two widgets from `make`, the second one disabled.
/// Columns have the same width in every group.
template <typename Make>
void addStates(NS_QT::WidgetBuilder& builder, const QString& caption, Make make,
               Qt::Alignment alignment = {}) {
    constexpr int kCaptionCharacters = 24;
    constexpr int kGap = 15;
    NS_QT::WidgetBuilder::Layout* const row = builder.current();
    row->setColumnMinimumWidth(QApplication::fontMetrics().averageCharWidth() * kCaptionCharacters);
    builder.addLabel(caption, leading());
    for (const bool enabled : {true, false}) {
        row->addSpacing(kGap);
        QWidget* const widget = make();
        if (QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty())
            widget->setAccessibleName(caption);
        widget->setEnabled(enabled);
        row->addWidget(widget, 1, alignment);
    }
    row->newRow();
}

} // namespace gallery
