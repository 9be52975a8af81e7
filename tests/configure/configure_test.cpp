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
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

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

    /// A key for whatever has the focus.
    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

    QDialog* const dialog;
    QLineEdit* const address;
    QLineEdit* const port;
    QPushButton* const ok;
    QPushButton* const cancel;
};

std::string textOf(const QLineEdit* field) { return field->text().toStdString(); }

void pressEnter(Window&) { Window::press(Qt::Key_Return); }

class Configure : public testing::Test {
protected:
    Configure() : d_systemLookup(cutl::setCommonDataLookup(&lookUp)) { base = d_folder.path(); }
    ~Configure() override {
        cutl::setCommonDataLookup(d_systemLookup);
        EXPECT_THAT(checks.take(), IsEmpty());
    }

    using Operator = std::function<void(Window&)>;
    using Start = int (*)(int argc, char** argv);

    /// Runs the tool with `operate` in front of its dialog, which must get it closed.
    static void run(const Operator& operate, Start start = &configure::main) {
        // There is no event loop yet: the call waits until the tool has one.
        QTimer atDialog;
        atDialog.setSingleShot(true);
        bool shown = false;
        QObject::connect(&atDialog, &QTimer::timeout, [&] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            shown = true;
            use(dialog, operate);
            if (dialog->isVisible())
                dialog->reject();
        });
        QMetaObject::invokeMethod(&atDialog, "start", Qt::QueuedConnection);
        char name[] = "configure";
        char* argv[] = {name, nullptr};
        EXPECT_EQ(start(1, argv), 0);
        EXPECT_TRUE(shown);
    }

    std::string vendorFolder() const { return d_folder / "Quorvane"; }
    std::string settingsFolder() const { return vendorFolder() + "/Orvistrand"; }
    std::string settingsPath() const { return settingsFolder() + "/Settings"; }
    void store(const std::string& content) const {
        std::filesystem::create_directories(settingsFolder());
        test::writeFile(settingsPath(), content);
    }
    std::string stored() const { return test::readFile(settingsPath()); }

    static std::optional<std::string> lookUp() { return base; }
    inline static std::optional<std::string> base;

    test::CheckRecorder checks;

private:
    static void use(QDialog* dialog, const Operator& operate) {
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
        Window window(dialog);
        operate(window);
        EXPECT_FALSE(dialog->isVisible()) << "left open";
    }

    test::TempFolder d_folder;
    cutl::CommonDataLookup d_systemLookup;
};

using ConfigureWindow = Configure;

struct Shown {
    const char* name;
    const char* content;
    const char* address;
    const char* port;
};

class ConfigureShows : public Configure, public testing::WithParamInterface<Shown> {};

TEST_P(ConfigureShows, StoredValuesAndLeavesThemOnOk) {
    store(GetParam().content);
    const auto before = std::filesystem::last_write_time(settingsPath());
    run([](Window& window) {
        EXPECT_EQ(textOf(window.address), GetParam().address);
        EXPECT_EQ(textOf(window.port), GetParam().port);
        Window::press(Qt::Key_Return);
    });
    EXPECT_EQ(stored(), GetParam().content);
    EXPECT_EQ(std::filesystem::last_write_time(settingsPath()), before);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ConfigureShows,
    testing::Values(
        Shown{"Both", "# site 7\n[NVR]\nPort=80\nAddress = 10.0.0.1\n", "10.0.0.1", "80"},
        Shown{"OnlyPort", "[NVR]\nPort 80\n", "", "80"},
        Shown{"OtherSectionsAndCase", "Address 1\n[nvr]\nPort 2\n[NVR]\naddress 3\nPort 4\n", "",
              "4"},
        Shown{"NoSection", "[Other]\nAddress 10.0.0.1\n", "", ""}, Shown{"Empty", "", "", ""},
        Shown{"NotAPort", "[NVR]\nAddress \"Tür 7, links\"\nPort http\n", "Tür 7, links", "http"}),
    [](const auto& row) { return row.param.name; });

struct Typed {
    const char* name;
    const char* address;
    const char* port;
    const char* content;
};

class ConfigureStores : public Configure, public testing::WithParamInterface<Typed> {};

