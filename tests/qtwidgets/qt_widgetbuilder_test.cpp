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

#include <gmock/gmock.h>

namespace {

using NS_QT::WidgetBuilder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kFailed = "CHECKF qt_widgetbuilder.cpp";

/// A layout's items as tests write them: "a (0,1)" in a grid, with " 2x3" for its spans, "a"
/// or "space 20" in a box, with " stretch 4"; alignments by Qt's names.
std::vector<std::string> contentsOf(QLayout* layout) {
    std::vector<std::string> items;
    for (int index = 0; index < layout->count(); ++index) {
        QLayoutItem* const item = layout->itemAt(index);
        std::string text = core::format("space %d", item->sizeHint().width());
        if (const QWidget* const widget = item->widget())
            text = widget->property("text").toString().toStdString();
        else if (item->layout() != nullptr)
            text = "layout";
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

struct WidgetBuilderTest : testing::Test {
    QWidget* widget(const char* name) { return new QLabel(name, &dialog); }
    WidgetBuilder::Layout& open() { return *builder.current(); }
    std::vector<std::string> contents() { return contentsOf(open().layout()); }
    void expectOpened(const char* className, int margin) {
        const QLayout* const layout = open().layout();
        EXPECT_STREQ(layout->metaObject()->className(), className);
        EXPECT_EQ(layout->contentsMargins(), QMargins(margin, margin, margin, margin));
        EXPECT_EQ(layout->spacing(), 5);
    }

    test::CheckRecorder checks;
    QDialog dialog;
    WidgetBuilder builder{&dialog};
};

TEST_F(WidgetBuilderTest, EachLayoutDoesItsPartOfEachCall) {
    const auto fill = [this] {
        builder.newRow();
        builder.skipColumn();
        builder.addStretch(4);
        builder.addSpacing(20);
        builder.setColumnMinimumWidth(70);
        builder.addWidget(widget("a"), 7, 8, 7, 9, Qt::AlignTop);
        builder.addWidget(widget("b"), 0, 5, Qt::AlignBottom);
        builder.setColSpan(2);
        builder.addLabel("c", Qt::AlignRight);
        return checks.takeSites();
    };
    EXPECT_THAT(fill(), ElementsAre(kFailed)) << "there is no layout for the label";
    builder.push(WidgetBuilder::HBox);
    EXPECT_THAT(fill(), ElementsAre(kFailed)) << "boxes know no spans";
    open().addRowWidget(widget("d"), Qt::AlignVCenter);
    open().addWidget(widget("e"), 3, {});
    builder.push(WidgetBuilder::Grid);
    EXPECT_THAT(fill(), IsEmpty());
    open().addLayout(new QHBoxLayout);
    open().addWidget(widget("d"), 5, {});
    EXPECT_THAT(contents(), ElementsAre("a (7,7) 2x3 AlignTop", "b (1,0) 1x6 AlignBottom",
                                        "c (1,3) 1x2", "layout (1,5)", "d (1,6)"));
    const auto* const grid = qobject_cast<QGridLayout*>(open().layout());
    std::string columns;
    for (int col = 1; col < 7; ++col)
        columns += core::format("%d:%d ", grid->columnStretch(col), grid->columnMinimumWidth(col));
    EXPECT_EQ(columns, "4:0 0:20 0:70 0:0 0:0 5:0 ");
    builder.pop();
    EXPECT_THAT(contents(),
                ElementsAre("space 0 stretch 4", "space 20", "a AlignTop", "b AlignBottom", "c",
                            "d AlignVCenter", "e stretch 3", "layout"));
}

TEST_F(WidgetBuilderTest, GridsPlaceWidgetsThatSpanCells) {
    builder.push(WidgetBuilder::Grid);
    builder.setColSpan(100);
    builder.add(widget("a"));
    builder.addWidget(widget("to the ends"), 2, -1, 0, -1);
    open().addRowWidget(widget("leaves the row"), {});
    open().addRowWidget(widget("uses the row"), Qt::AlignTop);
    for (const int outside : {0, 101}) {
        builder.setColSpan(2);
        builder.setColSpan(outside);
        EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
        builder.add(widget("b"));
    }
    EXPECT_THAT(contents(), ElementsAre("a (0,0) 1x100", "to the ends (2,0) 2x100",
                                        "leaves the row (1,0) 1x100",
                                        "uses the row (2,0) 1x100 AlignTop", "b (3,0)", "b (3,1)"));
}

TEST_F(WidgetBuilderTest, ScopesOpenAndCloseUpToTheRoot) {
    constexpr int32_t unknown = 3;
    builder.pop();
    builder.push(unknown);
    EXPECT_THAT(checks.takeSites(), ElementsAre(kFailed));
    {
        const NS_QT::VBoxScope column(builder);
        expectOpened("QVBoxLayout", 10);
        const NS_QT::GridScope cells(builder);
        expectOpened("QGridLayout", 0);
        const NS_QT::HBoxScope row(builder);
        builder.push(unknown);
        expectOpened("QHBoxLayout", 0);
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
    QPushButton* const placed = builder.addPushButton("c", "Tip", &edit, SLOT(clear()));
    EXPECT_EQ(placed->toolTip(), "Tip");
    placed->click();
    EXPECT_EQ(edit.text(), "");
    builder.addPushButton("d", {}, &edit, SLOT(nope()));
    EXPECT_THAT(contents(), ElementsAre("c", "d"));
    EXPECT_THAT(log.take(),
                ElementsAre(HasSubstr("CRIT QT::WidgetBuilder::makePushButton - QObject:connect("
                                      "2clicked(),1nope()) failed at qt_widgetbuilder.cpp:")));
}

TEST_F(WidgetBuilderTest, OkAndCancelAreATrailingRowThatEndsTheDialog) {
    builder.push(WidgetBuilder::VBox);
    EXPECT_TRUE(builder.addOkCancel()->isDefault());
    QLayout* const row = dialog.layout()->itemAt(0)->layout();
    EXPECT_THAT(contentsOf(row), ElementsAre("space 0", "OK", "Cancel"));
    for (const int result : {QDialog::Accepted, QDialog::Rejected}) {
        qobject_cast<QPushButton*>(row->itemAt(2 - result)->widget())->click();
        EXPECT_EQ(dialog.result(), result);
    }
}

} // namespace
