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
#include <QStyle>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using NS_QT::WidgetBuilder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

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
    QLayout* open() { return builder.current()->layout(); }
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

class WidgetBuilderGrid : public WidgetBuilderTest {
protected:
    WidgetBuilderGrid() { builder.push(WidgetBuilder::Grid); }
    QGridLayout* grid() { return qobject_cast<QGridLayout*>(open()); }
};
using WidgetBuilderBox = WidgetBuilderTest;
using WidgetBuilderNesting = WidgetBuilderTest;
using WidgetBuilderButton = WidgetBuilderTest;
using WidgetBuilderOkCancel = WidgetBuilderTest;

TEST_F(WidgetBuilderGrid, FillsRowsColumnByColumn) {
    add("a");
    add("b");
    builder.skipColumn();
    add("c");
    builder.newRow();
    add("d");
    for (const auto kind : {WidgetBuilder::Grid, WidgetBuilder::HBox}) {
        builder.push(kind);
        builder.pop();
    }
    add("e");
    EXPECT_THAT(contents(), ElementsAre("a (0,0)", "b (0,1)", "c (0,3)", "d (1,0)", "layout (1,1)",
                                        "layout (1,2)", "e (1,3)"));
}

TEST_F(WidgetBuilderGrid, ColSpanIsOfTheNextWidgetOnly) {
    builder.setColSpan(3);
    add("a");
    add("b");
    builder.setColSpan(100);
    add("c");
    add("d");
    EXPECT_THAT(contents(), ElementsAre("a (0,0) 1x3", "b (0,3)", "c (0,4) 1x100", "d (0,104)"));
}

TEST_F(WidgetBuilderGrid, ColSpanOutOfRangeFallsBackToOne) {
    for (const int span : {0, -1, 101}) {
        builder.setColSpan(2);
        builder.setColSpan(span);
        expectFailedChecks(1);
        add("a");
    }
    const test::ScopedAssertionLevel silent(-1);
    builder.setColSpan(2);
    builder.setColSpan(0);
    add("b");
    EXPECT_THAT(contents(), ElementsAre("a (0,0)", "a (0,1)", "a (0,2)", "b (0,3)"));
}

TEST_F(WidgetBuilderGrid, RowWidgetSpansTheColumnsThereAre) {
    builder.setColSpan(3);
    add("a");
    builder.current()->addRowWidget(widget("leaves the row"), {});
    builder.current()->addRowWidget(widget("uses the row"), Qt::AlignTop);
    add("b");
    EXPECT_THAT(contents(), ElementsAre("a (0,0) 1x3", "leaves the row (1,0) 1x3",
                                        "uses the row (2,0) 1x3 AlignTop", "b (3,0)"));
}

