#include "qt_fatalmessages.h"

#include <QtGlobal>
#include <cstdlib>

namespace {

QtMessageHandler shownBy = nullptr;

void showThenAbort(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    shownBy(type, context, text);
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

void NS_QT::abortOnFatalMessages() {
    // Known before the first message comes, and never this handler itself.
    const QtMessageHandler installed = qInstallMessageHandler(nullptr);
    if (installed != &showThenAbort)
        shownBy = installed;
    qInstallMessageHandler(&showThenAbort);
}
