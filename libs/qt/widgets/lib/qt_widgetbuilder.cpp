#include "qt_widgetbuilder.h"

#include "core_check.h"
#include "core_log.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include <utility>

namespace NS_QT {
namespace {

constexpr int kRootMargin = 10;
constexpr int kSpacing = 5;
constexpr int kMaxColSpan = 100;

class BoxLayout : public WidgetBuilder::Layout {
public:
    BoxLayout(Layout* parent, QBoxLayout* box) : Layout(parent, box) {}

    using Layout::addWidget;

    void addStretch(int stretch) override { box()->addStretch(stretch); }
    void addSpacing(int size) override { box()->addSpacing(size); }
    void setColumnMinimumWidth(int) override {}
    void newRow() override {}
    void skipColumn() override {}
    void addLayout(QLayout* nested) override { box()->addLayout(nested, 0); }
    void addWidget(QWidget* widget, int stretch, Qt::Alignment alignment) override {
        box()->addWidget(widget, stretch, alignment);
    }
    void addRowWidget(QWidget* widget, Qt::Alignment alignment) override {
        box()->addWidget(widget, 0, alignment);
    }
    void setStretchFactor(QLayout* nested, int stretch) override {
        box()->setStretchFactor(nested, stretch);
    }

private:
    QBoxLayout* box() const { return static_cast<QBoxLayout*>(layout()); }
};

// Cells from..to as Qt counts them; a negative end reaches to the last one.
constexpr int spanOf(int from, int to) { return to < 0 ? -1 : to - from + 1; }

class GridLayout : public WidgetBuilder::Layout {
public:
    GridLayout(Layout* parent, QGridLayout* grid) : Layout(parent, grid) {}

    void addStretch(int stretch) override { grid()->setColumnStretch(d_col++, stretch); }
    void addSpacing(int size) override { grid()->setColumnMinimumWidth(d_col++, size); }
    void setColumnMinimumWidth(int width) override { grid()->setColumnMinimumWidth(d_col, width); }
    void newRow() override {
        ++d_row;
        d_col = 0;
    }
    void skipColumn() override { ++d_col; }
    void setColSpan(int span) override {
        d_col_span = CHECKF(span >= 1 && span <= kMaxColSpan) ? span : 1;
    }
    void addLayout(QLayout* nested) override { grid()->addLayout(nested, d_row, d_col++); }
    void addWidget(QWidget* widget, int stretch, Qt::Alignment alignment) override;
    void addRowWidget(QWidget* widget, Qt::Alignment alignment) override;
    void addWidget(QWidget* widget, int fromRow, int toRow, int fromCol, int toCol,
                   Qt::Alignment alignment) override {
        grid()->addWidget(widget, fromRow, fromCol, spanOf(fromRow, toRow), spanOf(fromCol, toCol),
                          alignment);
    }
    void addWidget(QWidget* widget, int fromCol, int toCol, Qt::Alignment alignment) override {
        grid()->addWidget(widget, d_row, fromCol, 1, spanOf(fromCol, toCol), alignment);
    }
    void setStretchFactor(QLayout*, int) override {}

private:
    QGridLayout* grid() const { return static_cast<QGridLayout*>(layout()); }

