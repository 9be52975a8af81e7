#include "configure.h"

#include "check_recorder.h"
#include "core_paths.h"
#include "cutl_environment.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTest>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <optional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The tool's dialog in the hands of its operator.
struct Window {
    explicit Window(QDialog* shown)
        : dialog(shown),
          address(shown->findChildren<QLineEdit*>().value(0)),
          port(shown->findChildren<QLineEdit*>().value(1)),
          ok(shown->findChildren<QPushButton*>().value(0)),
          cancel(shown->findChildren<QPushButton*>().value(1)) {}

    /// Types over what the field holds.
    static void fill(QLineEdit* field, const QString& text) {
        QTest::keySequence(field, QKeySequence::SelectAll);
        QTest::keyClick(field, Qt::Key_Delete);
        for (const QChar ch : text)
            QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, ch, Qt::NoModifier);
    }

    QDialog* const dialog;
    QLineEdit* const address;
    QLineEdit* const port;
    QPushButton* const ok;
    QPushButton* const cancel;
};

/// What screen readers call it.
QString nameOf(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

class Configure : public testing::Test {
protected:
    Configure() : d_systemLookup(cutl::setCommonDataLookup(&lookUp)) { base = d_folder.path(); }
    ~Configure() override {
        cutl::setCommonDataLookup(d_systemLookup);
        EXPECT_THAT(checks.take(), IsEmpty());
    }

    /// Runs the tool with `operate` in front of its dialog, and Enter after that.
    static void run(const std::function<void(const Window&)>& operate,
                    int (*start)(int, char**) = &configure::main) {
        // There is no event loop yet: the call waits until the tool has one.
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
        EXPECT_EQ(start(1, argv), 0);
        EXPECT_TRUE(closed) << "Enter did not";
    }

    std::string vendorFolder() const { return d_folder / "Quorvane"; }
    std::string settingsFolder() const { return vendorFolder() + "/Orvistrand"; }
    std::string settingsPath() const { return settingsFolder() + "/Settings"; }

    static std::optional<std::string> lookUp() { return base; }
    inline static std::optional<std::string> base;

    test::CheckRecorder checks;

private:
    test::TempFolder d_folder;
    cutl::CommonDataLookup d_systemLookup;
};

TEST_F(Configure, ShowsWhatIsStoredAndStoresAndLogsWhatWasTyped) {
    const struct {
        const char* address;
        const char* port;
        const char* content;
        const char* logged;
    } rows[] = {
        {"", "", "[NVR]\nAddress \nPort \n", "''"},
        {"Tür→北 7", "٨٠", "[NVR]\nAddress \"Tür→北 7\"\nPort ٨٠\n", "'Tür→北 7٨٠'"},
    };
    test::LogRecorder log{core::kChannelNorm};
    std::filesystem::create_directories(settingsFolder());
    for (const auto& row : rows) {
        test::writeFile(settingsPath(), "Note 1\n[NVR]\nPort=80\nAddress \"Süd 1\"\n[Other]\n");
        run([&](const Window& window) {
            EXPECT_EQ(nameOf(QApplication::focusWidget()), "NVR IP");
            EXPECT_EQ(window.address->text(), "Süd 1");
            EXPECT_EQ(nameOf(window.port), "Port");
            EXPECT_EQ(window.port->text(), "80");
            Window::fill(window.address, row.address);
            Window::fill(window.port, row.port);
        });
        EXPECT_EQ(test::readFile(settingsPath()), row.content);
        EXPECT_THAT(log.take(), ElementsAre(std::string("NORM NVR connection changed from "
                                                        "'Süd 1:80' to ") +
                                            row.logged));
    }
}

TEST_F(Configure, AFolderThatCannotBeMadeIsAFailedCheck) {
    for (const std::string& occupied : {settingsFolder(), vendorFolder()}) {
        std::filesystem::remove_all(vendorFolder());
        std::filesystem::create_directories(std::filesystem::path(occupied).parent_path());
        test::writeFile(occupied, "a file");
        run([](const Window&) {});
        EXPECT_THAT(checks.take(),
                    ElementsAre(test::FailedCheck{"CHECKF", "configure.cpp", 34, 0,
                                                  *base + "\\Quorvane\\Orvistrand"}));
        EXPECT_EQ(test::readFile(occupied), "a file");
    }
}

TEST_F(Configure, TheApplicationBringsFoldersAndGlobals) {
    core::Paths::setPath(core::Paths::Dumps, "elsewhere");
    run([](const Window&) {}, &configure::runApplication);
    EXPECT_EQ(core::Paths::path(core::Paths::Dumps), "dumps");
    EXPECT_EQ(core::failureHandler(), &core::consoleHandler) << "the globals' end sets it";
}

TEST_F(Configure, GrowsBetweenTheFieldsAndTheTrailingButtons) {
    run([](const Window& window) {
        const auto* const label = window.dialog->findChild<QLabel*>();
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            window.dialog->setLayoutDirection(direction);
            window.dialog->resize(window.dialog->sizeHint() + QSize(200, 100));
            window.dialog->layout()->activate();
            // Mirrored back, so that "left" is the leading edge in both directions.
            const auto read = [&](const QWidget* widget) {
                return QStyle::visualRect(direction, window.dialog->rect(), widget->geometry());
            };
            const QRect inside = window.dialog->layout()->contentsRect();
            const QRect address = read(window.address), port = read(window.port);
            const QRect ok = read(window.ok), cancel = read(window.cancel);
            EXPECT_LT(read(label).right(), address.left());
            EXPECT_EQ(read(label).center().y(), address.center().y());
            EXPECT_EQ(address.left(), port.left());
            EXPECT_LT(address.right(), inside.right()) << "the rest stays free";
            EXPECT_GE(ok.top() - port.bottom(), 100 + 20);
            EXPECT_LT(ok.right(), cancel.left());
            EXPECT_EQ(cancel.bottomRight(), inside.bottomRight());
        }
    });
}

} // namespace
