#include "qt_widgetbuilder.h"

#include "check_recorder.h"
#include "core_varargs.h"
#include "log_recorder.h"
#include "output_capture.h"

#include <QBoxLayout>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaEnum>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using NS_QT::WidgetBuilder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

std::string nameOf(QLayoutItem* item) {
    if (item->spacerItem() != nullptr)
        return "space " + std::to_string(item->sizeHint().width());
    return item->widget() != nullptr ? item->widget()->objectName().toStdString() : "layout";
}

/// An item as tests write it: "a (0,1)" in a grid, with " 2x3" for its spans, "a" or
/// "space 20" in a box, with " stretch 4"; alignments by Qt's names.
std::string describe(QLayout* layout, int index) {
    QLayoutItem* const item = layout->itemAt(index);
    std::string text = nameOf(item);
    if (auto* const grid = qobject_cast<QGridLayout*>(layout)) {
        int row = 0, col = 0, rows = 0, cols = 0;
        grid->getItemPosition(index, &row, &col, &rows, &cols);
        text += core::format(" (%d,%d)", row, col);
        if (rows != 1 || cols != 1)
            text += core::format(" %dx%d", rows, cols);
    } else if (const int stretch = qobject_cast<QBoxLayout*>(layout)->stretch(index)) {
        text += core::format(" stretch %d", stretch);
    }
    const auto alignment = static_cast<int>(item->alignment());
    if (alignment != 0)
        text += ' ' + QMetaEnum::fromType<Qt::Alignment>().valueToKeys(alignment).toStdString();
    return text;
}

std::vector<std::string> contentsOf(QLayout* layout) {
    std::vector<std::string> items;
    items.reserve(static_cast<size_t>(layout->count()));
    for (int i = 0; i < layout->count(); ++i)
        items.push_back(describe(layout, i));
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
    std::string openClass() { return open()->metaObject()->className(); }
    std::vector<std::string> contents() { return contentsOf(open()); }

    /// That so many checks of the builder have failed since the last time, and no others.
    void expectFailedChecks(size_t count) {
        const auto failed = checks.take();
        EXPECT_EQ(failed.size(), count);
        for (const test::FailedCheck& check : failed) {
            EXPECT_GT(check.line, 0);
            EXPECT_EQ(check,
                      (test::FailedCheck{"CHECKF", "qt_widgetbuilder.cpp", check.line, 0, ""}));
        }
    }

    test::CheckRecorder checks;
    QDialog dialog;
    WidgetBuilder builder{&dialog};
};

TEST_F(WidgetBuilderTest, GridsFillRowsColumnByColumn) {
    builder.push(WidgetBuilder::Grid);
    add("a");
    add("b");
    builder.skipColumn();
    add("c");
    builder.newRow();
    builder.setColSpan(3);
    add("d");
    addLayout(WidgetBuilder::Grid);
    addLayout(WidgetBuilder::HBox);
    builder.setColSpan(100);
    add("e");
    add("f");
    EXPECT_THAT(contents(),
                ElementsAre("a (0,0)", "b (0,1)", "c (0,3)", "d (1,0) 1x3", "layout (1,3)",
                            "layout (1,4)", "e (1,5) 1x100", "f (1,105)"));
}

TEST_F(WidgetBuilderTest, ColSpanOutOfRangeFallsBackToOne) {
    builder.push(WidgetBuilder::Grid);
    for (const int span : {0, -1, 101}) {
        builder.setColSpan(2);
        builder.setColSpan(span);
        expectFailedChecks(1);
        add("a");
    }
    builder.current()->addRowWidget(widget("leaves the row"), {});
    builder.current()->addRowWidget(widget("uses the row"), Qt::AlignTop);
    add("b");
    EXPECT_THAT(contents(), ElementsAre("a (0,0)", "a (0,1)", "a (0,2)", "leaves the row (1,0) 1x3",
                                        "uses the row (2,0) 1x3 AlignTop", "b (3,0)"));
}