TEST_F(WidgetBuilderGrid, PositionedWidgetsLeaveTheCursorAlone) {
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

TEST_F(WidgetBuilderGrid, StretchAndSpacingUseUpAColumn) {
    grid()->setColumnStretch(4, 7);
    builder.addStretch(4);
    builder.addSpacing(30);
    builder.setColumnMinimumWidth(70);
    add("a");
    builder.current()->addWidget(widget("b"), 5, {});
    builder.current()->addWidget(widget("c"), 0, {});
    EXPECT_THAT(contents(), ElementsAre("a (0,2)", "b (0,3)", "c (0,4)"));

    const int stretches[] = {4, 0, 0, 5, 7};
    const int widths[] = {0, 30, 70, 0, 0};
    for (int col = 0; col < 5; ++col) {
        EXPECT_EQ(grid()->columnStretch(col), stretches[col]) << col;
        EXPECT_EQ(grid()->columnMinimumWidth(col), widths[col]) << col;
    }
}

TEST_F(WidgetBuilderBox, KeepsTheOrderAndKnowsNoCells) {
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
    builder.push(WidgetBuilder::Grid);
    builder.pop();
    EXPECT_THAT(contents(),
                ElementsAre("a", "space 0 stretch 4", "space 20", "b AlignTop", "c AlignBottom",
                            "d AlignVCenter", "e stretch 3", "layout"));
    builder.setColSpan(2);
    expectFailedChecks(1);
}

TEST_F(WidgetBuilderNesting, EveryKindNestsInEveryKind) {
    const WidgetBuilder::LayoutType kinds[] = {WidgetBuilder::Grid, WidgetBuilder::HBox,
                                               WidgetBuilder::VBox};
    const char* const classes[] = {"QGridLayout", "QHBoxLayout", "QVBoxLayout"};
    for (const auto outer : kinds) {
        QWidget parent;
        WidgetBuilder nested(&parent);
        nested.push(outer);
        QLayout* const root = parent.layout();
        ASSERT_EQ(nested.current()->layout(), root);
        EXPECT_STREQ(root->metaObject()->className(), classes[outer]);
        EXPECT_EQ(root->contentsMargins(), QMargins(10, 10, 10, 10));
        EXPECT_EQ(root->spacing(), 5);
        for (const auto inner : kinds) {
            nested.push(inner);
            QLayout* const layout = nested.current()->layout();
            EXPECT_STREQ(layout->metaObject()->className(), classes[inner]);
            EXPECT_EQ(root->itemAt(inner)->layout(), layout);
            EXPECT_EQ(layout->contentsMargins(), QMargins(0, 0, 0, 0));
            EXPECT_EQ(layout->spacing(), 5);
            nested.pop();
        }
        EXPECT_EQ(nested.current()->children().count(), 3U);
    }
}

TEST_F(WidgetBuilderNesting, ScopesOpenAndCloseUpToTheRoot) {
    builder.pop();
    EXPECT_EQ(builder.current(), nullptr);
    {
        const NS_QT::VBoxScope column(builder);
        const NS_QT::HBoxScope row(builder);
        {
            const NS_QT::GridScope table(builder);
            EXPECT_STREQ(open()->metaObject()->className(), "QGridLayout");
        }
        EXPECT_STREQ(open()->metaObject()->className(), "QHBoxLayout");
    }
    EXPECT_EQ(open(), dialog.layout()) << "popped, but still open";
    builder.push(WidgetBuilder::HBox);
    EXPECT_THAT(contentsOf(dialog.layout()), ElementsAre("layout", "layout"));
}

TEST_F(WidgetBuilderNesting, UnknownKindIsIgnored) {
    const auto unknown = static_cast<WidgetBuilder::LayoutType>(3);
    builder.push(unknown);
    EXPECT_EQ(dialog.layout(), nullptr);
    builder.push(WidgetBuilder::VBox);
    builder.push(unknown);
    EXPECT_EQ(open(), dialog.layout());
    EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(WidgetBuilderNesting, WithoutALayoutNothingIsPlaced) {
    auto* const edit = new QLineEdit(&dialog);
    const QLineEdit* const same = builder.add(edit);
    EXPECT_EQ(same, edit);
    EXPECT_EQ(edit->parentWidget(), &dialog);
    EXPECT_NE(builder.addLabel("Port", {}), nullptr);
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

TEST_F(WidgetBuilderNesting, TheDialogOutlivesItsBuilder) {
    auto shortLived = std::make_unique<WidgetBuilder>(&dialog);
    shortLived->push(WidgetBuilder::VBox);
    shortLived->push(WidgetBuilder::Grid);
    QLabel* const label = shortLived->addLabel("Port", Qt::AlignRight | Qt::AlignBottom);
    shortLived.reset();
    ASSERT_THAT(contentsOf(dialog.layout()), ElementsAre("layout"));
    EXPECT_EQ(dialog.layout()->itemAt(0)->layout()->indexOf(label), 0);
    EXPECT_EQ(label->text(), "Port");
    EXPECT_EQ(label->alignment(), Qt::AlignRight | Qt::AlignBottom);
}

/// Reaches the links of a list of layouts, to break them.
struct BrokenList : core::GList<WidgetBuilder::Layout> {
    static auto& tailOf(GList& list) { return list.*&BrokenList::d_tail; }
};

TEST_F(WidgetBuilderNesting, BrokenChildListLosesTheWrapperOnly) {
    builder.push(WidgetBuilder::VBox);
    builder.push(WidgetBuilder::HBox);
    builder.pop();
    auto& children = builder.current()->children();
    auto* const tail = std::exchange(BrokenList::tailOf(children), nullptr);

    builder.push(WidgetBuilder::HBox);
    const std::unique_ptr<WidgetBuilder::Layout> lost(builder.current());
    const auto failed = checks.take();
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0].condition, "CHECKF");
    EXPECT_EQ(failed[0].file, "core_deprecated_glist.cpp");
    EXPECT_EQ(children.count(), 1U);
    EXPECT_EQ(dialog.layout()->itemAt(1)->layout(), lost->layout());
    add("a");
    EXPECT_THAT(contents(), ElementsAre("a")) << "it takes widgets like any other";

    builder.pop();
    EXPECT_EQ(open(), dialog.layout());
    BrokenList::tailOf(children) = tail;
}

TEST_F(WidgetBuilderButton, IsMadeOrAlsoPlaced) {
    builder.push(WidgetBuilder::HBox);
    const QPushButton* const made = builder.makePushButton("Made", {}, nullptr, nullptr);
    EXPECT_EQ(made->text(), "Made");
    EXPECT_EQ(made->parentWidget(), &dialog);
    EXPECT_TRUE(made->toolTip().isEmpty());
    EXPECT_THAT(contents(), IsEmpty());
    QPushButton* const placed = builder.addPushButton("Placed", "Tip", nullptr, nullptr);
    EXPECT_EQ(placed->toolTip(), "Tip");
    EXPECT_EQ(open()->indexOf(placed), 0);
}

TEST_F(WidgetBuilderButton, ClickCallsTheSlotOfBothReceiverAndSlot) {
    test::LogRecorder log{core::kChannelCrit};
    QLineEdit edit("text");
    QTest::mouseClick(builder.makePushButton("a", {}, &edit, nullptr), Qt::LeftButton);
    QTest::mouseClick(builder.makePushButton("b", {}, nullptr, SLOT(clear())), Qt::LeftButton);
    EXPECT_EQ(edit.text(), "text");
    QTest::mouseClick(builder.makePushButton("c", {}, &edit, SLOT(clear())), Qt::LeftButton);
    EXPECT_EQ(edit.text(), "");
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(WidgetBuilderButton, RefusedConnectionIsLoggedOnCritWithItsLine) {
    builder.push(WidgetBuilder::HBox);
    test::LogRecorder log{core::kChannelCrit};
    const auto addRefused = [&] { builder.addPushButton("Go", {}, &dialog, SLOT(nope())); };
    const std::string echoed = test::captureStdout(addRefused);
    EXPECT_EQ(open()->count(), 1);
    EXPECT_THAT(log.take(),
                ElementsAre(MatchesRegex("CRIT QT::WidgetBuilder::makePushButton - "
                                         "QObject:connect\\(2clicked\\(\\),1nope\\(\\)\\) failed "
                                         "at qt_widgetbuilder\\.cpp:[1-9][0-9]*")));
    EXPECT_THAT(echoed, testing::StartsWith("[CRIT] QT::WidgetBuilder::makePushButton - "));

    core::MasterLogger::setChannelEnabled(core::kChannelCrit, false);
    addRefused();
    core::MasterLogger::setChannelEnabled(core::kChannelCrit, true);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(WidgetBuilderOkCancel, IsATrailingRowWithOkAsDefault) {
    builder.push(WidgetBuilder::VBox);
    QPushButton* const ok = builder.addOkCancel();
    ok->setObjectName("ok");
    EXPECT_EQ(open(), dialog.layout());
    QLayout* const row = dialog.layout()->itemAt(0)->layout();
    EXPECT_THAT(contentsOf(row), ElementsAre("space 0", "ok", ""));
    EXPECT_NE(row->expandingDirections() & Qt::Horizontal, 0);
    const auto* const cancel = qobject_cast<QPushButton*>(row->itemAt(2)->widget());
    EXPECT_EQ(ok->text(), "OK");
    EXPECT_EQ(cancel->text(), "Cancel");
    EXPECT_TRUE(ok->isDefault());
    EXPECT_FALSE(cancel->isDefault());
    EXPECT_TRUE(ok->toolTip().isEmpty());
}

TEST_F(WidgetBuilderOkCancel, ByDefaultCallsTheParentsAcceptAndReject) {
    builder.push(WidgetBuilder::VBox);
    auto* const edit = builder.add(new QLineEdit(&dialog));
    QPushButton* const ok = builder.addOkCancel();
    auto* const cancel = dialog.findChildren<QPushButton*>().last();
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

TEST_F(WidgetBuilderOkCancel, CallsGivenSlotsOfGivenReceivers) {
    QLineEdit okEdit("ok");
    QLineEdit cancelEdit("cancel");
    builder.push(WidgetBuilder::VBox);
    QPushButton* const ok =
        builder.addOkCancel(&okEdit, SLOT(clear()), &cancelEdit, SLOT(selectAll()));
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_EQ(okEdit.text(), "");
    QTest::mouseClick(dialog.findChildren<QPushButton*>().last(), Qt::LeftButton);
    EXPECT_EQ(cancelEdit.selectedText(), "cancel");
}

class WidgetBuilderDirection : public WidgetBuilderTest,
                               public testing::WithParamInterface<Qt::LayoutDirection> {};

TEST_P(WidgetBuilderDirection, RowsRunInReadingOrder) {
    dialog.setLayoutDirection(GetParam());
    builder.push(WidgetBuilder::VBox);
    builder.push(WidgetBuilder::Grid);
    const QWidget* const label = builder.addLabel("Port", Qt::AlignLeft);
    const QWidget* const edit = builder.add(new QLineEdit(&dialog));
    builder.pop();
    const QWidget* const ok = builder.addOkCancel();
    const QWidget* const cancel = dialog.findChildren<QPushButton*>().last();
    dialog.resize(dialog.sizeHint() + QSize(200, 0));
    dialog.show();

    // In reading order, from the leading edge: a right-to-left dialog is its mirror image.
    const auto span = [this](const QRect& shown) {
        const QRect read = QStyle::visualRect(GetParam(), dialog.rect(), shown);
        return std::pair{read.left(), read.right()};
    };
    EXPECT_LT(span(label->geometry()).second, span(edit->geometry()).first);
    EXPECT_LT(span(ok->geometry()).second, span(cancel->geometry()).first);
    EXPECT_EQ(span(cancel->geometry()).second, span(dialog.layout()->contentsRect()).second);
}

INSTANTIATE_TEST_SUITE_P(Both, WidgetBuilderDirection,
                         testing::Values(Qt::LeftToRight, Qt::RightToLeft),
                         [](const auto& direction) {
                             return direction.param == Qt::LeftToRight ? "LeftToRight"
                                                                       : "RightToLeft";
                         });

} // namespace
