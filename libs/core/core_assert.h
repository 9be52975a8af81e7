#pragma once

#include "core_check.h"

namespace core {

/// Decides which handler gets failed checks. The handlers, declared in core_check.h:
///
/// `failDefault`, in force at start, logs "GASSERT failed at FILE:LINE (CONDITION)
/// (MESSAGE)" on CRIT and hands the failure to core::TestInterface, whose settings decide
/// the answer. A site on its exclusion list is only logged, as EXCLUDED_ASSERT. A null
/// condition is only logged, as "ERROR!! ASSERT failed at FILE:LINE". `alertDefault` logs
/// "GALERT at FILE:LINE (CONDITION) (MESSAGE)" and hands every one over.
///
/// A failure while another is being handled on the same thread is only reported on
/// standard error. A null file, and the null condition of an alert, count as empty. None
/// of them throws. Any thread, at any time, before and after main, too.
class Assert {
public:
    /// Puts a handler into the check slot, `failDefault` for null. While the handler
    /// is locked: false, with "handler locked" on WARN, and nothing changes.
    static bool setFailureHandler(FailureHandler handler);

    /// `setFailureHandler` with the console handler.
    static bool setConsoleHandler();

    /// Unlocked at start.
    static void lockHandler(bool locked);
};

} // namespace core