TEST_F(WidgetBuilderTest, PositionedWidgetsLeaveTheCursorAlone) {
    builder.push(WidgetBuilder::Grid);
    add("a");
    builder.newRow();
    add("b");
    builder.addWidget(widget("block"), 3, 5, 1, 3, Qt::AlignBottom);
    builder.addWidget(widget("to last row"), 2, -1, 0, 1);
    builder.addWidget(widget("to last column"), 4, 4, 2, -1);
    builder.addWidget(widget("in row"), 4, 6);
    builder.addWidget(widget("rest of row"), 3, -1, Qt::AlignTop);
    add("c");
    EXPECT_THAT(contents(),
                ElementsAre("a (0,0)", "b (1,0)", "block (3,1) 3x3 AlignBottom",
                            "to last row (2,0) 4x2", "to last column (4,2) 1x5", "in row (1,4) 1x3",
                            "rest of row (1,3) 1x4 AlignTop", "c (1,1)"));
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
    add("a");
    builder.newRow();
    builder.skipColumn();
    builder.setColumnMinimumWidth(70);
    builder.addStretch(4);
    builder.addSpacing(20);
    builder.addWidget(widget("b"), 7, 8, 7, 8, Qt::AlignTop);
    builder.addWidget(widget("c"), 0, 5, Qt::AlignBottom);
    builder.current()->addRowWidget(widget("d"), Qt::AlignVCenter);
    builder.current()->addWidget(widget("e"), 3, {});
    addLayout(WidgetBuilder::Grid);
    EXPECT_THAT(contents(),
                ElementsAre("a", "space 0 stretch 4", "space 20", "b AlignTop", "c AlignBottom",
                            "d AlignVCenter", "e stretch 3", "layout"));
    builder.setColSpan(2);
    expectFailedChecks(1);
}

TEST_F(WidgetBuilderTest, EveryKindNestsInEveryKind) {
    const std::string classes[] = {"QGridLayout", "QHBoxLayout", "QVBoxLayout"};
    const auto kinds = {WidgetBuilder::Grid, WidgetBuilder::HBox, WidgetBuilder::VBox};
    for (const auto outer : kinds) {
        QWidget parent;
        WidgetBuilder nested(&parent);
        nested.push(outer);
        QLayout* const root = parent.layout();
        EXPECT_EQ(root->metaObject()->className(), classes[outer]);
        EXPECT_EQ(root->contentsMargins(), QMargins(10, 10, 10, 10));
        EXPECT_EQ(root->spacing(), 5);
        for (const auto inner : kinds) {
            nested.push(inner);
            QLayout* const layout = nested.current()->layout();
            EXPECT_EQ(layout->metaObject()->className(), classes[inner]);
            EXPECT_EQ(root->itemAt(inner)->layout(), layout);
            EXPECT_EQ(layout->contentsMargins(), QMargins(0, 0, 0, 0));
            EXPECT_EQ(layout->spacing(), 5);
            nested.pop();
        }
        EXPECT_EQ(nested.current()->layout(), root);
        EXPECT_EQ(nested.current()->children().count(), 3U);
    }
}

TEST_F(WidgetBuilderTest, ScopesOpenAndCloseUpToTheRoot) {
    const auto unknown = static_cast<WidgetBuilder::LayoutType>(3);
    builder.pop();
    builder.push(unknown);
    EXPECT_EQ(builder.current(), nullptr);
    {
        const NS_QT::VBoxScope column(builder);
        const NS_QT::HBoxScope row(builder);
        {
            const NS_QT::GridScope table(builder);
            EXPECT_EQ(openClass(), "QGridLayout");
        }
        EXPECT_EQ(openClass(), "QHBoxLayout");
    }
    EXPECT_EQ(open(), dialog.layout()) << "popped, but still open";
    builder.push(unknown);
    builder.push(WidgetBuilder::HBox);
    EXPECT_THAT(contentsOf(dialog.layout()), ElementsAre("layout", "layout"));
}

