#pragma once

#include "core_v2masterlogger.h"

#include <memory>

namespace core {

/// The application's hold on this library's global state, from before its work
/// until after it.
///
/// The end of it puts the console handler into the check slot, unless the handler is
/// locked, and the default log implementation back. Nobody puts `failDefault` back: a
/// second object of a process begins with the console handler.
class Globals {
public:
    /// Installs a log implementation, a DefaultLogImpl for null, see
    /// MasterLogger::setImplementation. Then has the settings of core::TestInterface read.
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
