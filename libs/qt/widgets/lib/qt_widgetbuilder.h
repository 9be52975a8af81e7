#pragma once

#include "core_deprecated_glist.h"

#include <QCoreApplication>
#include <QString>
#include <Qt>

#include <cstdint>
#include <memory>

class QLabel;
class QLayout;
class QObject;
class QPushButton;
class QWidget;

namespace NS_QT {

/// Writes a dialog as a short sequence of calls: layouts are opened and closed like
/// brackets, and widgets go into the layout that is open at the moment.
///
///     NS_QT::WidgetBuilder builder(&dialog);
///     builder.push(NS_QT::WidgetBuilder::VBox);
///     builder.push(NS_QT::WidgetBuilder::Grid);
///     builder.addLabel("Name", Qt::AlignLeft | Qt::AlignVCenter);
///     builder.add(nameEdit);
///     builder.newRow();
///     builder.pop();
///     builder.addOkCancel();
///
/// The first layout is installed on the parent widget and has margins of 10 pixels;
/// those opened inside it have none. Every layout has a spacing of 5 pixels. Order
/// is reading order: a right-to-left application shows it mirrored.
///
/// The parent widget is not owned and must outlive the calls. Layouts and widgets
/// belong to Qt: destroying the builder, at any time, leaves the dialog as it is.
/// GUI thread only.
class WidgetBuilder {
    Q_DECLARE_TR_FUNCTIONS(NS_QT::WidgetBuilder)

public:
    /// One of the kinds of layouts below.
    using LayoutType = int32_t;
    enum : LayoutType { Grid = 0, HBox = 1, VBox = 2 };

    class Layout;

    /// Lays out widgets of this parent.
    explicit WidgetBuilder(QWidget* parent);
    ~WidgetBuilder();
    WidgetBuilder(const WidgetBuilder&) = delete;
    WidgetBuilder& operator=(const WidgetBuilder&) = delete;

    /// Opens a layout inside the current one, or as the parent widget's layout when
    /// it is the first. In a grid it takes the next cell. An unknown kind is ignored; as
    /// the first it is a failed check, too.
    void push(LayoutType kind);

    /// Closes the current layout. The first one stays open.
    void pop();

    /// The layout that is open; null before the first push. Owned by the builder.
    Layout* current() const { return d_current; }

    /// Places the widget in the current layout and returns it, so that creating and
    /// placing can be one expression. Without an open layout: a failed check, and the
    /// widget stays where it was.
    template <typename Widget>
    Widget* add(Widget* widget) {
        place(widget);
        return widget;
    }

    /// Creates a label and places it.
    QLabel* addLabel(const QString& text, Qt::Alignment alignment);

    /// Creates a push button, unplaced. An empty tool tip is left unset. With both a
    /// receiver and a slot (as written by SLOT()), a click calls it; a connection that
    /// Qt refuses is logged on CRIT, and the button works otherwise.
    QPushButton* makePushButton(const QString& text, const QString& toolTip,
                                const QObject* receiver, const char* slot);

    /// The same, and places the button.
    QPushButton* addPushButton(const QString& text, const QString& toolTip, const QObject* receiver,
                               const char* slot);

    /// Adds the row "OK", "Cancel" at the trailing edge and returns the OK button,
    /// which becomes the dialog's default. A null receiver is the parent widget; null
    /// slots are its accept() and reject().
    QPushButton* addOkCancel(const QObject* okReceiver = nullptr, const char* okSlot = nullptr,
                             const QObject* cancelReceiver = nullptr,
                             const char* cancelSlot = nullptr);

    /// The same operation on the current layout; nothing while none is open.
    void addStretch(int stretch);
    void addSpacing(int size);
    void setColumnMinimumWidth(int width);
    void newRow();
    void skipColumn();
    void setColSpan(int span);
    void addWidget(QWidget* widget, int fromRow, int toRow, int fromCol, int toCol,
                   Qt::Alignment alignment = {});
    void addWidget(QWidget* widget, int fromCol, int toCol, Qt::Alignment alignment = {});

private:
    std::unique_ptr<Layout> makeLayout(LayoutType kind, QWidget* parent) const;
    void place(QWidget* widget);

