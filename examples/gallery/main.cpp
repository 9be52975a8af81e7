// The gallery's command line:
//
//     gallery                                    opens the window
//         gallery --page links --dark --rtl          the same, with that page and look
//     gallery --shot FILE.png --scale 2          stores a picture of the window instead
//     gallery --inspect --scale 1.5              lists what is wrong with it at that scale
//
// The last two need no display: they draw offscreen, unless QT_QPA_PLATFORM says otherwise.

#include "gallery.h"
#include "inspection.h"
#include "qt_timermanager.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPalette>
#include <QPixmap>
#include <QStyleFactory>
#include <cstdio>

namespace {

constexpr int kNoSuchPage = 2;
constexpr int kNotStored = 3;
constexpr int kFaulty = 4;

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription("Shows every widget of the toolkit.");
    parser.addHelpOption();
    parser.addOptions({
        {"page", "Shows this page first: inputs, links, buttons, strips, dialog.", "name"},
        {"scale", "Draws everything so many times as large.", "factor"},
        {"dark", "Dark colours."},
        {"rtl", "From right to left."},
        {"inspect", "Lists what has no name for screen readers or is not sharp, and ends."},
        {"shot", "Stores a picture of the window as PNG and ends.", "file"},
    });
}

QPalette darkPalette() {
    QPalette palette(QColor(53, 53, 53));
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    palette.setColor(QPalette::AlternateBase, QColor(53, 53, 53));
    palette.setColor(QPalette::Highlight, QColor(64, 128, 192));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(90, 90, 90));
    palette.setColor(QPalette::Link, QColor(110, 170, 240));
    palette.setColor(QPalette::ToolTipBase, QColor(35, 35, 35));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, QColor(230, 230, 230));
        palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    }
    return palette;
}

int store(gallery::Gallery& window, const QString& file) {
    window.show();
    QCoreApplication::processEvents();
    if (window.grab().save(file, "PNG"))
        return 0;
    std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(file));
    return kNotStored;
}

int inspect(gallery::Gallery& window) {
    window.show();
    QStringList faults;
    for (const QString& page : window.pageNames()) {
        window.showPage(page);
        QCoreApplication::processEvents();
        for (const QString& fault : gallery::inspect(window))
            faults << page + ": " + fault;
    }
    for (const QString& fault : faults)
        std::fprintf(stderr, "%s\n", qUtf8Printable(fault));
    return faults.isEmpty() ? 0 : kFaulty;
}

} // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    addOptions(parser);
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    parser.parse(arguments); // before the application exists, which reads the scale only then
    if (parser.isSet("scale"))
        qputenv("QT_SCALE_FACTOR", parser.value("scale").toLatin1());
    const bool staysOpen = !parser.isSet("shot") && !parser.isSet("inspect");
    if (!staysOpen && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    const NS_QT::QtTimerManager timers; // for buttons that repeat
    parser.process(arguments);

    if (parser.isSet("dark")) {
        QApplication::setStyle(QStyleFactory::create("Fusion")); // it follows every palette
        QApplication::setPalette(darkPalette());
    }
    if (parser.isSet("rtl"))
        QApplication::setLayoutDirection(Qt::RightToLeft);
    gallery::Gallery window;
    if (parser.isSet("page") && !window.showPage(parser.value("page"))) {
        std::fprintf(stderr, "no page %s\n", qUtf8Printable(parser.value("page")));
        return kNoSuchPage;
    }
    if (parser.isSet("inspect"))
        return inspect(window);
    if (parser.isSet("shot"))
        return store(window, parser.value("shot"));
    window.show();
    return QApplication::exec();
}