TEST_P(ConfigureStores, WhatWasTypedAndNothingElse) {
    store("Note 1\n[NVR]\nPort 80\nAddress 10.0.0.1\n[Other]\nKey value\n");
    run([](Window& window) {
        Window::fill(window.address, GetParam().address);
        Window::fill(window.port, GetParam().port);
        QTest::mouseClick(window.ok, Qt::LeftButton);
    });
    EXPECT_EQ(stored(), GetParam().content);
    run([](Window& window) { // what is stored is shown, as far as the file's form keeps it
        EXPECT_EQ(textOf(window.address), QString(GetParam().address).trimmed().toStdString());
        EXPECT_EQ(textOf(window.port), GetParam().port);
        Window::press(Qt::Key_Escape);
    });
}

INSTANTIATE_TEST_SUITE_P(
    Values, ConfigureStores,
    testing::Values(Typed{"Both", "10.0.0.2", "81", "[NVR]\nAddress 10.0.0.2\nPort 81\n"},
                    Typed{"OnlyPort", "10.0.0.1", "81", "[NVR]\nAddress 10.0.0.1\nPort 81\n"},
                    Typed{"OnlyAddress", "nvr", "80", "[NVR]\nAddress nvr\nPort 80\n"},
                    Typed{"Cleared", "", "", "[NVR]\nAddress \nPort \n"},
                    Typed{"BlankAhead", " nvr", "80", "[NVR]\nAddress  nvr\nPort 80\n"},
                    Typed{"Words", "door 7", "80", "[NVR]\nAddress \"door 7\"\nPort 80\n"},
                    Typed{"NotAscii", "Tür→北", "٨٠", "[NVR]\nAddress Tür→北\nPort ٨٠\n"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Configure, WithoutAFileTheFieldsAreEmptyAndOkWritesNone) {
    test::LogRecorder log{core::kChannelWarn, core::kChannelNorm};
    run([](Window& window) {
        EXPECT_EQ(textOf(window.address), "");
        EXPECT_EQ(textOf(window.port), "");
        Window::press(Qt::Key_Return);
    });
    EXPECT_TRUE(std::filesystem::is_directory(settingsFolder()));
    EXPECT_TRUE(std::filesystem::is_empty(settingsFolder()));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Configure, DismissedChangesAreForgotten) {
    const Operator dismissals[] = {
        [](Window&) { Window::press(Qt::Key_Escape); },
        [](Window& window) { QTest::mouseClick(window.cancel, Qt::LeftButton); },
        [](Window& window) { window.dialog->close(); }};
    test::LogRecorder log{core::kChannelWarn, core::kChannelNorm};
    for (const Operator& dismiss : dismissals) {
        store("[NVR]\nPort 80\n");
        run([&](Window& window) {
            Window::fill(window.port, "81");
            dismiss(window);
        });
        EXPECT_EQ(stored(), "[NVR]\nPort 80\n");
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Configure, BytesThatAreNotUtf8AreReplacedOnOk) {
    store("[NVR]\nAddress nvr\xff\nPort 80\n");
    run(&pressEnter);
    EXPECT_EQ(stored(), "[NVR]\nAddress nvr\uFFFD\nPort 80\n");
}

TEST_F(Configure, LogsAChangeOnNormWithoutTheSecondColon) {
    test::LogRecorder log{core::kChannelNorm};
    store("[NVR]\nAddress 10.0.0.1\nPort 80\n");
    run([](Window& window) {
        Window::fill(window.address, "10.0.0.2");
        Window::fill(window.port, "81");
        Window::press(Qt::Key_Return);
    });
    EXPECT_THAT(log.take(),
                ElementsAre("NORM NVR connection changed from '10.0.0.1:80' to '10.0.0.281'"));
}

TEST_F(Configure, AFailedStoreIsTheFileLayersToReport) {
    test::LogRecorder log{core::kChannelWarn, core::kChannelNorm};
    std::filesystem::create_directories(settingsPath());
    run([](Window& window) {
        Window::fill(window.port, "81");
        Window::press(Qt::Key_Return);
    });
    EXPECT_THAT(log.take(), AllOf(Not(IsEmpty()), Each(StartsWith("WARN "))));
    EXPECT_TRUE(std::filesystem::is_empty(settingsPath()));
}

TEST_F(Configure, AFolderThatCannotBeMadeIsAFailedCheck) {
    for (const std::string& occupied : {settingsFolder(), vendorFolder()}) {
        std::filesystem::remove_all(vendorFolder());
        std::filesystem::create_directories(std::filesystem::path(occupied).parent_path());
        test::writeFile(occupied, "a file");
        run(&pressEnter);
        EXPECT_THAT(checks.take(),
                    ElementsAre(test::FailedCheck{"CHECKF", "configure.cpp", 34, 0,
                                                  *base + "\\Quorvane\\Orvistrand"}));
        EXPECT_EQ(test::readFile(occupied), "a file");
    }
}

TEST_F(Configure, WithoutACommonFolderTheSettingsAreBelowData) {
    const test::TempFolder working;
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(working.path());
    base = std::nullopt;
    run([](Window& window) {
        Window::fill(window.port, "81");
        Window::press(Qt::Key_Return);
    });
    std::filesystem::current_path(previous);
    EXPECT_EQ(test::readFile(working / "data/Quorvane/Orvistrand/Settings"),
              "[NVR]\nAddress \nPort 81\n");
    EXPECT_THAT(checks.take(),
                ElementsAre(test::FailedCheck{"CHECKF", "cutl_environment.cpp", 106, 0, ""}));
}

TEST_F(Configure, TheApplicationBringsFoldersAndGlobals) {
    core::Paths::setPath(core::Paths::Dumps, "elsewhere");
    run(&pressEnter, &configure::runApplication);
    EXPECT_EQ(core::Paths::path(core::Paths::Dumps), "dumps");
    EXPECT_EQ(core::failureHandler(), &core::consoleHandler) << "the globals' end sets it";
}

TEST_F(ConfigureWindow, TabGoesThroughTheFieldsThenTheButtons) {
    run([](Window& window) {
        EXPECT_TRUE(window.ok->isDefault());
        for (const QWidget* const expected : std::initializer_list<const QWidget*>{
                 window.address, window.port, window.ok, window.cancel, window.address}) {
            EXPECT_EQ(QApplication::focusWidget(), expected);
            Window::press(Qt::Key_Tab);
        }
        Window::press(Qt::Key_Escape);
    });
}

TEST_F(ConfigureWindow, LabelsNameTheirFieldsToScreenReaders) {
    run([](Window& window) {
        const auto nameOf = [](QWidget* widget) {
            return QAccessible::queryAccessibleInterface(widget)
                ->text(QAccessible::Name)
                .toStdString();
        };
        EXPECT_EQ(nameOf(window.address), "NVR IP");
        EXPECT_EQ(nameOf(window.port), "Port");
        EXPECT_EQ(nameOf(window.ok), "OK");
        EXPECT_EQ(nameOf(window.cancel), "Cancel");
        Window::press(Qt::Key_Escape);
    });
}

TEST_F(ConfigureWindow, GrowsBetweenTheFieldsAndTheTrailingButtons) {
    run([](Window& window) {
        const auto labels = window.dialog->findChildren<QLabel*>();
        ASSERT_EQ(labels.size(), 2);
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            window.dialog->setLayoutDirection(direction);
            window.dialog->resize(window.dialog->sizeHint() + QSize(200, 100));
            window.dialog->layout()->activate();
            // Mirrored back, so that "left" is the leading edge in both directions.
            const auto read = [&](const QWidget* widget) {
                return QStyle::visualRect(direction, window.dialog->rect(), widget->geometry());
            };
            const QRect inside = window.dialog->layout()->contentsRect();
            EXPECT_EQ(read(labels[0]).left(), inside.left());
            EXPECT_LT(read(labels[0]).right(), read(window.address).left());
            EXPECT_LT(read(labels[1]).right(), read(window.port).left());
            EXPECT_EQ(read(window.address).left(), read(window.port).left());
            EXPECT_EQ(read(labels[0]).center().y(), read(window.address).center().y());
            EXPECT_LT(read(window.address).bottom(), read(window.port).top());
            EXPECT_EQ(read(window.address).top(), inside.top());
            EXPECT_LT(read(window.address).right(), inside.right()) << "the rest stays free";
            EXPECT_GE(read(window.ok).top() - read(window.port).bottom(), 100 + 20);
            EXPECT_LT(read(window.ok).right(), read(window.cancel).left());
            EXPECT_EQ(read(window.cancel).right(), inside.right());
            EXPECT_EQ(read(window.cancel).bottom(), inside.bottom());
        }
        Window::press(Qt::Key_Escape);
    });
}

} // namespace
