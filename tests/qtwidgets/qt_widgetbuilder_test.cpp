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
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr auto kFailed = "CHECKF qt_widgetbuilder.cpp";

std::string nameOf(QLayoutItem* item) {
    if (item->spacerItem() != nullptr)
        return "space " + std::to_string(item->sizeHint().width());
    return item->widget() != nullptr ? item->widget()->objectName().toStdString() : "layout";
}

/// Items as tests write them: "a (0,1)" in a grid, with " 2x3" for its spans, "a" or
/// "space 20" in a box, with " stretch 4"; alignments by Qt's names.
std::vector<std::string> contentsOf(QLayout* layout) {
    std::vector<std::string> items;
    for (int index = 0; index < layout->count(); ++index) {
        std::string text = nameOf(layout->itemAt(index));
        if (auto* const grid = qobject_cast<QGridLayout*>(layout)) {
            int row = 0, col = 0, rows = 0, cols = 0;
            grid->getItemPosition(index, &row, &col, &rows, &cols);
            text += core::format(" (%d,%d)", row, col);
            text += rows * cols != 1 ? core::format(" %dx%d", rows, cols) : "";
        } else if (const int stretch = qobject_cast<QBoxLayout*>(layout)->stretch(index)) {
            text += core::format(" stretch %d", stretch);
        }
        if (const auto alignment = static_cast<int>(layout->itemAt(index)->alignment()))
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
    QLayout* open() { return builder.current()->layout(); }
    std::vector<std::string> contents() { return contentsOf(open()); }

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
    builder.current()->addRowWidget(widget("leaves the row"), {});
    builder.current()->addRowWidget(widget("uses the row"), Qt::AlignTop);
    for (const int outside : {0, 101}) {
        builder.setColSpan(2);
        builder.setColSpan(outside);
        EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
        add("d");
    }
    EXPECT_THAT(contents(), ElementsAre("a (0,0)", "b (0,2) 1x100", "c (0,102)", "layout (1,0)",
                                        "leaves the row (2,0) 1x103",
                                        "uses the row (3,0) 1x103 AlignTop", "d (4,0)", "d (4,1)"));
}

TEST_F(WidgetBuilderTest, PositionedWidgetsLeaveTheCursorAlone) {
    builder.push(WidgetBuilder::Grid);
    builder.newRow();
    add("a");
    builder.addWidget(widget("block"), 3, 5, 1, 3, Qt::AlignBottom);
    builder.addWidget(widget("to the ends"), 2, -1, 0, -1);
    builder.addWidget(widget("in row"), 4, 6);
    builder.addWidget(widget("rest of row"), 3, -1, Qt::AlignTop);
    add("b");
    EXPECT_THAT(contents(),
                ElementsAre("a (1,0)", "block (3,1) 3x3 AlignBottom", "to the ends (2,0) 4x7",
                            "in row (1,4) 1x3", "rest of row (1,3) 1x4 AlignTop", "b (1,1)"));
}

TEST_F(WidgetBuilderTest, StretchAndSpacingUseUpAColumn) {
    builder.push(WidgetBuilder::Grid);
    auto* const grid = qobject_cast<QGridLayout*>(open());
    grid->setColumnStretch(4, 7);
    builder.addStretch(4);
    builder.addSpacing(30);
    builder.setColumnMinimumWidth(70);
    add("a");
    builder.current()->addWidget(widget("b"), 5, {});
    builder.current()->addWidget(widget("c"), 0, {});
    EXPECT_THAT(contents(), ElementsAre("a (0,2)", "b (0,3)", "c (0,4)"));
    std::vector<std::pair<int, int>> columns(5);
    for (int col = 0; col < 5; ++col)
        columns[col] = {grid->columnStretch(col), grid->columnMinimumWidth(col)};
    EXPECT_THAT(columns, ElementsAre(Pair(4, 0), Pair(0, 30), Pair(0, 70), Pair(5, 0), Pair(7, 0)));
}

TEST_F(WidgetBuilderTest, BoxesKeepTheOrderAndKnowNoCells) {
    builder.push(WidgetBuilder::HBox);
    builder.newRow();
    builder.skipColumn();
    builder.setColumnMinimumWidth(70);
    builder.addStretch(4);
    builder.addSpacing(20);
    builder.addWidget(widget("a"), 7, 8, 7, 8, Qt::AlignTop);
    builder.addWidget(widget("b"), 0, 5, Qt::AlignBottom);
    builder.current()->addRowWidget(widget("c"), Qt::AlignVCenter);
    builder.current()->addWidget(widget("d"), 3, {});
    addLayout(WidgetBuilder::Grid);
    EXPECT_THAT(contents(),
                ElementsAre("space 0 stretch 4", "space 20", "a AlignTop", "b AlignBottom",
                            "c AlignVCenter", "d stretch 3", "layout"));
    builder.setColSpan(2);
    EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
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
        EXPECT_EQ(builder.current()->children().count(), 1U);
    }
    EXPECT_EQ(open(), dialog.layout()) << "popped, but still open";
    EXPECT_THAT(contents(), ElementsAre("layout"));
}