    QWidget* const d_parent;
    std::unique_ptr<Layout> d_root;
    Layout* d_current = nullptr;
};

/// One opened layout: wraps Qt's and, for a grid, remembers the next free cell.
///
/// In a box widgets follow each other, and the rows and columns of an operation mean
/// nothing. In a grid they fill the current row; stretch and spacing, too, are those
/// of the next column and use it up.
class WidgetBuilder::Layout {
public:
    /// Destroys the layouts opened inside; Qt's layouts stay.
    virtual ~Layout();
    Layout(const Layout&) = delete;
    Layout& operator=(const Layout&) = delete;

    /// Box: a stretch or space of that size. Grid: stretch or minimum width of the
    /// next column, which stays empty.
    virtual void addStretch(int stretch) = 0;
    virtual void addSpacing(int size) = 0;

    /// Grids only: the minimum width of the next column.
    virtual void setColumnMinimumWidth(int width) = 0;
    /// Grids only: on to the first column of the next row.
    virtual void newRow() = 0;
    /// Grids only: leaves a column empty.
    virtual void skipColumn() = 0;

    /// Grids only: how many columns the next widget spans, 1 to 100, else a failed
    /// check and 1. In a box a failed check.
    virtual void setColSpan(int span);

    /// Nests a Qt layout, which has no parent yet.
    virtual void addLayout(QLayout* layout) = 0;

    /// Box: a widget with that stretch. Grid: in the next cell; a stretch above 0 is
    /// given to the column.
    virtual void addWidget(QWidget* widget, int stretch, Qt::Alignment alignment) = 0;

    /// Grid: a row of its own, across all columns there are so far.
    virtual void addRowWidget(QWidget* widget, Qt::Alignment alignment) = 0;

    /// Grid: at these cells, ends included, wherever the next one is; a negative end
    /// reaches to the last row or column. Without rows: in the current one.
    virtual void addWidget(QWidget* widget, int fromRow, int toRow, int fromCol, int toCol,
                           Qt::Alignment alignment);
    virtual void addWidget(QWidget* widget, int fromCol, int toCol, Qt::Alignment alignment);

    /// Boxes only: the stretch of a layout inside.
    virtual void setStretchFactor(QLayout* layout, int stretch) = 0;

    /// Qt's own.
    virtual QLayout* layout() const { return d_layout; }

    /// The enclosing layout, null for the first.
    Layout* parent() const { return d_parent; }
    /// The layouts opened inside, in order, owned.
    core::GList<Layout>& children() { return d_children; }

protected:
    /// Within the layout `parent`, null for none.
    Layout(Layout* parent, QLayout* layout);

private:
    Layout* const d_parent;
    core::GList<Layout> d_children;
    QLayout* const d_layout;
};

/// Opens a layout for as long as it lives, so that layouts nest as the code does:
///
///     const GridScope grid(builder);
template <WidgetBuilder::LayoutType kind>
class LayoutScope {
public:
    /// Opens it.
    [[nodiscard]] explicit LayoutScope(WidgetBuilder& builder) : d_builder(&builder) {
        builder.push(kind);
    }
    ~LayoutScope() { d_builder->pop(); }
    LayoutScope(const LayoutScope&) = delete;
    LayoutScope& operator=(const LayoutScope&) = delete;

private:
    WidgetBuilder* d_builder;
};
using GridScope = LayoutScope<WidgetBuilder::Grid>;
using HBoxScope = LayoutScope<WidgetBuilder::HBox>;
using VBoxScope = LayoutScope<WidgetBuilder::VBox>;

} // namespace NS_QT