    int32_t d_row = 0;
    int32_t d_col = 0;
    int32_t d_col_span = 1;
};

void GridLayout::addWidget(QWidget* widget, int stretch, Qt::Alignment alignment) {
    if (stretch > 0)
        grid()->setColumnStretch(d_col, stretch);
    GASSERT(d_col_span > 0 && d_col_span <= 100);
    grid()->addWidget(widget, d_row, d_col, 1, d_col_span, alignment);
    d_col += d_col_span;
    d_col_span = 1;
}

void GridLayout::addRowWidget(QWidget* widget, Qt::Alignment alignment) {
    if (d_col != 0)
        newRow();
    grid()->addWidget(widget, d_row, 0, 1, grid()->columnCount(), alignment);
    newRow();
}

// Qt reports a refused connection only on its own channel; `site` is the call's.
void connectClicked(const QPushButton* button, const QObject* receiver, const char* slot,
                    const core::CheckSite& site) {
    const char* const clicked = SIGNAL(clicked());
    if (!QObject::connect(button, clicked, receiver, slot)) {
        core::logFrom(core::kChannelCrit, "QT::WidgetBuilder::makePushButton",
                      "QObject:connect(%s,%s) failed at %s:%d", clicked, slot, site.file,
                      site.line);
    }
}

} // namespace

WidgetBuilder::Layout::Layout(Layout* parent, QLayout* layout)
    : d_parent(parent), d_layout(layout) {
    d_children.setOwnsItems(true);
}

WidgetBuilder::Layout::~Layout() = default;

void WidgetBuilder::Layout::setColSpan(int) { CHECKF(false); }

void WidgetBuilder::Layout::addWidget(QWidget* widget, int, int, int, int,
                                      Qt::Alignment alignment) {
    addWidget(widget, 0, alignment);
}

void WidgetBuilder::Layout::addWidget(QWidget* widget, int, int, Qt::Alignment alignment) {
    addWidget(widget, 0, alignment);
}

WidgetBuilder::WidgetBuilder(QWidget* parent) : d_parent(parent) {}

WidgetBuilder::~WidgetBuilder() = default;

std::unique_ptr<WidgetBuilder::Layout> WidgetBuilder::makeLayout(LayoutType kind,
                                                                 QWidget* parent) const {
    switch (kind) {
    case Grid:
        return std::make_unique<GridLayout>(d_current, new QGridLayout(parent));
    case HBox:
        return std::make_unique<BoxLayout>(d_current, new QHBoxLayout(parent));
    case VBox:
        return std::make_unique<BoxLayout>(d_current, new QVBoxLayout(parent));
    }
    return nullptr;
}

void WidgetBuilder::push(LayoutType kind) {
    std::unique_ptr<Layout> opened = makeLayout(kind, d_root ? nullptr : d_parent);
    if (!opened) {
        CHECKF(d_root != nullptr);
        return;
    }
    Layout* const layout = opened.get();
    int margin = 0;
    if (!d_root) {
        d_root = std::move(opened);
        margin = kRootMargin;
    } else {
        d_current->addLayout(layout->layout());
        // Refused by a list that is broken, the layout is still the current one: it
        // must live on, owned by nobody.
        d_current->children().append(opened.release());
        d_current->setStretchFactor(layout->layout(), 0);
    }
    d_current = layout;
    layout->layout()->setContentsMargins(margin, margin, margin, margin);
    layout->layout()->setSpacing(kSpacing);
}

void WidgetBuilder::pop() {
    if (d_current != nullptr && d_current->parent() != nullptr)
        d_current = d_current->parent();
}

void WidgetBuilder::place(QWidget* widget) {
    if (CHECKF(d_current != nullptr))
        d_current->addWidget(widget, 0, {});
}

QLabel* WidgetBuilder::addLabel(const QString& text, Qt::Alignment alignment) {
    auto* const label = new QLabel(text, d_parent);
    label->setAlignment(alignment);
    return add(label);
}

QPushButton* WidgetBuilder::makePushButton(const QString& text, const QString& toolTip,
                                           const QObject* receiver, const char* slot) {
    auto* const button = new QPushButton(text, d_parent);
    if (!toolTip.isEmpty())
        button->setToolTip(toolTip);
    if (receiver != nullptr && slot != nullptr)
        connectClicked(button, receiver, slot, CORE_CHECK_HERE);
    return button;
}

QPushButton* WidgetBuilder::addPushButton(const QString& text, const QString& toolTip,
                                          const QObject* receiver, const char* slot) {
    return add(makePushButton(text, toolTip, receiver, slot));
}

QPushButton* WidgetBuilder::addOkCancel(const QObject* okReceiver, const char* okSlot,
                                        const QObject* cancelReceiver, const char* cancelSlot) {
    const auto orParent = [this](const QObject* receiver) -> const QObject* {
        return receiver != nullptr ? receiver : d_parent;
    };
    push(HBox);
    addStretch(0);
    QPushButton* const ok = addPushButton(tr("OK"), {}, orParent(okReceiver),
                                          okSlot != nullptr ? okSlot : SLOT(accept()));
    ok->setDefault(true);
    addPushButton(tr("Cancel"), {}, orParent(cancelReceiver),
                  cancelSlot != nullptr ? cancelSlot : SLOT(reject()));
    pop();
    return ok;
}

void WidgetBuilder::addStretch(int stretch) {
    if (d_current != nullptr)
        d_current->addStretch(stretch);
}

void WidgetBuilder::addSpacing(int size) {
    if (d_current != nullptr)
        d_current->addSpacing(size);
}

void WidgetBuilder::setColumnMinimumWidth(int width) {
    if (d_current != nullptr)
        d_current->setColumnMinimumWidth(width);
}

void WidgetBuilder::newRow() {
    if (d_current != nullptr)
        d_current->newRow();
}

void WidgetBuilder::skipColumn() {
    if (d_current != nullptr)
        d_current->skipColumn();
}

void WidgetBuilder::setColSpan(int span) {
    if (d_current != nullptr)
        d_current->setColSpan(span);
}

void WidgetBuilder::addWidget(QWidget* widget, int fromRow, int toRow, int fromCol, int toCol,
                              Qt::Alignment alignment) {
    if (d_current != nullptr)
        d_current->addWidget(widget, fromRow, toRow, fromCol, toCol, alignment);
}

void WidgetBuilder::addWidget(QWidget* widget, int fromCol, int toCol, Qt::Alignment alignment) {
    if (d_current != nullptr)
        d_current->addWidget(widget, fromCol, toCol, alignment);
}

} // namespace NS_QT