TEST_F(WidgetBuilderTest, WithoutALayoutNothingIsPlaced) {
    auto* const edit = new QLineEdit(&dialog);
    const QLineEdit* const same = builder.add(edit);
    EXPECT_EQ(same, edit);
    EXPECT_EQ(edit->parentWidget(), &dialog);
    const QLabel* const label = builder.addLabel("Port", Qt::AlignRight | Qt::AlignBottom);
    EXPECT_EQ(label->text(), "Port");
    EXPECT_EQ(label->alignment(), Qt::AlignRight | Qt::AlignBottom);
    EXPECT_NE(builder.addPushButton("Go", {}, nullptr, nullptr), nullptr);
    expectFailedChecks(3);

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
    QTest::mouseClick(builder.makePushButton("a", {}, &edit, nullptr), Qt::LeftButton);
    QTest::mouseClick(builder.makePushButton("b", {}, nullptr, SLOT(clear())), Qt::LeftButton);
    EXPECT_EQ(edit.text(), "text");
    EXPECT_EQ(open()->count(), 0) << "made, but not placed";
    QPushButton* const placed = builder.addPushButton("c", "Tip", &edit, SLOT(clear()));
    QTest::mouseClick(placed, Qt::LeftButton);
    EXPECT_EQ(edit.text(), "");
    EXPECT_EQ(placed->text(), "c");
    EXPECT_EQ(placed->toolTip(), "Tip");
    EXPECT_EQ(placed->parentWidget(), &dialog);
    EXPECT_EQ(open()->indexOf(placed), 0);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(WidgetBuilderTest, RefusedConnectionIsLoggedOnCritWithItsLine) {
    builder.push(WidgetBuilder::HBox);
    test::LogRecorder log{core::kChannelCrit};
    const auto addRefused = [&] { builder.addPushButton("Go", {}, &dialog, SLOT(nope())); };
    const std::string echoed = test::captureOutput(addRefused).out;
    EXPECT_EQ(open()->count(), 1);
    const std::vector<std::string> lines = log.take();
    const std::string text = "CRIT QT::WidgetBuilder::makePushButton - "
                             "QObject:connect(2clicked(),1nope()) failed at qt_widgetbuilder.cpp:";
    ASSERT_THAT(lines, ElementsAre(StartsWith(text)));
    EXPECT_GT(std::stoi(lines[0].substr(text.size())), 0);
    EXPECT_THAT(echoed, StartsWith("[CRIT] QT::WidgetBuilder::makePushButton - "));

    core::MasterLogger::setChannelEnabled(core::kChannelCrit, false);
    addRefused();
    core::MasterLogger::setChannelEnabled(core::kChannelCrit, true);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(WidgetBuilderTest, OkAndCancelAreATrailingRowThatEndsTheDialog) {
    builder.push(WidgetBuilder::VBox);
    auto* const edit = builder.add(new QLineEdit(&dialog));
    QPushButton* const ok = builder.addOkCancel();
    QLayout* const row = dialog.layout()->itemAt(1)->layout();
    EXPECT_EQ(open(), dialog.layout());
    EXPECT_THAT(contentsOf(row), ElementsAre("space 0", "", ""));
    EXPECT_NE(row->expandingDirections() & Qt::Horizontal, 0);
    auto* const cancel = qobject_cast<QPushButton*>(row->itemAt(2)->widget());
    EXPECT_EQ(row->itemAt(1)->widget(), ok);
    EXPECT_EQ(ok->text(), "OK");
    EXPECT_EQ(cancel->text(), "Cancel");
    EXPECT_TRUE(ok->isDefault());
    EXPECT_FALSE(cancel->isDefault());

    QSignalSpy finished(&dialog, &QDialog::finished);
    const auto result = [&](const auto& input) {
        dialog.show();
        input();
        return finished.count() == 1 ? finished.takeFirst().at(0).toInt() : -1;
    };
    EXPECT_EQ(result([&] { QTest::keyClick(edit, Qt::Key_Return); }), QDialog::Accepted);
    EXPECT_EQ(result([&] { QTest::keyClick(edit, Qt::Key_Escape); }), QDialog::Rejected);
    EXPECT_EQ(result([&] { QTest::mouseClick(ok, Qt::LeftButton); }), QDialog::Accepted);
    EXPECT_EQ(result([&] { QTest::mouseClick(cancel, Qt::LeftButton); }), QDialog::Rejected);
}

TEST_F(WidgetBuilderTest, OkAndCancelCallGivenSlotsOfGivenReceivers) {
    QLineEdit first("first"), second("second");
    builder.push(WidgetBuilder::VBox);
    auto* const ok = builder.addOkCancel(&first, SLOT(clear()), &second, SLOT(selectAll()));
    QTest::mouseClick(ok, Qt::LeftButton);
    QTest::mouseClick(dialog.findChildren<QPushButton*>().last(), Qt::LeftButton);
    EXPECT_EQ(first.text(), "");
    EXPECT_EQ(second.selectedText(), "second");
}

} // namespace
