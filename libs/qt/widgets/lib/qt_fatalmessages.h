#pragma once

namespace NS_QT {

/// Has fatal messages of Qt, its own and those of qFatal, end as std::abort does, which
/// the crash guard sees. Without this a fatal message leaves nothing on Windows, where Qt
/// ends the process past every handler. Messages are still shown by the handler that is
/// installed when this is called first. Before the application object, since a missing
/// platform plugin is a fatal message; again does no harm. GUI thread only.
void abortOnFatalMessages();

} // namespace NS_QT
