#include "qt_infobutton.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

TEST(InfoButton, MayGoWhileItsMessageIsOpen) {
    constexpr int32_t unknown = -2; // like Information
    const QPointer<NS_QT::InfoButton> button = new NS_QT::InfoButton(unknown, "Title", "Text");
    button->setTitle("Other");
    EXPECT_EQ(button->accessibleName(), "Other");
    EXPECT_FALSE(button->icon().isNull());
    QTimer::singleShot(0, qApp, [&button] {
        const auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        EXPECT_EQ(box->icon(), QMessageBox::Information);
        delete button;
    });
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(button, nullptr);
}

} // namespace
