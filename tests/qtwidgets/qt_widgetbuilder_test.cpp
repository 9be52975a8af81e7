#include "qt_widgetbuilder.h"

#include "core_varargs.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"

#include <QBoxLayout>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaEnum>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using NS_QT::WidgetBuilder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kFailed = "CHECKF qt_widgetbuilder.cpp";

std::string nameOf(const QWidget& widget) {
    const QVariant text = widget.property("text");
    return (text.isValid() ? text.toString() : widget.objectName()).toStdString();
}

/// A layout's items as tests write them: "a (0,1)" in a grid, with " 2x3" for its spans, "a"
/// or "space 20" in a box, with " stretch 4"; alignments by Qt's names.
std::vector<std::string> contentsOf(QLayout* layout) {
    std::vector<std::string> items;
    for (int index = 0; index < layout->count(); ++index) {
        QLayoutItem* const item = layout->itemAt(index);
        std::string text = "layout";
        if (item->spacerItem() != nullptr)
            text = core::format("space %d", item->sizeHint().width());
        else if (item->widget() != nullptr)
            text = nameOf(*item->widget());
        if (auto* const grid = qobject_cast<QGridLayout*>(layout)) {
            int row = 0, col = 0, rows = 0, cols = 0;
            grid->getItemPosition(index, &row, &col, &rows, &cols);
            text += core::format(" (%d,%d)", row, col);
            text += rows * cols != 1 ? core::format(" %dx%d", rows, cols) : "";
        } else if (const int stretch = qobject_cast<QBoxLayout*>(layout)->stretch(index)) {
            text += core::format(" stretch %d", stretch);
        }
        if (const auto alignment = static_cast<int>(item->alignment()))
            text += ' ' + QMetaEnum::fromType<Qt::Alignment>().valueToKeys(alignment).toStdString();
        items.push_back(text);
    }
    return items;
}

class WidgetBuilderTest : public testing::Test {
protected:
    ~WidgetBuilderTest() override { EXPECT_THAT(checks.take(), IsEmpty()); }

    QWidget* widget(const char* name) {
        auto* const created = new QWidget(&dialog);
        created->setObjectName(name);
        return created;
    }
    void add(const char* name) { builder.add(widget(name)); }
    void addLayout(WidgetBuilder::LayoutType kind) {
        builder.push(kind);
        builder.pop();
    }
    WidgetBuilder::Layout& open() { return *builder.current(); }
    std::vector<std::string> contents() { return contentsOf(open().layout()); }

    test::CheckRecorder checks;
    QDialog dialog;
    WidgetBuilder builder{&dialog};
};

TEST_F(WidgetBuilderTest, GridsFillRowsColumnByColumn) {
    builder.push(WidgetBuilder::Grid);
    add("a");
    builder.skipColumn();
    builder.setColSpan(100);
    add("b");
    add("c");
    builder.newRow();
    addLayout(WidgetBuilder::HBox);
    builder.addWidget(widget("in row"), 4, 6);
    builder.addWidget(widget("rest of row"), 3, -1, Qt::AlignTop);
    builder.addWidget(widget("block"), 3, 5, 1, 3, Qt::AlignBottom);
    builder.addWidget(widget("to the ends"), 2, -1, 0, -1);
    add("d");
    open().addRowWidget(widget("leaves the row"), {});
    open().addRowWidget(widget("uses the row"), Qt::AlignTop);
    for (const int outside : {0, 101}) {
        builder.setColSpan(2);
        builder.setColSpan(outside);
        EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
        add("e");
    }
    EXPECT_THAT(contents(), ElementsAre("a (0,0)", "b (0,2) 1x100", "c (0,102)", "layout (1,0)",
                                        "in row (1,4) 1x3", "rest of row (1,3) 1x100 AlignTop",
                                        "block (3,1) 3x3 AlignBottom", "to the ends (2,0) 4x103",
                                        "d (1,1)", "leaves the row (2,0) 1x103",
                                        "uses the row (3,0) 1x103 AlignTop", "e (4,0)", "e (4,1)"));
}

TEST_F(WidgetBuilderTest, StretchAndSpacingUseUpAColumn) {
    builder.push(WidgetBuilder::Grid);
    auto* const grid = qobject_cast<QGridLayout*>(open().layout());
    grid->setColumnStretch(4, 7);
    builder.addStretch(4);
    builder.addSpacing(30);
    builder.setColumnMinimumWidth(70);
    add("a");
    open().addWidget(widget("b"), 5, {});
    open().addWidget(widget("c"), 0, {});
    EXPECT_THAT(contents(), ElementsAre("a (0,2)", "b (0,3)", "c (0,4)"));
    std::string columns;
    for (int col = 0; col < 5; ++col)
        columns += core::format("%d:%d ", grid->columnStretch(col), grid->columnMinimumWidth(col));
    EXPECT_EQ(columns, "4:0 0:30 0:70 5:0 7:0 ");
}

