#pragma once

#include "core_enum.h"

#include <cstdint>

/// Identifies every icon that the toolkit's widgets can show.
class QT_IconFactory {
public:
    /// The number of each icon; those in between are reserved.
    enum IconType : int32_t {
#define QT_ICON_TYPE(name, value) name = (value),
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
    };

    /// The qualified name of each identifier, "QT_IconFactory::Tick", and back; 0 and
    /// "Unknown" stand for what is missing. Built before main runs. Any thread.
    static const core::EnumNames& typeNames();
};