TEST_F(WidgetBuilderTest, WithoutALayoutNothingIsPlaced) {
    auto* const edit = builder.add(new QLineEdit(&dialog));
    EXPECT_EQ(edit->parentWidget(), &dialog);
    EXPECT_EQ(builder.addLabel("Port", Qt::AlignRight)->alignment(), Qt::AlignRight);
    EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed, kFailed));
    builder.addStretch(1);
    builder.addSpacing(1);
    builder.setColumnMinimumWidth(1);
    builder.newRow();
    builder.skipColumn();
    builder.setColSpan(0);
    builder.addWidget(edit, 0, 0, 0, 0);
    builder.addWidget(edit, 0, 0);
    EXPECT_EQ(dialog.layout(), nullptr);
}

TEST_F(WidgetBuilderTest, ButtonsCallTheSlotOfBothReceiverAndSlot) {
    builder.push(WidgetBuilder::HBox);
    test::LogRecorder log{core::kChannelCrit};
    QLineEdit edit("text");
    builder.makePushButton("a", {}, &edit, nullptr)->click();
    builder.makePushButton("b", {}, nullptr, SLOT(clear()))->click();
    EXPECT_EQ(edit.text(), "text");
    EXPECT_EQ(open()->count(), 0) << "made, but not placed";
    QPushButton* const placed = builder.addPushButton("c", "Tip", &edit, SLOT(clear()));
    placed->click();
    EXPECT_EQ(edit.text(), "");
    EXPECT_EQ(placed->text(), "c");
    EXPECT_EQ(placed->toolTip(), "Tip");
    EXPECT_EQ(open()->indexOf(placed), 0);
    EXPECT_THAT(log.take(), IsEmpty());
    builder.addPushButton("d", {}, &edit, SLOT(nope()));
    EXPECT_EQ(open()->count(), 2);
    EXPECT_THAT(log.take(),
                ElementsAre(StartsWith("CRIT QT::WidgetBuilder::makePushButton - QObject:connect("
                                       "2clicked(),1nope()) failed at qt_widgetbuilder.cpp:")));
}

TEST_F(WidgetBuilderTest, OkAndCancelAreATrailingRowThatEndsTheDialog) {
    builder.push(WidgetBuilder::VBox);
    auto* const edit = builder.add(new QLineEdit(&dialog));
    QPushButton* const ok = builder.addOkCancel();
    EXPECT_EQ(open(), dialog.layout());
    QLayout* const row = dialog.layout()->itemAt(1)->layout();
    EXPECT_THAT(contentsOf(row), ElementsAre("space 0", "", ""));
    EXPECT_NE(row->expandingDirections() & Qt::Horizontal, 0);
    auto* const cancel = qobject_cast<QPushButton*>(row->itemAt(2)->widget());
    EXPECT_EQ(row->itemAt(1)->widget(), ok);
    EXPECT_EQ(ok->text(), "OK");
    EXPECT_TRUE(ok->isDefault());
    EXPECT_EQ(cancel->text(), "Cancel");

    dialog.show();
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    dialog.show();
    cancel->click();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

} // namespace
