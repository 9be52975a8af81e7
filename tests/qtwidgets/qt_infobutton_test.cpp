#include "qt_infobutton.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

using NS_QT::InfoButton;

// Does something with the message box once it is open.
template <typename Action>
void whenOpen(Action action) {
    QTimer::singleShot(0, qApp, [action] {
        action(qobject_cast<QMessageBox*>(QApplication::activeModalWidget()));
    });
}

TEST(InfoButton, ShowsItsMessage) {
    for (const int32_t kind : {1, 2, -2}) {
        InfoButton button(kind, "Title", "What it says");
        EXPECT_EQ(button.accessibleName(), "Title");
        EXPECT_FALSE(button.icon().isNull());
        bool shown = false;
        whenOpen([&](QMessageBox* box) {
            shown = true;
            EXPECT_EQ(box->icon(), kind == InfoButton::Warning ? QMessageBox::Warning
                                                               : QMessageBox::Information);
            EXPECT_EQ(box->text(), "What it says");
            EXPECT_EQ(box->windowTitle(), "Title");
            QTest::keyClick(box, Qt::Key_Return);
        });
        QTest::keyClick(&button, Qt::Key_Space);
        EXPECT_TRUE(shown);
    }
}

TEST(InfoButton, MayGoWhileItsMessageIsOpen) {
    const QPointer<InfoButton> button = new InfoButton(InfoButton::Warning, "Title", "Text");
    whenOpen([&button](QMessageBox*) { delete button; });
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(button, nullptr);
}

} // namespace