TEST_F(WidgetBuilderTest, BoxesKeepTheOrderAndKnowNoCells) {
    for (const bool isOpen : {false, true}) {
        if (isOpen)
            builder.push(WidgetBuilder::HBox);
        builder.newRow();
        builder.skipColumn();
        builder.setColumnMinimumWidth(70);
        builder.addStretch(4);
        builder.addSpacing(20);
        builder.addWidget(widget("a"), 7, 8, 7, 8, Qt::AlignTop);
        builder.addWidget(widget("b"), 0, 5, Qt::AlignBottom);
        EXPECT_THAT(checks.takeSites(), IsEmpty());
        builder.setColSpan(2);
        EXPECT_EQ(checks.takeSites().size(), isOpen ? 1U : 0U);
        EXPECT_EQ(builder.addLabel("c", Qt::AlignRight)->alignment(), Qt::AlignRight);
        EXPECT_EQ(checks.takeSites().size(), isOpen ? 0U : 1U);
    }
    open().addRowWidget(widget("d"), Qt::AlignVCenter);
    open().addWidget(widget("e"), 3, {});
    addLayout(WidgetBuilder::Grid);
    open().addLayout(new QHBoxLayout);
    EXPECT_THAT(contents(),
                ElementsAre("space 0 stretch 4", "space 20", "a AlignTop", "b AlignBottom", "c",
                            "d AlignVCenter", "e stretch 3", "layout", "layout"));
}

TEST_F(WidgetBuilderTest, OnlyTheFirstLayoutHasMargins) {
    const std::string classes[] = {"QGridLayout", "QHBoxLayout", "QVBoxLayout"};
    for (const auto kind : {WidgetBuilder::Grid, WidgetBuilder::HBox, WidgetBuilder::VBox}) {
        QWidget parent;
        WidgetBuilder nested(&parent);
        for (const int margin : {10, 0, 0}) {
            nested.push(kind);
            const QLayout* const layout = nested.current()->layout();
            EXPECT_EQ(layout->metaObject()->className(), classes[kind]);
            EXPECT_EQ(layout->contentsMargins(), QMargins(margin, margin, margin, margin));
            EXPECT_EQ(layout->spacing(), 5);
        }
    }
}

TEST_F(WidgetBuilderTest, ScopesOpenAndCloseUpToTheRoot) {
    constexpr int32_t unknown = 3;
    builder.pop();
    builder.push(unknown);
    EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
    EXPECT_EQ(builder.current(), nullptr);
    {
        const NS_QT::VBoxScope column(builder);
        const NS_QT::HBoxScope row(builder);
        builder.push(unknown);
        addLayout(WidgetBuilder::Grid);
        EXPECT_THAT(contents(), ElementsAre("layout"));
        EXPECT_EQ(open().children().count(), 1U);
    }
    EXPECT_EQ(open().layout(), dialog.layout()) << "popped, but still open";
    EXPECT_THAT(contents(), ElementsAre("layout"));
}

TEST_F(WidgetBuilderTest, ButtonsCallTheSlotOfBothReceiverAndSlot) {
    builder.push(WidgetBuilder::HBox);
    test::LogRecorder log{core::kChannelCrit};
    QLineEdit edit("text");
    builder.makePushButton("a", {}, &edit, nullptr)->click();
    builder.makePushButton("b", {}, nullptr, SLOT(clear()))->click();
    EXPECT_EQ(edit.text(), "text");
    EXPECT_THAT(contents(), IsEmpty()) << "made, but not placed";
    QPushButton* const placed = builder.addPushButton("c", "Tip", &edit, SLOT(clear()));
    placed->click();
    EXPECT_EQ(edit.text(), "");
    EXPECT_EQ(placed->toolTip(), "Tip");
    EXPECT_THAT(log.take(), IsEmpty());
    builder.addPushButton("d", {}, &edit, SLOT(nope()));
    EXPECT_THAT(contents(), ElementsAre("c", "d"));
    EXPECT_THAT(log.take(),
                ElementsAre(HasSubstr("CRIT QT::WidgetBuilder::makePushButton - QObject:connect("
                                      "2clicked(),1nope()) failed at qt_widgetbuilder.cpp:")));
}

TEST_F(WidgetBuilderTest, OkAndCancelAreATrailingRowThatEndsTheDialog) {
    builder.push(WidgetBuilder::VBox);
    auto* const edit = builder.add(new QLineEdit(&dialog));
    QPushButton* const ok = builder.addOkCancel();
    QLayout* const row = dialog.layout()->itemAt(1)->layout();
    EXPECT_THAT(contentsOf(row), ElementsAre("space 0", "OK", "Cancel"));
    EXPECT_NE(row->expandingDirections() & Qt::Horizontal, 0);
    EXPECT_EQ(row->itemAt(1)->widget(), ok);
    EXPECT_TRUE(ok->isDefault());
    const auto result = [&](QWidget* pressed, Qt::Key key) {
        dialog.show();
        QTest::keyClick(pressed, key);
        return dialog.isVisible() ? -1 : dialog.result();
    };
    EXPECT_EQ(result(edit, Qt::Key_Return), QDialog::Accepted);
    EXPECT_EQ(result(row->itemAt(2)->widget(), Qt::Key_Space), QDialog::Rejected);
}

} // namespace
