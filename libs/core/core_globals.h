#pragma once

#include "core_v2masterlogger.h"

#include <memory>

namespace core {

/// This library's global state, as long as the application works.
///
/// Its destructor puts the console handler into the check slot, unless the handler is
/// locked, and restores the default log implementation. `failDefault` is not restored: a
/// second object in a process starts with the console handler.
class Globals {
public:
    /// Installs a log implementation, a DefaultLogImpl for null, see
    /// MasterLogger::setImplementation. Then reads the settings of core::TestInterface.
    explicit Globals(std::unique_ptr<LogImpl> implementation);
    virtual ~Globals();
    Globals(const Globals&) = delete;
    Globals& operator=(const Globals&) = delete;
};

/// Globals with a log implementation that writes nothing.
class DefaultGlobals : public Globals {
public:
    DefaultGlobals();
};

} // namespace core
