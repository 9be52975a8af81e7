#include "configure.h"

#include "core_check.h"
#include "core_globals.h"
#include "core_guard.h"
#include "core_log.h"
#include "core_paths.h"
#include "cutl_environment.h"
#include "qt_fatalmessages.h"
#include "qt_widgetbuilder.h"
#include "utl_fileutils.h"
#include "utl_inireader.h"
#include "utl_iniwriter.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>

#include <limits>
#include <memory>
#include <string>

namespace configure {
namespace {

constexpr core::CheckSite kNoSettingsFolder{"configure.cpp", 34};

constexpr const char* kSection = "NVR";
constexpr const char* kAddressKey = "Address";
constexpr const char* kPortKey = "Port";

/// How to reach the recorder. Any text is an address and any text a port.
struct Connection {
    std::string address;
    std::string port;

    bool operator==(const Connection&) const = default;
};

/// All of the text: Qt would drop a byte order mark at its beginning.
QString fieldText(const std::string& value) { return QString::fromStdString(' ' + value).mid(1); }

/// The two fields of the dialog, which owns them. They take values of any length: a value
/// that they cut would count as a change.
struct Fields {
    explicit Fields(QDialog* dialog) : address(new QLineEdit(dialog)), port(new QLineEdit(dialog)) {
        address->setMaxLength(std::numeric_limits<int>::max());
        port->setMaxLength(std::numeric_limits<int>::max());
    }

    void show(const Connection& connection) const {
        address->setText(fieldText(connection.address));
        port->setText(fieldText(connection.port));
    }
    Connection entered() const {
        return {address->text().toStdString(), port->text().toStdString()};
    }

    QLineEdit* const address;
    QLineEdit* const port;
};

void makeSettingsFolder(const std::string& folder) {
    bool isDir = false;
    if (!utl::FileUtils::exists(folder, isDir) || !isDir)
        CHECKF_AT(kNoSettingsFolder, utl::FileUtils::createPath(folder), folder);
}

Connection readConnection(const std::string& settingsPath) {
    Connection connection;
    utl::IniReader settings;
    if (settings.load(settingsPath) && settings.hasSection(kSection)) {
        settings.get(kSection, kAddressKey, connection.address);
        settings.get(kSection, kPortKey, connection.port);
    }
    return connection;
}

/// Completes a row: its label, already placed, names the field for screen readers.
void addRow(NS_QT::WidgetBuilder& builder, QLabel* label, QLineEdit* field) {
    label->setBuddy(field);
    builder.add(field);
    builder.newRow();
}

void layOut(NS_QT::WidgetBuilder& builder, QDialog* dialog, const Fields& fields) {
    constexpr Qt::Alignment kLabelAlignment = Qt::AlignLeft | Qt::AlignVCenter;

    builder.push(NS_QT::WidgetBuilder::VBox);
    builder.push(NS_QT::WidgetBuilder::HBox);
    builder.push(NS_QT::WidgetBuilder::Grid);
    auto* const addressLabel = new QLabel("NVR IP", dialog);
    addressLabel->setAlignment(kLabelAlignment);
    addRow(builder, builder.add(addressLabel), fields.address);
    addRow(builder, builder.addLabel("Port", kLabelAlignment), fields.port);
    builder.pop();
    builder.addStretch(0);
    builder.pop();
    builder.addStretch(0);
    builder.addSpacing(20);
    builder.addOkCancel(dialog, SLOT(accept()), dialog, SLOT(reject()));
}

/// The file then holds this section alone; whatever else it held is dropped, on purpose.
bool storeConnection(const std::string& settingsPath, const Connection& connection) {
    utl::IniWriter settings;
    settings.addSection(kSection);
    settings.add(kAddressKey, connection.address);
    settings.add(kPortKey, connection.port);
    return settings.save(settingsPath);
}

/// The text is fixed as it is, without a colon in the second pair.
void logChange(const Connection& before, const Connection& after) {
    CORE_LOGF(core::kChannelNorm, "NVR connection changed from '%s:%s' to '%s%s'", before.address,
              before.port, after.address, after.port);
}

} // namespace

int runGuarded(int argc, char** argv) { return core::runGuardedWith(runApplication, argc, argv); }

int runApplication(int argc, char** argv) {
    core::Paths::setDefaultPaths();
    const std::unique_ptr<core::Globals> globals = std::make_unique<core::DefaultGlobals>();
    return main(argc, argv);
}

int main(int argc, char** argv) {
    // Before the application object, which looks for its plugins there as it starts.
    QCoreApplication::addLibraryPath("./3rdparty/qt5/plugins");
    NS_QT::abortOnFatalMessages();
    const QApplication application(argc, argv);
    QDialog dialog;
    const Fields fields(&dialog);

    const std::string folder = cutl::commonDataFolder() + "\\Quorvane\\Orvistrand";
    const std::string settingsPath = folder + "\\Settings";
    makeSettingsFolder(folder);
    const Connection stored = readConnection(settingsPath);

    NS_QT::WidgetBuilder builder(&dialog);
    layOut(builder, &dialog, fields);
    fields.show(stored);
    const int result = dialog.exec();
    builder.pop();
    if (result == QDialog::Rejected)
        return 0;

    const Connection entered = fields.entered();
    if (entered != stored && storeConnection(settingsPath, entered))
        logChange(stored, entered);
    return 0;
}

} // namespace configure
