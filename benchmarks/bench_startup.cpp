// The tool's start beside that of a bare QDialog with two line edits: from the start of
// the process to the dialog's first paint. This program runs itself as either one, in
// turns, so that both meet the same machine.

#include "configure.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEvent>
#include <QFormLayout>
#include <QLineEdit>
#include <QProcess>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRuns = 40;
constexpr char kBare[] = "--bare";
constexpr char kTool[] = "--tool";

// Ends the process once a dialog has painted itself.
class EndAtFirstPaint : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint && qobject_cast<QDialog*>(object) != nullptr)
            _exit(0);
        return false;
    }
};

void watchForPaint() { qApp->installEventFilter(new EndAtFirstPaint(qApp)); }

int bareDialog(int argc, char** argv) {
    const QApplication application(argc, argv);
    QDialog dialog;
    QFormLayout layout(&dialog);
    layout.addRow("NVR IP", new QLineEdit(&dialog));
    layout.addRow("Port", new QLineEdit(&dialog));
    return dialog.exec();
}

double runOnce(const char* self, const char* which) {
    QElapsedTimer timer;
    timer.start();
    if (QProcess::execute(self, {which}) != 0) {
        std::cerr << "a run with " << which << " failed\n";
        std::exit(1);
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + kRuns / 2, values.end());
    return values[kRuns / 2];
}

int compare(const char* self) {
    std::vector<double> bare;
    std::vector<double> tool;
    for (int run = 0; run < kRuns; ++run) {
        bare.push_back(runOnce(self, kBare));
        tool.push_back(runOnce(self, kTool));
    }
    std::cout << "start to first paint, median of " << kRuns << " runs: bare dialog "
              << median(bare) << " ms, tool " << median(tool) << " ms, ratio "
              << median(tool) / median(bare) << '\n';
    return 0;
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForPaint)

int main(int argc, char** argv) {
    const std::string which = argc > 1 ? argv[1] : "";
    if (which == kBare)
        return bareDialog(argc, argv);
    if (which == kTool)
        return configure::runApplication(argc, argv);
    return compare(argv[0]);
}
