#include "configure.h"

#include "cutl_environment.h"
#include "temp_folder.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <optional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The tool's dialog, as its operator uses it.
struct Window {
    explicit Window(QDialog* shown)
        : dialog(shown),
          address(shown->findChildren<QLineEdit*>().value(0)),
          port(shown->findChildren<QLineEdit*>().value(1)),
          ok(shown->findChildren<QPushButton*>().value(0)),
          cancel(shown->findChildren<QPushButton*>().value(1)) {}

    QDialog* const dialog;
    QLineEdit* const address;
    QLineEdit* const port;
    QPushButton* const ok;
    QPushButton* const cancel;
};

/// Its name for screen readers.
QString nameOf(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

class Configure : public testing::Test {
protected:
    Configure() : d_systemLookup(cutl::setCommonDataLookup(&lookUp)) { s_base = folder.path(); }
    ~Configure() override {
        cutl::setCommonDataLookup(d_systemLookup);
        EXPECT_THAT(checks.take(), IsEmpty());
    }

    /// Runs the tool; once its dialog is open, calls `operate` and then presses Enter.
    static void run(const std::function<void(const Window&)>& operate) {
        // There is no event loop yet; the call is queued until the tool runs one.
        QTimer atDialog;
        atDialog.setSingleShot(true);
        bool closed = false;
        QObject::connect(&atDialog, &QTimer::timeout, [&] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            if (QTest::qWaitForWindowActive(dialog)) {
                operate(Window(dialog));
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                closed = !dialog->isVisible();
            }
            if (!closed)
                dialog->reject();
        });
        QMetaObject::invokeMethod(&atDialog, "start", Qt::QueuedConnection);
        char name[] = "configure";
        char* argv[] = {name, nullptr};
        EXPECT_EQ(configure::main(1, argv), 0);
        EXPECT_TRUE(closed) << "Enter did not";
    }

    test::CheckRecorder checks;
    test::TempFolder folder;

private:
    static std::optional<std::string> lookUp() { return s_base; }

    inline static std::string s_base;
    cutl::CommonDataLookup d_systemLookup;
};

TEST_F(Configure, ShowsWhatIsStoredAndStoresAndLogsWhatWasEntered) {
    test::LogRecorder log{core::kChannelNorm};
    const std::string settings = folder / "Quorvane/Orvistrand/Settings";
    std::filesystem::create_directories(folder / "Quorvane/Orvistrand");
    test::writeFile(settings, "Note 1\n[NVR]\nPort=80\nAddress \"Süd 1\"\n[Other]\n");
    run([](const Window& window) {
        EXPECT_EQ(nameOf(window.address), "NVR IP");
        EXPECT_EQ(window.address->text(), "Süd 1");
        EXPECT_EQ(nameOf(window.port), "Port");
        EXPECT_EQ(window.port->text(), "80");
        window.address->setText("Tür→北 7");
        window.port->setText("٨٠");
    });
    EXPECT_EQ(test::readFile(settings), "[NVR]\nAddress \"Tür→北 7\"\nPort ٨٠\n");
    EXPECT_THAT(log.take(), ElementsAre("NORM NVR connection changed from 'Süd 1:80' to "
                                        "'Tür→北 7٨٠'"));
}

TEST_F(Configure, LeavesTheFileAloneWhateverItHolds) {
    const std::string settings = folder / "Quorvane/Orvistrand/Settings";
    std::filesystem::create_directories(folder / "Quorvane/Orvistrand");
    const std::string content = "[NVR]\nAddress=\xEF\xBB\xBF" + std::string(1000000, 'x') + "\n";
    test::writeFile(settings, content);
    run([](const Window& window) { QTest::keyClicks(window.port, "8\b"); });
    EXPECT_EQ(test::readFile(settings), content);
}

TEST_F(Configure, GrowsBetweenTheFieldsAndTheTrailingButtons) {
    run([](const Window& window) {
        window.dialog->resize(window.dialog->sizeHint() + QSize(200, 100));
        window.dialog->layout()->activate();
        const QRect inside = window.dialog->layout()->contentsRect();
        const QRect label = window.dialog->findChild<QLabel*>()->geometry();
        const QRect address = window.address->geometry(), port = window.port->geometry();
        const QRect ok = window.ok->geometry(), cancel = window.cancel->geometry();
        EXPECT_LT(label.right(), address.left());
        EXPECT_EQ(label.center().y(), address.center().y());
        EXPECT_EQ(address.left(), port.left());
        EXPECT_LT(address.right(), inside.right()) << "the rest stays free";
        EXPECT_GE(ok.top() - port.bottom(), 100 + 20);
        EXPECT_LT(ok.right(), cancel.left());
        EXPECT_EQ(cancel.bottomRight(), inside.bottomRight());
    });
}

} // namespace
