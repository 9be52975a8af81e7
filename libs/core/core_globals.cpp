#include "core_globals.h"

#include "core_assert.h"
#include "core_testinterface.h"
#include "core_v2masterlogger.h"

namespace core {

Globals::Globals(LogImpl* implementation) {
    MasterLogger::setImplementation(implementation);
    TestInterface::instance().loadIni();
}

Globals::~Globals() {
    Assert::setConsoleHandler();
    MasterLogger::setImplementation(nullptr);
}

DefaultGlobals::DefaultGlobals() : Globals(new DefaultLogImpl) {}

} // namespace core
